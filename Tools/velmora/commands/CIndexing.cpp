#include "commands/CIndexing.h"

#include "ExitCodes.h"
#include "Importer/Names.h"
#include "Interrupt.h"
#include "index/ContentHash.h"
#include "index/FolderPaths.h"
#include "output/CJSONLines.h"
#include "output/COutput.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

/// Tells one importer from another: the program's version, and the content of plug-in and worker.
static std::string IdentifyImporter(const tWorkerSettings& settings)
{
    std::vector<std::string> files = {settings.program};
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator entry(settings.plugIn, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file(error)) {
            files.push_back(entry->path().string());
        }
    }
    std::sort(files.begin() + 1, files.end());
    std::string hashes;
    for (const std::string& file : files) {
        const CDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC));
        hashes += ContentHash::OfFile(descriptor.Get()).value_or(std::string());
    }
    return std::string(GetVersion()) + "-" + ContentHash::InHex(ContentHash::OfBytes(hashes)).substr(0, 16);
}

/// Paths without those that lie below others.
static std::vector<std::string> Outermost(std::vector<std::string> paths)
{
    std::sort(paths.begin(), paths.end(),
              [](const std::string& one, const std::string& other) { return one.size() < other.size(); });
    std::vector<std::string> kept;
    for (std::string& path : paths) {
        if (std::none_of(kept.begin(), kept.end(), [&](const std::string& other) { return LiesIn(path, other); })) {
            kept.push_back(std::move(path));
        }
    }
    std::sort(kept.begin(), kept.end());
    return kept;
}

/// Whether a path is in the form in which the index keeps them.
static bool IsResolved(const std::string& path)
{
    return path.starts_with('/') && path.find("//") == std::string::npos && path.find("/./") == std::string::npos &&
           path.find("/../") == std::string::npos && !path.ends_with('/') && !path.ends_with("/.") &&
           !path.ends_with("/..");
}

/// Only paths from a list need it: those below roots are as the index wants them.
static std::string Resolve(const std::string& path)
{
    return IsResolved(path) ? path : ResolvePath(path);
}

static bool Exists(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 || lstat(path.c_str(), &status) == 0;
}

CIndexing::CIndexing(CIndexDatabase& index, const tIndexOptions& options)
    : mIndex(index), mOptions(options), mPlaces(index.GetPlaces())
{}

int CIndexing::Run()
{
    std::vector<std::string> paths;
    for (const std::string& path : mOptions.paths) {
        paths.push_back(ResolvePath(path));
    }
    if (mOptions.rebuild || mOptions.watch || (paths.empty() && mOptions.filesFrom.empty())) { // everything
        for (const tPlace& place : mPlaces) {
            if (place.isRoot) {
                paths.push_back(place.path);
            }
        }
    }
    if (!Prepare(Outermost(std::move(paths))) && mOptions.filesFrom.empty() && !mMissing) {
        COutput::PrintMessage("nothing is indexed yet: name folders or documents\nTry 'velmora help index'.");
        return kExitUsage;
    }
    tIndexOptions options = mOptions;
    options.paths = mWalked;
    options.quiet = true; // this command has a summary of its own
    std::optional<tFailure> ignored;
    CIndexRun run(mIndex, {IdentifyImporter(GetWorkerSettings(options, ignored)), options.retryFailed, options.verify,
                           options.removeMissing ? eTrust::kAsked : eTrust::kCareful});
    run.SetListener([this](const tIndexChange& change) { Tell(change); });
    RememberRoots(mWalked);
    bool whole = true;
    if (!mWalked.empty() || !options.filesFrom.empty()) {
        if (const std::optional<int> status = Walk(run, options, whole)) {
            return *status;
        }
    }
    if (whole) {
        for (const std::string& root : mRoots) {
            run.Finish(root);
        }
        const tIndexSummary& summary = run.GetSummary();
        if (summary.added + summary.changed > summary.unchanged) { // what so much has scattered
            mIndex.Optimize();
        }
    }
    run.Commit();
    const int64_t kept = SayKept(run);
    const int64_t failed = options.newFailures ? run.GetSummary().newFailed : run.GetSummary().failed;
    const bool isBad = !whole || mMissing || failed > 0 || kept > 0;
    PrintSummary(run, options.newFailures && !isBad);
    if (Interrupt::IsRequested()) {
        return kExitInterrupted;
    }
    return isBad ? kExitFailed : kExitOK;
}

