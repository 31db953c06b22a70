// velmora index --watch: an index that follows its folders.
#include "ExitCodes.h"
#include "Interrupt.h"
#include "Places.h"
#include "Platform/FolderWatch.h"
#include "commands/CIndexing.h"
#include "index/FolderPaths.h"
#include "input/DocumentNames.h"
#include "output/CJSONLines.h"
#include "output/COutput.h"
#include "output/Escapes.h"

#include <algorithm>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <utility>

namespace {
using tClock = std::chrono::steady_clock;
using eAccess = CIndexDatabase::eAccess;

/// Changes are gathered for so long from the first one on: programs write a file in several steps.
constexpr std::chrono::seconds kGathering{1};

/// Between two tries to write while another run does.
constexpr std::chrono::milliseconds kLockedPause{500};

/// How often it is asked whether other runs have remembered or forgotten folders, and whether missing ones are back.
constexpr std::chrono::minutes kLook{1};

/// How often everything is walked where the system does not tell of all changes.
constexpr std::chrono::minutes kWalk{10};

/// When more documents than this go at once, their folders are walked instead of asking for each.
constexpr size_t kMostSingly = 256;

bool IsFolder(const std::string& path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Exists(const std::string& path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0;
}

/// Keeps an index current. It is open for writing only while something is written, so that other runs have their turn.
class CFollower {
public:
    CFollower(const std::string& database, const tIndexOptions& options)
        : mDatabase(database), mOptions(options), mMountTable(open("/proc/self/mounts", O_RDONLY | O_CLOEXEC))
    {
        mOptions.newFailures = true; // what is wrong is said once
    }

    int Run()
    {
        if (!mWatch.IsOpen()) {
            COutput::PrintMessage("--watch: this system does not tell what happens in folders; run 'velmora index' at"
                                  " times instead");
            return kExitFailed;
        }
        Interrupt::InstallForService();
        try {
            CIndexDatabase index(mDatabase, eAccess::kRead);
            mRoots = RootsOf(index);
        } catch (const CIndexMissing&) {
        }
        for (const std::string& path : mOptions.paths) {
            mRoots.insert(ResolvePath(path));
        }
        WatchAll(); // before the walk: what changes during it is told of
        mMountPoints = ListMountPoints();
        mMustWalk = true;
        while (!Interrupt::IsRequested() && !mOutput.HasFailed() && !mOutput.IsReaderGone()) {
            if (HasWork() && tClock::now() >= mDue && !Write()) {
                return mOutput.Flush(), mStatus;
            }
            Wait();
        }
        mOutput.Flush();
        return Interrupt::IsRequested() ? (Interrupt::IsTermination() ? kExitOK : kExitInterrupted)
               : mOutput.HasFailed()    ? kExitFailed
                                        : kExitOK;
    }

private:
    bool HasWork() const { return mMustWalk || !mChanged.empty() || !mGone.empty(); }

    /// Until there is something to do, or to look at.
    void Wait()
    {
        tClock::time_point until = mNextLook;
        until = HasWork() ? std::min(until, mDue) : until;
        until = mIsPartial ? std::min(until, mNextWalk) : until;
        const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(until - tClock::now()).count();
        pollfd waits[] = {{mWatch.GetDescriptor(), POLLIN, 0},
                          {Interrupt::GetDescriptor(), POLLIN, 0},
                          {mMountTable.Get(), POLLPRI, 0}};
        poll(waits, std::size(waits), static_cast<int>(std::max<int64_t>(milliseconds, 0)));
        if (waits[2].revents != 0) { // something was mounted or unmounted, somewhere
            if (std::set<std::string> now = ListMountPoints(); now != mMountPoints) {
                mMountPoints = std::move(now);
                WatchAll();
                Walk();
            }
        }
        Gather();
        const tClock::time_point now = tClock::now();
        if (now >= mNextLook) {
            mNextLook = now + kLook;
            Look();
        }
        if (mIsPartial && now >= mNextWalk) {
            Walk();
        }
    }

    /// Has everything walked when other changes are due.
    void Walk()
    {
        mDue = HasWork() ? mDue : tClock::now() + kGathering;
        mMustWalk = true;
    }

    bool IsBelowRoots(const std::string& path) const
    {
        return std::any_of(mRoots.begin(), mRoots.end(), [&](const std::string& root) { return LiesIn(path, root); });
    }

    bool IsExcluded(const std::string& path) const
    {
        return DocumentNames::IsExcluded(mOptions.excludes, DocumentNames::NameOfFile(path), path) ||
               path.starts_with(mDatabase); // which this program writes itself
    }

    /// Takes what the system tells.
    void Gather()
    {
        using eKind = tFolderEvent::eKind;
        for (const tFolderEvent& event : mWatch.Read()) {
            if (event.kind == eKind::kLost) {
                WatchAll(); // some of what is lost may be new folders
                Walk();
                continue;
            }
            if (event.kind == eKind::kSelf) { // else the folder above tells of it, or the table of mounts
                if (mRoots.count(event.path) > 0) {
                    Walk();
                }
                continue;
            }
            if (!IsBelowRoots(event.path) || IsExcluded(event.path)) {
                continue;
            }
            mDue = HasWork() ? mDue : tClock::now() + kGathering;
            const bool isGone = event.kind == eKind::kFileGone || event.kind == eKind::kFolderGone;
            (isGone ? mGone : mChanged).insert(event.path);
            if (event.kind == eKind::kFolderGone) {
                mWatch.Remove(event.path);
            } else if (event.kind == eKind::kFolder) {
                WatchBelow(event.path);
            }
        }
    }

    void WatchAll()
    {
        mMissing.clear();
        for (const std::string& root : mRoots) {
            if (!Exists(root)) {
                mMissing.insert(root);
            }
            WatchBelow(IsFolder(root) ? root : FolderOf(root));
        }
    }

    /// Watches a folder, then looks for folders in it: so none is missed that is made meanwhile.
    void WatchBelow(const std::string& top)
    {
        std::vector<std::string> open = {top};
        while (!open.empty() && !Interrupt::IsRequested()) {
            const std::string folder = std::move(open.back());
            open.pop_back();
            if (mWatch.Add(folder) == CFolderWatch::eAdded::kNoRoom) {
                SayPartial(folder);
                return;
            }
            if (!IsBelowRoots(folder)) { // that of a single document
                continue;
            }
            DIR* const entries = opendir(folder.c_str());
            for (const dirent* entry = entries != nullptr ? readdir(entries) : nullptr; entry != nullptr;
                 entry = readdir(entries)) {
                const std::string name = entry->d_name;
                std::string path = folder;
                path += folder.ends_with('/') ? "" : "/";
                path += name;
                const bool mayBe = entry->d_type == DT_DIR || (entry->d_type == DT_UNKNOWN && IsFolder(path));
                if (mayBe && name != "." && name != ".." && !IsExcluded(path)) {
                    open.push_back(std::move(path));
                }
            }
            if (entries != nullptr) {
                closedir(entries);
            }
        }
    }

    void SayPartial(const std::string& folder)
    {
        if (!mIsPartial) {
            COutput::PrintMessage("the system watches no more folders (" + std::to_string(mWatch.GetCount()) +
                                  "; fs.inotify.max_user_watches says how many): " + Escapes::ForTerminal(folder) +
                                  " and others are walked every " + std::to_string(kWalk.count()) + " minutes");
            mNextWalk = tClock::now() + kWalk;
        }
        mIsPartial = true;
    }

    /// The table's lines of file systems that are mounted below the roots, or hold them.
    std::set<std::string> ListMountPoints() const
    {
        std::set<std::string> lines;
        std::ifstream table("/proc/self/mounts");
        for (std::string line; std::getline(table, line);) {
            std::istringstream words(line);
            std::string device;
            std::string escaped;
            words >> device >> escaped;
            std::string path;
            for (size_t i = 0; i < escaped.size(); ++i) { // blanks and the like are \040
                const bool isCode = escaped[i] == '\\' && i + 3 < escaped.size();
                path += isCode ? static_cast<char>(std::stoi(escaped.substr(i + 1, 3), nullptr, 8)) : escaped[i];
                i += isCode ? 3 : 0;
            }
            if (IsBelowRoots(path) || std::any_of(mRoots.begin(), mRoots.end(),
                                                  [&](const std::string& root) { return LiesIn(root, path); })) {
                lines.insert(line);
            }
        }
        return lines;
    }

    /// Follows what other runs remember and forget, and folders that are there again.
    void Look()
    {
        try {
            CIndexDatabase index(mDatabase, eAccess::kRead);
            TakeRoots(index);
        } catch (const std::exception&) { // said when it is to be written
        }
        if (std::any_of(mMissing.begin(), mMissing.end(), Exists)) {
            WatchAll();
            Walk();
        }
    }

    static std::set<std::string> RootsOf(CIndexDatabase& index)
    {
        std::set<std::string> roots;
        for (const tPlace& place : index.GetPlaces()) {
            if (place.isRoot && place.path.starts_with('/')) { // who knows who wrote there
                roots.insert(place.path);
            }
        }
        return roots;
    }

    void TakeRoots(CIndexDatabase& index)
    {
        std::set<std::string> roots = RootsOf(index);
        if (roots == mRoots || roots.empty()) { // a new file knows none yet
            return;
        }
        const std::set<std::string> before = std::exchange(mRoots, std::move(roots));
        for (const std::string& root : before) {
            if (!IsBelowRoots(root)) {
                mWatch.Remove(root);
            }
        }
        WatchAll();
        mMountPoints = ListMountPoints();
        Walk();
    }

    /// Sorts what has happened into what is to be read, and what is no document any more.
    void Sort(std::vector<std::string>& changed, std::vector<std::string>& gone) const
    {
        std::set<std::string> all = mChanged;
        all.insert(mGone.begin(), mGone.end());
        for (const std::string& path : all) {
            if (IsFolder(path) || CDocumentSource::IsDocument(path)) {
                changed.push_back(path);
            } else if (Exists(path) || mGone.count(path) > 0) { // else its file system may have gone
                gone.push_back(path);
            }
        }
        if (gone.size() <= kMostSingly) {
            return;
        }
        std::set<std::string> folders;
        for (const std::string& path : std::exchange(gone, {})) {
            std::string folder = FolderOf(path);
            while (!Exists(folder) && IsBelowRoots(folder)) {
                folder = FolderOf(folder);
            }
            if (IsBelowRoots(folder)) {
                folders.insert(folder);
            } else {
                gone.push_back(path);
            }
        }
        changed.insert(changed.end(), folders.begin(), folders.end());
    }

    /// Brings the index up to date. @return false when this cannot go on, which has been said; mStatus is then set
    bool Write()
    {
        std::vector<std::string> changed;
        std::vector<std::string> gone;
        Sort(changed, gone);
        if (!mMustWalk && changed.empty() && !gone.empty()) { // most files that go are no documents
            CIndexDatabase index(mDatabase, eAccess::kRead);
            std::erase_if(gone, [&](const std::string& path) { return !index.Holds(path); });
        }
        if (mMustWalk || !changed.empty() || !gone.empty()) {
            try {
                CIndexDatabase index(mDatabase, eAccess::kWrite);
                if (!WriteTo(index, changed, gone)) {
                    return false;
                }
            } catch (const CIndexLocked& error) {
                if (!std::exchange(mSaidLocked, true)) {
                    COutput::PrintMessage("waiting: another run is writing the index");
                }
                mDue = tClock::now() + kLockedPause;
                return true;
            }
            mOutput.Flush();
        }
        mSaidLocked = false;
        mChanged.clear();
        mGone.clear();
        return true;
    }

    bool WriteTo(CIndexDatabase& index, const std::vector<std::string>& changed, const std::vector<std::string>& gone)
    {
        const auto listener = [this](const tIndexChange& change) { Tell(change); };
        const bool isNew = index.GetStatus().roots.empty(); // or the file was removed meanwhile
        mMustWalk = mMustWalk || isNew;
        if (!changed.empty() || !gone.empty()) { // first what is known for sure
            CIndexing indexing(index, mOptions);
            indexing.SetListener(listener);
            indexing.Update(changed, gone);
            if (!indexing.CanServe()) {
                return false;
            }
        }
        if (std::exchange(mMustWalk, false)) {
            mNextWalk = tClock::now() + kWalk;
            tIndexOptions options = mOptions;
            if (isNew) {
                options.paths.assign(mRoots.begin(), mRoots.end());
            }
            CIndexing indexing(index, options);
            indexing.SetListener(listener);
            const int status = indexing.Run();
            if (!indexing.CanServe() || status == kExitUsage) {
                mStatus = status;
                return false;
            }
            mOptions.paths.clear(); // remembered by now
            TakeRoots(index);
            if (!std::exchange(mHasBegun, true) && !mOptions.quiet) {
                COutput::PrintMessage("watching " + std::to_string(mWatch.GetCount()) +
                                      (mWatch.GetCount() == 1 ? " folder" : " folders"));
            }
        }
        return true;
    }

    /// A line for a change.
    void Tell(const tIndexChange& change)
    {
        using eKind = tIndexChange::eKind;
        const bool isFailure = change.kind == eKind::kFailed;
        if (isFailure && !change.isNew) {
            return;
        }
        const char* const what = change.kind == eKind::kAdded     ? "added"
                                 : change.kind == eKind::kChanged ? "changed"
                                 : change.kind == eKind::kRemoved ? "removed"
                                                                  : "failed";
        if (mOptions.format == "json") {
            JSON::tRecord record;
            JSON::PutPath(record, "path", change.path);
            record["ok"] = !isFailure;
            record["change"] = what;
            if (isFailure) {
                record["error"] = JSON::DescribeFailure(change.failure.code, change.failure.message);
            }
            mLines.Write(record);
        } else {
            const std::string why = isFailure ? ": " + Escapes::ForTerminal(change.failure.message) : "";
            mOutput.Write(std::string(what) + " " + Escapes::ForTerminal(change.path) + why + "\n");
        }
        mOutput.FlushIfDue();
    }

    std::string mDatabase;
    tIndexOptions mOptions;
    CFolderWatch mWatch;
    CDescriptor mMountTable; ///< tells poll when it changes
    std::set<std::string> mMountPoints;
    std::set<std::string> mRoots;
    std::set<std::string> mMissing; ///< roots that were not there when they were to be watched
    std::set<std::string> mChanged;
    std::set<std::string> mGone;
    bool mMustWalk = false;
    bool mIsPartial = false; ///< not every folder is watched
    bool mSaidLocked = false;
    bool mHasBegun = false;
    int mStatus = kExitFailed;
    tClock::time_point mDue;
    tClock::time_point mNextLook = tClock::now() + kLook;
    tClock::time_point mNextWalk;
    COutput mOutput{STDOUT_FILENO};
    CJSONLines mLines{mOutput};
};
} // namespace

int WatchFolders(const std::string& database, const tIndexOptions& options)
{
    Places::MakeFolderOf(database);
    return CFollower(database, options).Run();
}
