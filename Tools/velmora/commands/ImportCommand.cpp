// velmora import: the attributes of documents, one record per input, in the order of the inputs.
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "Interrupt.h"
#include "Places.h"
#include "commands/CommandLine.h"
#include "input/CDocumentSource.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"
#include "pool/CWorkerPool.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>

/// Answers that may wait for a slower one before them.
static constexpr size_t kMaxWaiting = 256;

static void AddImportOptions(CLI::App& app, tOptions& options)
{
    app.add_option("PATH", options.paths, "Documents, and folders to search for documents; - is standard input");
    app.add_option("--format", options.format, "text (for people), json (an object a line) or plist")
        ->check(CLI::IsMember({"text", "json", "plist"}))
        ->type_name("FORMAT");
    app.add_option("--files-from", options.filesFrom,
                   "Further documents from a list, a path a line; - is standard input")
        ->type_name("FILE");
    app.add_flag("-0,--null", options.nullSeparated, "The list has zero bytes between paths, not line breaks");
    AddWorkerOptions(app, options);
}

static std::string CheckImport(const tOptions& options)
{
    const bool readsInput = std::find(options.paths.begin(), options.paths.end(), "-") != options.paths.end();
    if (options.paths.empty() && options.filesFrom.empty()) {
        return "nothing to import: name documents or folders";
    }
    if (options.nullSeparated && options.filesFrom.empty()) {
        return "--null says how the list of --files-from is written; there is none";
    }
    if (readsInput && options.filesFrom == "-") {
        return "standard input cannot be both a document and the list of documents";
    }
    return {};
}

namespace {
/// A run over all inputs: keeps the pool busy and the records in order.
class CImportRun {
public:
    CImportRun(CDocumentSource& source, CWorkerPool& pool, CRecordWriter& writer, COutput& output)
        : mSource(source), mPool(pool), mWriter(writer), mOutput(output)
    {}

    /// @param cannotServe  set when there is no worker: every input then fails like this, unopened
    int Run(const std::optional<tFailure>& cannotServe)
    {
        mWriter.Begin();
        bool more = true;
        while (more || !mRecords.empty()) {
            more = more && !Interrupt::IsRequested() && Fill(cannotServe);
            if (!PrintFinished()) {
                break;
            }
            uint64_t ticket = 0;
            tAnswer answer;
            if (mInFlight == 0) {
                continue;
            }
            if (mPool.Collect(ticket, answer) == CWorkerPool::eResult::kInterrupted) {
                break;
            }
            --mInFlight;
            mRecords[ticket - mFirstTicket].answer = std::move(answer);
        }
        mWriter.End();
        mOutput.Flush();
        if (Interrupt::IsRequested()) {
            return kExitInterrupted;
        }
        return mFailed || (mOutput.HasFailed() && !mOutput.IsReaderGone()) ? kExitFailed : kExitOK;
    }

private:
    struct tRecord {
        std::string path;
        std::optional<tAnswer> answer;
    };

    /// Takes inputs while the pool has room. @return false when there are no more
    bool Fill(const std::optional<tFailure>& cannotServe)
    {
        while (mPool.HasRoom() && mRecords.size() < kMaxWaiting) {
            tInput input;
            if (!mSource.Next(input)) {
                return false;
            }
            tRecord& record = mRecords.emplace_back();
            record.path = std::move(input.path);
            if (cannotServe || input.failure) {
                record.answer.emplace().failure = cannotServe ? *cannotServe : *input.failure;
            } else {
                mPool.Submit(mFirstTicket + mRecords.size() - 1, {eVerb::kImport, Importer::kContentType},
                             std::move(input.document));
                ++mInFlight;
            }
        }
        return true;
    }

    /// Prints the records whose turn it is. @return false when nobody reads them
    bool PrintFinished()
    {
        for (; !mRecords.empty() && mRecords.front().answer; mRecords.pop_front(), ++mFirstTicket) {
            mFailed = mFailed || !mRecords.front().answer->ok;
            mWriter.Write(mRecords.front().path, *mRecords.front().answer);
            if (!mOutput.Flush()) {
                return false;
            }
        }
        return true;
    }

    CDocumentSource& mSource;
    CWorkerPool& mPool;
    CRecordWriter& mWriter;
    COutput& mOutput;
    std::deque<tRecord> mRecords; ///< taken, not yet printed
    uint64_t mFirstTicket = 0;    ///< of the first one in mRecords
    size_t mInFlight = 0;
    bool mFailed = false;
};

/// Where everything fails for one reason, which has been said: people need not read it once a document.
class CSilentWriter : public CRecordWriter {
public:
    using CRecordWriter::CRecordWriter;
    void Write(const std::string&, const tAnswer&) override {}
};
} // namespace

static std::unique_ptr<CRecordWriter> MakeWriter(const tOptions& options, bool cannotServe, COutput& output)
{
    if (options.format == "json") {
        return MakeJSONWriter(output);
    }
    if (options.format == "plist") {
        return MakePropertyListWriter(output);
    }
    return cannotServe ? std::make_unique<CSilentWriter>(output) : MakeTextWriter(output);
}

static int RunImport(const tOptions& options)
{
    CDocumentSource::tList list;
    if (!options.filesFrom.empty() && (list = CDocumentSource::OpenList(options.filesFrom)) == nullptr) {
        COutput::PrintMessage("the list " + Escapes::ForTerminal(options.filesFrom) +
                              " cannot be read: " + strerror(errno));
        return kExitUsage;
    }
    CDocumentSource source(options.paths, std::move(list), options.nullSeparated ? '\0' : '\n');
    std::optional<tFailure> cannotServe;
    CWorkerPool pool(GetWorkerSettings(options, cannotServe), options.timeoutSeconds, 1);
    tFailure failure;
    if (!cannotServe) {
        switch (pool.WaitUntilReady(failure)) {
        case CWorkerPool::eResult::kDone:
            break;
        case CWorkerPool::eResult::kFailed:
            cannotServe = failure;
            break;
        case CWorkerPool::eResult::kInterrupted:
            return kExitInterrupted;
        }
    }
    if (cannotServe) {
        COutput::PrintMessage(Escapes::ForTerminal(cannotServe->message));
    }
    COutput output(STDOUT_FILENO);
    const std::unique_ptr<CRecordWriter> writer = MakeWriter(options, cannotServe.has_value(), output);
    const int result = CImportRun(source, pool, *writer, output).Run(cannotServe);
    return cannotServe && result == kExitOK ? kExitFailed : result; // also without any input
}

const tCommand kImportCommand = {"import",
                                 "Print the search attributes of layouts",
                                 "  velmora import plan.velmora\n"
                                 "  velmora import --format json ~/Layouts > attributes.json\n"
                                 "  find / -name '*.velmora' -print0 | velmora import --files-from - --null\n",
                                 AddImportOptions,
                                 CheckImport,
                                 RunImport};
