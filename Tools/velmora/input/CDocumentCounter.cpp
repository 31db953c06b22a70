#include "input/CDocumentCounter.h"

#include "input/DocumentNames.h"
#include "protocol/CDescriptor.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

CDocumentCounter::CDocumentCounter(std::vector<std::string> paths, std::vector<std::string> excludes)
    : mExcludes(std::move(excludes)), mThread([this, operands = std::move(paths)] { Count(operands); })
{}

CDocumentCounter::~CDocumentCounter()
{
    mStop = true;
    mThread.join();
}

std::optional<uint64_t> CDocumentCounter::GetTotal() const
{
    return mDone ? std::optional(mCount) : std::nullopt;
}

void CDocumentCounter::Count(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths) {
        struct stat status = {};
        if (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
            CountFolder(AT_FDCWD, path.c_str(), path);
        } else {
            ++mCount;
        }
    }
    mDone = !mStop;
}

void CDocumentCounter::CountFolder(int parent, const char* name, const std::string& path)
{
    const int links = parent == AT_FDCWD ? 0 : O_NOFOLLOW;
    CDescriptor descriptor(openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | links));
    DIR* entries = descriptor.IsOpen() ? fdopendir(descriptor.Get()) : nullptr;
    if (entries == nullptr) {
        return;
    }
    descriptor.Release();
    while (const dirent* entry = mStop ? nullptr : readdir(entries)) {
        if (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0) {
            continue;
        }
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) { // file systems that do not say
            struct stat status = {};
            isFolder =
                fstatat(dirfd(entries), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
        }
        if (!isFolder && !DocumentNames::HasExtension(entry->d_name)) {
            continue;
        }
        const std::string entryPath = path + (path.back() == '/' ? "" : "/") + entry->d_name;
        if (DocumentNames::IsExcluded(mExcludes, entry->d_name, entryPath)) {
            continue;
        }
        if (isFolder) {
            CountFolder(dirfd(entries), entry->d_name, entryPath);
        } else {
            ++mCount;
        }
    }
    closedir(entries);
}
