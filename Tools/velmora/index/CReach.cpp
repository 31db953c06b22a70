#include "index/CReach.h"

#include "index/FileSystemName.h"
#include "index/FolderPaths.h"

#include <algorithm>
#include <sys/stat.h>

void CReach::NoteDevice(const std::string& path, uint64_t device)
{
    mDevice = device;
    if (!mDevices.insert(device).second) {
        return;
    }
    const auto isOnDevice = [&](const std::string& folder) {
        struct stat status = {};
        return lstat(folder.c_str(), &status) == 0 && static_cast<uint64_t>(status.st_dev) == device;
    };
    std::string folder = FolderOf(path);
    if (!isOnDevice(folder)) { // a link to a file elsewhere, or a file system that counts in another way
        return;
    }
    while (folder != "/" && isOnDevice(FolderOf(folder))) {
        folder = FolderOf(folder);
    }
    mMountPoints.emplace(folder, FileSystemName::Of(folder));
}

/// Whether something that is not there was removed: what it was on is there, as it was, or has been removed itself.
bool CReach::IsGone(const std::string& path, const tPlace& place, eTrust trust)
{
    if (place.path == path) { // nobody can say; the user can
        return false;
    }
    const std::string now = FileSystemName::Of(place.path.empty() ? FolderOf(path) : place.path);
    return now.empty() ? trust == eTrust::kWitnessed : place.fileSystem.empty() || place.fileSystem == now;
}

bool CReach::Judge(const std::string& path, eTrust trust)
{
    tPlace place; // the innermost that the path lies in
    for (const tPlace& other : mDatabase.GetPlaces()) {
        if (LiesIn(path, other.path)) {
            place = other;
        }
    }
    const bool isPlace = place.path == path;
    const std::string now = FileSystemName::Of(path);
    const bool isUnknown = now.empty() && !IsGone(path, place, trust);
    if (!isUnknown) {
        JudgeMountPoints(path);
    }
    const tCensus census = mDatabase.TakeCensus(path);
    if (isUnknown && census.missing == 0 && !(isPlace && place.isRoot)) { // nothing of the index is concerned
        if (isPlace) {
            mDatabase.RemovePlace(path);
        }
        return false;
    }
    const bool isElsewhere = !now.empty() && !place.fileSystem.empty() && now != place.fileSystem;
    const bool mayBeEmpty =
        !isPlace || trust == eTrust::kWitnessed || (trust == eTrust::kAsked && now == place.fileSystem);
    const int64_t held = isPlace && place.held > 0 ? place.held : census.known;
    std::optional<tKept::eWhy> why;
    if (isUnknown || (isElsewhere && census.missing > 0 && census.seen == 0)) { // there is an empty mount point
        why = tKept::eWhy::kNotThere;
    } else if (isElsewhere && census.missing * 2 > held) {
        why = tKept::eWhy::kElsewhere;
    } else if (census.missing > 0 && census.seen == 0 && !mayBeEmpty) {
        why = tKept::eWhy::kEmpty;
    } else if (trust == eTrust::kCareful && census.lost > kFewMissing && census.lost * 2 > held) {
        why = tKept::eWhy::kTooMany;
    }
    if (why) {
        place.path = path;
        Keep(place, *why, census, isPlace);
        return false;
    }
    if (isPlace) {
        Settle(place, now);
    }
    return census.missing > 0;
}

/// The file systems below a folder. One that is not mounted leaves an empty folder, or none, to which no rule for the
/// folder above need apply: a disk may hold the smaller part of it.
void CReach::JudgeMountPoints(const std::string& path)
{
    for (const tPlace& place : mDatabase.GetPlaces()) {
        if (place.path == path || !LiesIn(place.path, path) || place.isRoot) {
            continue;
        }
        const std::string now = FileSystemName::Of(place.path);
        const tCensus census = now == place.fileSystem ? tCensus() : mDatabase.TakeCensus(place.path);
        if (census.missing * 2 > (place.held > 0 ? place.held : census.known)) {
            Keep(place, census.seen == 0 ? tKept::eWhy::kNotThere : tKept::eWhy::kElsewhere, census, true);
        } else if (now.empty() || now == FileSystemName::Of(FolderOf(place.path))) { // nothing is mounted any more
            mDatabase.RemovePlace(place.path);
        } else {
            Settle(place, now);
        }
        mMountPoints.erase(place.path);
    }
    for (const auto& [mountPoint, name] : mMountPoints) {
        if (mountPoint != path && LiesIn(mountPoint, path)) {
            mDatabase.StorePlace({mountPoint, name});
        }
    }
}

void CReach::Keep(tPlace place, tKept::eWhy why, const tCensus& census, bool remember)
{
    const bool isAbsent = why != tKept::eWhy::kTooMany;
    const bool isNew = isAbsent ? !place.isAbsent : place.held == 0;
    place.held = place.held > 0 ? place.held : census.known;
    mKept.push_back({place.path, why, census.missing, std::max(place.held, census.known), isNew});
    mDatabase.KeepBelow(place.path);
    if (isAbsent) { // whether its folders can be read is not known
        mDatabase.RemoveUnreadable(place.path, true);
    }
    place.isAbsent = isAbsent;
    if (remember) {
        mDatabase.StorePlace(place);
    }
}

/// All that is to be there is there.
void CReach::Settle(const tPlace& before, const std::string& fileSystem)
{
    const tPlace after = {before.path, fileSystem, before.isRoot, false, 0};
    if (!(after == before)) {
        mDatabase.StorePlace(after);
    }
}