void CIndexing::Update(const std::vector<std::string>& changed, const std::vector<std::string>& gone)
{
    mWalked = Outermost(changed);
    tIndexOptions options = mOptions;
    options.paths = mWalked;
    options.quiet = true;
    std::optional<tFailure> ignored;
    CIndexRun run(mIndex, {IdentifyImporter(GetWorkerSettings(options, ignored)), options.retryFailed, options.verify,
                           eTrust::kWitnessed});
    run.SetListener([this](const tIndexChange& change) { Tell(change); });
    bool whole = true;
    if (!mWalked.empty() && Walk(run, options, whole)) {
        return;
    }
    for (const std::string& path : mWalked) {
        if (whole && std::filesystem::is_directory(path)) {
            run.Finish(path);
        }
    }
    for (auto path = gone.rbegin(); path != gone.rend(); ++path) {
        run.Finish(*path);
    }
    run.Commit();
    SayKept(run);
}

/// Sorts the paths into those that can be walked, those that are known and not there, and errors.
/// @return false when there are none
bool CIndexing::Prepare(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths) {
        const bool isPlace =
            std::any_of(mPlaces.begin(), mPlaces.end(), [&](const tPlace& place) { return place.path == path; });
        if (Exists(path)) {
            mWalked.push_back(path);
        } else if (!isPlace && mIndex.TakeCensus(path).missing == 0) {
            COutput::PrintMessage(Escapes::ForTerminal(path) + ": there is no such file or folder");
            mMissing = true;
            continue;
        }
        mRoots.push_back(path);
    }
    return !mRoots.empty();
}

/// Keeps the folders and documents to be walked again; what lies below another one needs no mention.
void CIndexing::RememberRoots(const std::vector<std::string>& roots)
{
    std::vector<std::string> all = roots;
    for (const tPlace& place : mPlaces) {
        if (place.isRoot) {
            all.push_back(place.path);
        }
    }
    const std::vector<std::string> kept = Outermost(all);
    for (const std::string& root : all) {
        if (std::find(kept.begin(), kept.end(), root) == kept.end()) {
            mIndex.RemoveRoot(root);
        } else {
            mIndex.AddRoot(root);
        }
    }
    mIndex.Commit();
}

/// @param whole  set to false when not everything was seen
/// @return the exit status when the run cannot be begun
std::optional<int> CIndexing::Walk(CIndexRun& run, tIndexOptions& options, bool& whole)
{
    CBatch batch(options);
    if (const std::optional<int> status = batch.Begin()) {
        return status;
    }
    mCanServe = !batch.CannotServe();
    if (!mCanServe) {
        return kExitFailed;
    }
    bool stopped = false;
    tRunHandlers handlers;
    handlers.isWanted = [&](const tInput& input) { return run.Wants(Resolve(input.path), input.status); };
    handlers.isWantedOpen = [&](tInput& input) {
        return run.WantsOpen(Resolve(input.path), input.status, input.document.Get(), input.note);
    };
    handlers.take = [&](const tInput& input, const tAnswer& answer) {
        stopped = batch.CannotServe(); // then this failure is none of the document
        if (!stopped) {
            Take(run, input, answer);
        }
        return !stopped;
    };
    handlers.idle = [&] {
        run.CommitIfDue();
        return -1;
    };
    COutput output(STDOUT_FILENO);
    batch.Run({eVerb::kIndex, Importer::kContentType}, std::move(handlers), output, "indexed");
    whole = !stopped && !batch.HasBrokenList() && !Interrupt::IsRequested();
    return std::nullopt;
}

void CIndexing::Take(CIndexRun& run, const tInput& input, const tAnswer& answer)
{
    const std::string path = Resolve(input.path);
    mShown = input.path;
    switch (run.Take(path, input.status, input.note, answer)) {
    case CIndexRun::eTaken::kTaken:
        break;
    case CIndexRun::eTaken::kNoDocument:
        COutput::PrintMessage(Escapes::ForTerminal(input.path + ": " + answer.failure.message));
        mMissing = true;
        break;
    case CIndexRun::eTaken::kGone: // since its folder was listed, or a list names it
        if (mListener == nullptr &&
            std::none_of(mWalked.begin(), mWalked.end(), [&](const std::string& root) { return LiesIn(path, root); })) {
            TakeGone(run, path, input.path);
        }
        break;
    }
}

