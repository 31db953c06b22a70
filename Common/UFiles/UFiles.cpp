#include "UFiles/UFiles.h"

#include "CBundle/CBundle.h"
#include "CheckError/ULog.h"
#include "KVUPath/KVUPath.h"
#include "KVUStr/KVUStr.h"
#include "Platform/MacRoman.h"
#include "Platform/System.h"

#include <sys/stat.h>

namespace {
const char* ReasonOf(OSStatus status)
{
    switch (status) {
    case nsvErr:
        return "\n(Volume not found.)";
    case ioErr:
        return "\n(I/O error.)";
    case bdNamErr:
        return "\n(Bad filename or volume name.)";
    case rfNumErr:
        return "\n(Invalid reference number.)";
    case volOffLinErr:
        return "\n(Volume is offline.)";
    case nsDrvErr:
        return "\n(No such drive.)";
    default:
        return "";
    }
}

bool IsFolder(const FSRef& ref)
{
    struct stat status = {};
    return stat(ref.path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}
} // namespace

void UFiles::GetFileName(char* name, int size, const FSRef& file)
{
    if (size <= 0) {
        return;
    }
    const std::string bytes = KVUPath::GetLastPathComponent(file.path);
    std::string roman;
    const bool converted = Platform::Utf8ToMacRoman(bytes, roman);
    KVUStr::strncpy(name, converted ? roman.c_str() : bytes.c_str(), static_cast<unsigned long>(size));
}

OSStatus UFiles::GetFullPathToFile(char* path, int size, const FSRef& file, std::string& /*message*/)
{
    const OSStatus status = Platform::MakePath(file, path, size);
    if (status != noErr) {
        ULog::Warn("%s: Failed to create path to file.%s",
                   "static OSStatus UFiles::GetFullPathToFile(char *, int, FSRef &, string &)", ReasonOf(status));
    }
    return status;
}

FILE* UFiles::OpenFSRefAsFileHandle(const FSRef* file, const char* mode)
{
    char path[4096];
    std::string message;
    if (file == nullptr || GetFullPathToFile(path, sizeof path, *file, message) != noErr) {
        return nullptr;
    }
    return fopen(path, mode);
}

bool UFiles::GetUserApplicationSupportFolder(FSRef& folder)
{
    const std::string support = Platform::FolderPath(Platform::eFolder::kApplicationSupport, true);
    const std::string name = Platform::MacRomanToUtf8(CBundle::Instance()->GetBundleName());
    return !support.empty() && GetCreateFolder(support.c_str(), name.c_str(), &folder);
}

bool UFiles::GetCreateFolder(const FSRef* parent, const char* name, FSRef* result)
{
    FSRef found;
    OSStatus status = Platform::MakeReferenceInFolder(*parent, name, found);
    if (status == fnfErr) {
        status = Platform::CreateFolder(*parent, name, found);
    }
    if (status != noErr || !IsFolder(found)) {
        return false;
    }
    *result = found;
    return true;
}

bool UFiles::GetCreateFolder(const char* parentPath, const char* name, FSRef* result)
{
    FSRef parent;
    return Platform::MakeReference(parentPath, parent) == noErr && GetCreateFolder(&parent, name, result);
}
