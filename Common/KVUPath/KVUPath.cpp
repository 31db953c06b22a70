#include "KVUPath/KVUPath.h"

#include "CheckError/CErr.h"

#include <cstring>
#include <glob.h>

bool KVUPath::CheckAppendFileSuffix(char* path, const char* suffix, bool checkOnly, size_t size)
{
    const char* const dot = strrchr(path, '.');
    if (dot != nullptr && strcmp(dot + 1, suffix) == 0) {
        return false;
    }
    if (checkOnly) {
        return true;
    }
    const size_t length = strlen(path);
    const size_t suffixLength = strlen(suffix);
    if (length + suffixLength + 2 > size) {
        return false;
    }
    path[length] = '.';
    memcpy(path + length + 1, suffix, suffixLength + 1);
    return true;
}

std::string KVUPath::GetLastPathComponent(const std::string& path)
{
    const size_t separator = path.rfind('/');
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

void KVUPath::CreatePathByExpandingTildePath(char* path, int size)
{
    CErr::CheckNull(path, "static void KVUPath::CreatePathByExpandingTildePath(char *, int)", "No path specified");
    glob_t matches = {};
    if (glob(path, GLOB_TILDE, nullptr, &matches) == 0 && matches.gl_pathc > 0) {
        const size_t length = strlen(matches.gl_pathv[0]);
        if (size > 0 && length + 1 < static_cast<size_t>(size)) {
            memcpy(path, matches.gl_pathv[0], length + 1);
        }
    }
    globfree(&matches);
}

bool KVUPath::IsAbsolutePath(const char* path)
{
    return path != nullptr && *path == '/';
}

void KVUPath::SetPathEndToSeparator(char* path, size_t size)
{
    const size_t length = strlen(path);
    if (length == 0 || path[length - 1] == '/' || length + 2 > size) {
        return;
    }
    path[length] = '/';
    path[length + 1] = '\0';
}
