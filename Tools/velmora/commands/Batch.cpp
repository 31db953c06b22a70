#include "commands/Batch.h"

#include "ExitCodes.h"
#include "Interrupt.h"
#include "output/Escapes.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

void AddBatchOptions(CLI::App& app, tOptions& options, const std::string& pathHelp)
{
    app.add_option("PATH", options.paths, pathHelp);
    app.add_option("--files-from", options.filesFrom,
                   "Further documents from a list, a path a line; - is standard input")
        ->type_name("FILE");
    app.add_flag("-0,--null", options.nullSeparated, "The list has zero bytes between paths, not line breaks");
    app.add_option("--exclude", options.excludes,
                   "Pass over files and folders whose name matches, or whose path if there is a slash in it")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    app.add_option("-j,--jobs", options.jobs, "Worker processes (default: one for each core)")
        ->check(CLI::Range(1U, 1024U))
        ->type_name("N");
    AddWorkerOptions(app, options);
}

std::string CheckBatchOptions(const tOptions& options, const char* verb)
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

std::optional<int> CBatch::Begin()
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
    const tWorkerSettings settings = GetWorkerSettings(mOptions, cannotServe);
    const unsigned jobs = mOptions.jobs > 0 ? mOptions.jobs : std::max(std::thread::hardware_concurrency(), 1U);
    mPool = std::make_unique<CWorkerPool>(settings, mOptions.timeoutSeconds, jobs);
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

int CBatch::Run(tRequest request, tRunHandlers handlers, COutput& output, const char*)
{
    const std::function<int()> idle = handlers.idle;
    handlers.idle = [&] {
        output.Flush();
        return idle ? idle() : -1;
    };
    mRun = std::make_unique<CDocumentRun>(*mSource, *mPool, std::move(request));
    mRun->Run(std::move(handlers));
    if (Interrupt::IsRequested()) {
        return kExitInterrupted;
    }
    return CannotServe() || mRun->GetCounts().CountFailed() > 0 ? kExitFailed : kExitOK; // also without any input
}
