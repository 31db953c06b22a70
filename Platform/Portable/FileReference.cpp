#include "Platform/FileReference.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {
static OSStatus StatusOfError(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return fnfErr;
    case ENAMETOOLONG:
        return bdNamErr;
    default:
        return ioErr;
    }
}

// A name of one entry: nothing that leads to another folder.
static bool IsEntryName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

static std::string PathInFolder(const FSRef& folder, const std::string& name)
{
    return folder.path.back() == '/' ? folder.path + name : folder.path + "/" + name;
}

OSStatus MakeReference(const std::string& path, FSRef& ref)
{
    if (path.empty() || path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    struct stat information = {};
    if (stat(path.c_str(), &information) != 0) {
        return StatusOfError(errno);
    }
    std::string absolute = path;
    if (path.front() != '/') {
        const std::unique_ptr<char, decltype(&free)> current(getcwd(nullptr, 0), &free);
        if (!current || *current != '/') { // a folder that was deleted or lies outside the root has no path
            return ioErr;
        }
        absolute = PathInFolder({current.get()}, path);
    }
    while (absolute.size() > 1 && absolute.back() == '/') { // the last component is the name
        absolute.pop_back();
    }
    ref.path = std::move(absolute);
    return noErr;
}

OSStatus MakeReferenceInFolder(const FSRef& folder, const std::string& name, FSRef& ref)
{
    if (folder.path.empty() || !IsEntryName(name)) {
        return bdNamErr;
    }
    return MakeReference(PathInFolder(folder, name), ref);
}

OSStatus CreateFolder(const FSRef& parent, const std::string& name, FSRef& ref)
{
    if (parent.path.empty() || !IsEntryName(name)) {
        return bdNamErr;
    }
    const std::string path = PathInFolder(parent, name);
    if (mkdir(path.c_str(), 0777) != 0) {
        return errno == ENAMETOOLONG ? bdNamErr : ioErr;
    }
    ref.path = path;
    return noErr;
}

OSStatus MakePath(const FSRef& ref, char* path, int size)
{
    if (ref.path.empty()) {
        return rfNumErr;
    }
    if (path == nullptr || size <= 0 || ref.path.size() >= static_cast<size_t>(size)) {
        return bdNamErr;
    }
    path[ref.path.copy(path, ref.path.size())] = '\0';
    return noErr;
}
} // namespace Platform
