#include "index/FileSystemName.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#if defined(__APPLE__)
#include <sys/mount.h>
#include <sys/param.h>
#else
#include <sys/vfs.h>
#endif

/// The UUID of the file system on a device; empty when the system has no such list, or the device is none.
static std::string FindUUID(dev_t device)
{
    namespace fs = std::filesystem;
    std::error_code error;
    for (fs::directory_iterator entry("/dev/disk/by-uuid", error), end; !error && entry != end;
         entry.increment(error)) {
        struct stat status = {};
        if (stat(entry->path().c_str(), &status) == 0 && S_ISBLK(status.st_mode) && status.st_rdev == device) {
            return entry->path().filename().string();
        }
    }
    return {};
}

std::string FileSystemName::Of(const std::string& path)
{
    struct stat status = {};
    struct statfs system = {};
    if (stat(path.c_str(), &status) != 0 || statfs(path.c_str(), &system) != 0) {
        return {};
    }
    const std::string uuid = FindUUID(status.st_dev);
    if (!uuid.empty()) {
        return uuid;
    }
    uint64_t number = 0;
    static_assert(sizeof system.f_fsid == sizeof number);
    memcpy(&number, &system.f_fsid, sizeof number);
    char text[64];
    snprintf(text, sizeof text, "%llx-%016llx", static_cast<unsigned long long>(system.f_type),
             static_cast<unsigned long long>(number));
    return text;
}
