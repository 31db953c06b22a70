// Making a folder with its parents. For the sources of Platform only.
#pragma once

#include <cerrno>
#include <string>
#include <sys/stat.h>

namespace Platform {
/// Whether a folder exists at the absolute path in the end; the missing ones are made, for their user alone, when
/// `create` is set.
inline bool FindFolder(const std::string& path, bool create)
{
    struct stat information = {};
    if (stat(path.c_str(), &information) == 0) {
        return S_ISDIR(information.st_mode);
    }
    if (!create || errno != ENOENT) {
        return false;
    }
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), 0700); // mostly there already; a true failure shows at the last one
    }
    mkdir(path.c_str(), 0700);
    return stat(path.c_str(), &information) == 0 && S_ISDIR(information.st_mode);
}
} // namespace Platform
