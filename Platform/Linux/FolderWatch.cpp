#include "Platform/FolderWatch.h"

#include <cerrno>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

/// Not IN_MODIFY: a file that is being written is read when it is closed. IN_CREATE also tells of links.
static constexpr uint32_t kWanted = IN_CREATE | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                    IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;

/// Bytes of events that are read at once.
static constexpr size_t kBuffer = size_t{64} << 10;

CFolderWatch::CFolderWatch() : mDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

CFolderWatch::~CFolderWatch()
{
    if (mDescriptor >= 0) {
        close(mDescriptor);
    }
}

CFolderWatch::eAdded CFolderWatch::Add(const std::string& folder)
{
    const int number = inotify_add_watch(mDescriptor, folder.c_str(), kWanted);
    if (number < 0) {
        return errno == ENOENT || errno == ENOTDIR || errno == EACCES || errno == ELOOP ? eAdded::kNotThere
                                                                                        : eAdded::kNoRoom;
    }
    const auto known = mFolders.find(number);
    if (known != mFolders.end()) { // the same folder under another name: moved
        mNumbers.erase(known->second);
    }
    const auto before = mNumbers.find(folder);
    if (before != mNumbers.end() && before->second != number) { // another folder under the same name
        mFolders.erase(before->second);
        inotify_rm_watch(mDescriptor, before->second);
    }
    mFolders[number] = folder;
    mNumbers[folder] = number;
    return eAdded::kYes;
}

void CFolderWatch::Remove(const std::string& folder)
{
    const std::string below = folder.ends_with('/') ? folder : folder + "/";
    const auto drop = [this](std::map<std::string, int>::iterator entry) {
        inotify_rm_watch(mDescriptor, entry->second);
        mFolders.erase(entry->second);
        return mNumbers.erase(entry);
    };
    if (const auto entry = mNumbers.find(folder); entry != mNumbers.end()) {
        drop(entry);
    }
    for (auto entry = mNumbers.lower_bound(below); entry != mNumbers.end() && entry->first.starts_with(below);) {
        entry = drop(entry);
    }
}

/// The system has ended the watch by itself.
void CFolderWatch::Drop(int number)
{
    if (const auto entry = mFolders.find(number); entry != mFolders.end()) {
        mNumbers.erase(entry->second);
        mFolders.erase(entry);
    }
}

std::vector<tFolderEvent> CFolderWatch::Read()
{
    using eKind = tFolderEvent::eKind;
    std::vector<tFolderEvent> events;
    alignas(inotify_event) char buffer[kBuffer];
    for (ssize_t count = 0; (count = read(mDescriptor, buffer, sizeof buffer)) > 0;) {
        for (size_t at = 0; at < static_cast<size_t>(count);) {
            inotify_event event = {};
            memcpy(&event, buffer + at, sizeof event);
            const char* const name = buffer + at + sizeof event;
            at += sizeof event + event.len;
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                events.push_back({eKind::kLost, {}});
                continue;
            }
            const auto folder = mFolders.find(event.wd);
            if (folder == mFolders.end()) { // of a folder that was removed
                continue;
            }
            const bool isFolder = (event.mask & IN_ISDIR) != 0;
            if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) != 0) {
                events.push_back({eKind::kSelf, folder->second});
            } else if ((event.mask & IN_IGNORED) != 0) {
                Drop(event.wd);
            } else if (event.len > 0) {
                const bool isGone = (event.mask & (IN_DELETE | IN_MOVED_FROM)) != 0;
                events.push_back({isGone ? (isFolder ? eKind::kFolderGone : eKind::kFileGone)
                                         : (isFolder ? eKind::kFolder : eKind::kFile),
                                  folder->second + (folder->second.ends_with('/') ? "" : "/") + name});
            }
        }
    }
    return events;
}
