#include "commands/Batch.h"

#include "ExitCodes.h"
#include "Interrupt.h"
#include "input/CDocumentCounter.h"
#include "output/CProgress.h"
#include "output/Escapes.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

void AddBatchOptions(CParser& parser, tBatchOptions& options, const std::string& pathHelp)
{
    parser.Add("PATH", options.paths, pathHelp).Named("");
    parser.Add("--files-from", options.filesFrom, "Further documents from a list, a path a line; - is standard input")
        .Named("FILE");
    parser.AddFlag("-0,--null", options.nullSeparated, "The list has zero bytes between paths, not line breaks");
    parser
        .Add("--exclude", options.excludes,
             "Pass over files and folders whose name matches, or whose path if there is a slash in it")
        .Named("PATTERN")
        .TakesOne();
    parser
        .Add("--progress", options.progress,
             "On standard error: auto (a bar, on a terminal), always, never, plain (lines for a log)")
        .OneOf({"auto", "always", "never", "plain"})
        .Named("WHEN");
    parser.AddFlag("-q,--quiet", options.quiet, "No summary at the end");
    AddJobsOption(parser, options.jobs, "Worker processes (default: one for each core)");
    AddWorkerOptions(parser, options);
}

std::string CheckBatchOptions(const tBatchOptions& options, const char* verb)
{
    const bool readsInput = std::find(options.paths.begin(), options.paths.end(), "-") != options.paths.end();
    if (options.paths.empty() && options.filesFrom.empty()) {
        return std::string("nothing to ") + verb + ": name documents or folders";
    }
    if (options.nullSeparated && options.filesFrom.empty()) {
        return "--null says how the list of --files-from is written; there is none";
    }
    if (readsInput && options.filesFrom == "-") {
        return "standard input cannot be both a document and the list of documents";
    }
    return {};
}

int FinishOutput(COutput& output, int status)
{
    output.Flush();
    return status == kExitOK && output.HasFailed() && !output.IsReaderGone() ? static_cast<int>(kExitFailed) : status;
}

std::optional<int> CBatch::Begin(const tAdapt& adapt)
{
    CDescriptor list;
    if (!mOptions.filesFrom.empty()) {
        list = CDocumentSource::OpenList(mOptions.filesFrom);
        if (!list.IsOpen()) {
            COutput::PrintMessage("the list " + Escapes::ForTerminal(mOptions.filesFrom) +
                                  " cannot be read: " + strerror(errno));
            return kExitUsage;
        }
    }
    mSource = std::make_unique<CDocumentSource>(mOptions.paths, std::move(list), mOptions.nullSeparated ? '\0' : '\n');
    mSource->SetExcludes(mOptions.excludes);
    std::optional<tFailure> cannotServe;
    tWorkerSettings settings = GetWorkerSettings(mOptions, cannotServe);
    if (adapt) {
        adapt(settings);
    }
    mPool = std::make_unique<CWorkerPool>(settings, mOptions.timeoutSeconds, CountWorkers(mOptions.jobs));
    if (cannotServe) {
        mPool->Refuse(*cannotServe);
    }
    tFailure failure;
    switch (mPool->WaitUntilReady(failure)) {
    case CWorkerPool::eResult::kDone:
        break;
    case CWorkerPool::eResult::kFailed:
        COutput::PrintMessage(Escapes::ForTerminal(failure.message));
        break;
    case CWorkerPool::eResult::kInterrupted:
        return kExitInterrupted;
    }
    return std::nullopt;
}

bool CBatch::Ask(tRequest request, tAnswer& answer)
{
    uint64_t ticket = 0;
    mPool->Submit(ticket, std::move(request), CDescriptor());
    return mPool->Collect(ticket, answer) != CWorkerPool::eResult::kInterrupted;
}

/// What has become of the documents, in a line. @param done  "imported"
static std::string Summarize(const tRunCounts& counts, const char* done, double seconds)
{
    std::string text = std::to_string(counts.good) + " " + done;
    if (!counts.failed.empty()) {
        text += ", " + std::to_string(counts.CountFailed()) + " failed (";
        const char* separator = "";
        for (const auto& [code, count] : counts.failed) {
            text += separator + (std::isdigit(static_cast<unsigned char>(code[0])) ? "code " + code : code) + ": " +
                    std::to_string(count);
            separator = ", ";
        }
        text += ")";
    }
    if (counts.skipped > 0) {
        text += ", " + std::to_string(counts.skipped) + " skipped";
    }
    char time[64];
    const auto all = static_cast<double>(counts.good + counts.CountFailed() + counts.skipped);
    snprintf(time, sizeof time, " in %.2f s (%.0f documents/s)", seconds, all / std::max(seconds, 0.001));
    return text + time;
}

/// Waits are milliseconds; negative ones have no end.
static int ShorterWait(int one, int other)
{
    return one < 0 ? other : other < 0 ? one : std::min(one, other);
}

