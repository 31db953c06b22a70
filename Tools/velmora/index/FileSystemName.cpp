#include "index/FileSystemName.h"

#include <cstdio>
#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>

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
    struct statvfs system = {};
    if (stat(path.c_str(), &status) != 0 || statvfs(path.c_str(), &system) != 0) {
        return {};
    }
    std::string uuid = FindUUID(status.st_dev);
    if (!uuid.empty()) {
        return uuid;
    }
    char text[32];
    snprintf(text, sizeof text, "%lx", static_cast<unsigned long>(system.f_fsid));
    return text;
}
