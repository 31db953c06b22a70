// What commands have in common that go over many documents.
#pragma once

#include "commands/CommandLine.h"
#include "output/COutput.h"
#include "pool/CDocumentRun.h"

#include <memory>
#include <optional>

/// What commands take that go over many documents.
struct tBatchOptions : tWorkerOptions {
    std::vector<std::string> paths;
    std::string filesFrom;             ///< a list of further paths; empty for none
    bool nullSeparated = false;        ///< the list has zeros between paths, not line breaks
    std::vector<std::string> excludes; ///< patterns of names that a walk passes over
    std::string progress = "auto";     ///< auto, always, never, plain
    bool quiet = false;                ///< no summary
    unsigned jobs = 0;                 ///< worker processes; 0 for one a core
};

/// Options that name documents and say how to go over them: PATH, --files-from, --null, --exclude, --jobs, --progress,
/// --quiet, and those of every command that starts workers.
void AddBatchOptions(CLI::App& app, tBatchOptions& options, const std::string& pathHelp);

/// What the parser cannot check of them. @param verb  "import": what is done to documents
/// @return empty, or what is wrong
std::string CheckBatchOptions(const tBatchOptions& options, const char* verb);

/// A run as a command does it: with the options above, messages, progress and a summary on standard error.
class CBatch {
public:
    explicit CBatch(const tBatchOptions& options) : mOptions(options) {}

    /// Opens the list, starts a first worker. Says what is wrong.
    /// @return the exit status when the run cannot be begun
    std::optional<int> Begin();

    /// Whether there is no usable plug-in, which has been said: every input will fail.
    bool CannotServe() const { return mPool->GetRefusal() != nullptr; }

    /// Whether the list of documents broke off at an error, once everything that was read of it is done.
    bool HasBrokenList() const { return mSource->GetListError() != 0; }

    /// @param request   what is asked about each document
    /// @param handlers  `idle` is called besides what the batch does then
    /// @param output    where `take` writes to; flushed in time
    /// @param done      "imported": what has become of good documents, for the summary
    /// @return an eExitCode
    int Run(tRequest request, tRunHandlers handlers, COutput& output, const char* done);

    /// Of the run; null before it.
    const tRunCounts* GetCounts() const { return mRun ? &mRun->GetCounts() : nullptr; }

private:
    const tBatchOptions& mOptions; ///< the caller's
    std::unique_ptr<CDocumentSource> mSource;
    std::unique_ptr<CWorkerPool> mPool;
    std::unique_ptr<CDocumentRun> mRun;
};