void CIndexing::TakeGone(CIndexRun& run, const std::string& path, const std::string& shown)
{
    const int64_t removed = run.GetSummary().removed;
    const size_t kept = run.GetKept().size();
    run.Finish(path);
    const bool isRemoved = run.GetSummary().removed > removed;
    if (isRemoved || run.GetKept().size() == kept) {
        COutput::PrintMessage(Escapes::ForTerminal(shown) +
                              (isRemoved ? " is gone, and leaves the index" : ": there is no such file or folder"));
    }
    mMissing = mMissing || !isRemoved;
}

void CIndexing::Tell(const tIndexChange& change) const
{
    if (mListener) {
        mListener(change);
    } else if (change.kind == tIndexChange::eKind::kFailed && (change.isNew || !mOptions.newFailures)) {
        COutput::PrintMessage(Escapes::ForTerminal(mShown + ": " + change.failure.message));
    }
}

/// Names the folders whose documents were not found and are kept. @return how many there are to be named
int64_t CIndexing::SayKept(const CIndexRun& run) const
{
    int64_t count = 0;
    for (const tKept& kept : run.GetKept()) {
        if (mOptions.newFailures && !kept.isNew) {
            continue;
        }
        ++count;
        const std::string path = Escapes::ForTerminal(kept.path);
        std::string text = path;
        if (kept.why == tKept::eWhy::kTooMany) {
            text += ": " + std::to_string(kept.documents) + " of " + std::to_string(kept.known);
            text += " documents are missing, and kept ('velmora index --remove-missing' removes them)";
        } else {
            text += kept.why == tKept::eWhy::kNotThere ? " is not reachable"
                    : kept.why == tKept::eWhy::kEmpty  ? " holds no documents any more"
                                                       : " is on another file system than before";
            text += ": what the index knows of it is kept, " + std::to_string(kept.documents);
            text += kept.documents == 1 ? " document" : " documents";
            text += " ('velmora index --forget ";
            text += path;
            text += "' drops it)";
        }
        COutput::PrintMessage(text);
    }
    return count;
}

void CIndexing::PrintSummary(const CIndexRun& run, bool isSilent) const
{
    if (mListener) {
        return;
    }
    const tIndexSummary& summary = run.GetSummary();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - mBegin).count();
    const int64_t documents = mIndex.GetStatus().documents;
    int64_t kept = 0;
    for (const tKept& entry : run.GetKept()) {
        kept += entry.documents;
    }
    COutput output(STDOUT_FILENO);
    if (mOptions.format == "json") {
        CJSONLines(output).Write({{"added", summary.added},
                                  {"changed", summary.changed},
                                  {"unchanged", summary.unchanged},
                                  {"removed", summary.removed},
                                  {"failed", summary.failed},
                                  {"known_failed", summary.knownFailed},
                                  {"new_failed", summary.newFailed},
                                  {"kept", kept},
                                  {"opened", summary.opened},
                                  {"documents", documents},
                                  {"seconds", seconds}});
    } else if (!mOptions.quiet && !isSilent) {
        char text[512];
        snprintf(text, sizeof text,
                 "%lld added, %lld changed, %lld unchanged, %lld removed, %lld failed; %lld documents in the index"
                 " (%lld opened, %.1f s)\n",
                 static_cast<long long>(summary.added), static_cast<long long>(summary.changed),
                 static_cast<long long>(summary.unchanged), static_cast<long long>(summary.removed),
                 static_cast<long long>(mOptions.newFailures ? summary.newFailed : summary.failed),
                 static_cast<long long>(documents), static_cast<long long>(summary.opened), seconds);
        output.Write(text);
    }
    output.Flush();
    if (summary.knownFailed > 0 && !mOptions.newFailures) {
        COutput::PrintMessage("failed before, and not changed since: " + std::to_string(summary.knownFailed) +
                              " ('velmora index --failed' lists them)");
    }
}
