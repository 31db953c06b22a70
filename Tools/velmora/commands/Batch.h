// What commands have in common that go over many documents.
#pragma once

#include "commands/CReport.h"
#include "commands/CommandLine.h"
#include "output/CJSONLines.h"
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
void AddBatchOptions(CParser& parser, tBatchOptions& options, const std::string& pathHelp);

/// What the parser cannot check of them. @param verb  "import": what is done to documents
/// @return empty, or what is wrong
std::string CheckBatchOptions(const tBatchOptions& options, const char* verb);

/// Writes what is left of a command's output. @return the status, or a failure where the output could not be written
int FinishOutput(COutput& output, int status);

/// A run as a command does it: with the options above, messages, progress and a summary on standard error.
class CBatch {
public:
    explicit CBatch(const tBatchOptions& options) : mOptions(options) {}

    /// What a command wants of its workers besides its options.
    using tAdapt = std::function<void(tWorkerSettings&)>;

    /// Opens the list, starts a first worker. Says what is wrong.
    /// @return the exit status when the run cannot be begun
    std::optional<int> Begin(const tAdapt& adapt = {});

    /// Whether there is no usable plug-in, which has been said: every input will fail.
    bool CannotServe() const { return mPool->GetRefusal() != nullptr; }

    /// Asks a worker about something that is no document, before the run.
    /// @return false when the user has interrupted
    bool Ask(tRequest request, tAnswer& answer);

    /// Whether the list of documents broke off at an error, once everything that was read of it is done.
    bool HasBrokenList() const { return mSource->GetListError() != 0; }

    /// @param request   what is asked about each document
    /// @param handlers  `idle` is called besides what the batch does then
    /// @param output    where `take` writes to; flushed in time
    /// @param done      "imported": what has become of good documents, for the summary
    /// @return an eExitCode
    int Run(tRequest request, tRunHandlers handlers, COutput& output, const char* done);

    /// What is to be done with a good document's report. The answer may be made a failure, which then is
    /// reported and counts; but for damage, which is not reported once more.
    using tUseReport = std::function<void(const tInput& input, tAnswer& answer, const CReport& report)>;

    /// Run, for what is answered with reports: says what fails, and ends early when nothing more can be written.
    /// @param request  the verb, and what belongs to it
    /// @param use      for each good document, in the order of the inputs
    /// @param lines    where failures become records; null for messages to people
    /// @param isWantedOpen  as a run's handler
    int RunForReports(tRequest request, const tUseReport& use, COutput& output, CJSONLines* lines, const char* done,
                      std::function<bool(tInput&)> isWantedOpen = {});

    /// Asks the same workers about files besides those of the options, in their order and without a summary.
    /// @return an eExitCode
    int AskBesides(tRequest request, const std::vector<std::string>& paths, const tUseReport& use, COutput& output,
                   CJSONLines* lines);

    /// What the first worker said at its start.
    const tHello& GetGreeting() const { return mPool->GetGreeting(); }

    /// Of the run; null before it.
    const tRunCounts* GetCounts() const { return mRun ? &mRun->GetCounts() : nullptr; }

private:
    tRunHandlers HandleReports(const tUseReport& use, COutput& output, CJSONLines* lines) const;

    const tBatchOptions& mOptions; ///< the caller's
    std::unique_ptr<CDocumentSource> mSource;
    std::unique_ptr<CWorkerPool> mPool;
    std::unique_ptr<CDocumentRun> mRun;
};

/// What a command prints of a good document: JSON with its line break, or text. The answer may be made a failure, which
/// then counts.
using tFormatReport = std::function<std::string(const tInput& input, tAnswer& answer, const CReport& report)>;

/// Asks about all documents of the options, and prints what `format` makes of each.
/// @param isJSON  failures are printed as records, too; else they are messages
/// @return an eExitCode
int PrintReports(const tBatchOptions& options, eVerb verb, bool isJSON, const tFormatReport& format, const char* done);