int CBatch::Run(tRequest request, tRunHandlers handlers, COutput& output, const char* done)
{
    const CProgress::eMode mode = CProgress::Choose(mOptions.progress);
    CProgress progress(CannotServe() ? CProgress::eMode::kNever : mode);
    std::unique_ptr<CDocumentCounter> counter; // started when there is something to show
    std::string lastName;
    const std::function<int()> idle = handlers.idle;
    handlers.idle = [&] {
        const int untilProgress = progress.Update([&] {
            if (counter == nullptr && mOptions.filesFrom.empty()) {
                counter = std::make_unique<CDocumentCounter>(mOptions.paths, mOptions.excludes);
            }
            const tRunCounts& counts = mRun->GetCounts();
            return tProgress{counts.good + counts.CountFailed() + counts.skipped, counts.CountFailed(),
                             counter != nullptr ? counter->GetTotal() : std::nullopt, lastName};
        });
        return ShorterWait(ShorterWait(untilProgress, output.FlushIfDue()), idle ? idle() : -1);
    };
    if (mode != CProgress::eMode::kNever) {
        handlers.take = [&lastName, take = handlers.take](const tInput& input, tAnswer& answer) {
            lastName = input.path;
            return take(input, answer);
        };
    }
    mRun = std::make_unique<CDocumentRun>(*mSource, *mPool, std::move(request));
    const bool stopped = mRun->Run(std::move(handlers)) == CDocumentRun::eResult::kStopped;
    progress.End();
    if (!mOptions.quiet) {
        for (const std::string& folder : mSource->GetEmptyFolders()) {
            COutput::PrintMessage(Escapes::ForTerminal(folder) + ": there are no layouts in this folder");
        }
    }
    const tRunCounts& counts = mRun->GetCounts();
    if (!mOptions.quiet && !stopped && !CannotServe() && counts.good + counts.CountFailed() + counts.skipped > 1) {
        output.Flush();
        COutput::PrintMessage(Summarize(counts, done, mRun->GetSeconds()));
    }
    if (HasBrokenList()) {
        COutput::PrintMessage("the list " + Escapes::ForTerminal(mOptions.filesFrom) +
                              " cannot be read to its end: " + strerror(mSource->GetListError()));
    }
    if (Interrupt::IsRequested()) {
        return kExitInterrupted;
    }
    return CannotServe() || HasBrokenList() || counts.CountFailed() > 0 ? kExitFailed
                                                                        : kExitOK; // also without any input
}

/// What a run does with answers that hold reports. @param use  the caller's, as long as the run
tRunHandlers CBatch::HandleReports(const tUseReport& use, COutput& output, CJSONLines* lines) const
{
    tRunHandlers handlers;
    handlers.take = [this, &use, &output, lines](const tInput& input, tAnswer& answer) {
        CReport report;
        if (answer.ok && !CReport::Parse(std::move(answer.report), report)) {
            answer = MakeFailure(eFailure::kCrash, "the worker's report is out of form");
        }
        if (answer.ok) {
            use(input, answer, report);
        }
        if (answer.ok || answer.failure.kind == eFailure::kDamaged) {
            // its user has written about it
        } else if (lines != nullptr) {
            lines->WriteFailure(input.path, answer.failure);
        } else if (!CannotServe()) { // else it has been said once
            output.Flush();          // so that on a terminal both stand in the order of the inputs
            COutput::PrintMessage(Escapes::ForTerminal(input.path + ": " + answer.failure.message));
        }
        output.FlushIfDue(); // what is made of reports may be large, and does not wait for the end of a turn
        return !output.HasFailed();
    };
    return handlers;
}

int CBatch::RunForReports(tRequest request, const tUseReport& use, COutput& output, CJSONLines* lines, const char* done,
                          std::function<bool(tInput&)> isWantedOpen)
{
    tRunHandlers handlers = HandleReports(use, output, lines);
    handlers.isWantedOpen = std::move(isWantedOpen);
    return Run(std::move(request), std::move(handlers), output, done);
}

int CBatch::AskBesides(tRequest request, const std::vector<std::string>& paths, const tUseReport& use, COutput& output,
                       CJSONLines* lines)
{
    CDocumentSource source(paths);
    CDocumentRun run(source, *mPool, std::move(request));
    run.Run(HandleReports(use, output, lines));
    return Interrupt::IsRequested() ? kExitInterrupted : run.GetCounts().CountFailed() > 0 ? kExitFailed : kExitOK;
}

int PrintReports(const tBatchOptions& options, eVerb verb, bool isJSON, const tFormatReport& format, const char* done)
{
    CBatch batch(options);
    if (const std::optional<int> status = batch.Begin()) {
        return *status;
    }
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    const auto use = [&](const tInput& input, tAnswer& answer, const CReport& report) {
        const std::string text = format(input, answer, report);
        isJSON ? lines.WriteLine(text) : output.Write(text);
    };
    return FinishOutput(output, batch.RunForReports({verb}, use, output, isJSON ? &lines : nullptr, done));
}
