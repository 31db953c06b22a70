// What happens in folders, as the system tells it. Without the rest of Platform: for programs that have no other use of
// it.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

/// Something that happened in a watched folder.
struct tFolderEvent {
    enum class eKind {
        kFile,       ///< a file or link is new, or was written, or may be read by others than before
        kFolder,     ///< the same for a folder, which is not watched yet
        kFileGone,   ///< removed or moved away
        kFolderGone, ///< the same for a folder: what lay below it went along
        kSelf,       ///< a watched folder has gone from its place, or its file system was unmounted
        kLost        ///< there was more than the system could keep; `path` is empty
    };
    eKind kind = eKind::kFile;
    std::string path;
};

/// Watches folders, each for itself: what lies deeper is watched when it is added. Not for several threads.
class CFolderWatch {
public:
    enum class eAdded {
        kYes,
        kNotThere, ///< or is no folder, or must not be read: there is nothing to be told of it
        kNoRoom    ///< the system watches no more folders for this user, or cannot at all
    };

    CFolderWatch();
    ~CFolderWatch();
    CFolderWatch(const CFolderWatch&) = delete;
    CFolderWatch& operator=(const CFolderWatch&) = delete;

    /// Whether the system can watch folders.
    bool IsOpen() const { return mDescriptor >= 0; }

    /// Becomes readable when something has happened.
    int GetDescriptor() const { return mDescriptor; }

    /// @param folder  absolute; a link is not followed
    eAdded Add(const std::string& folder);

    /// Forgets a folder and all below it.
    void Remove(const std::string& folder);

    size_t GetCount() const { return mNumbers.size(); }

    /// What has happened since, in its order, without waiting. Paths are those by which folders were added.
    std::vector<tFolderEvent> Read();

private:
    void Drop(int number);

    int mDescriptor = -1;
    std::unordered_map<int, std::string> mFolders;
    std::map<std::string, int> mNumbers;
};
