#include "CBundle/CBundle.h"

#include "CheckError/CErr.h"
#include "KVUStr/KVUStr.h"
#include "Platform/Released.h"

#include <climits>
#include <new>
#include <string>

namespace {
/// The URL's path as bytes of the file system; empty when it cannot be had.
std::string PathOf(CFURLRef url)
{
    char path[PATH_MAX];
    if (!CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8*>(path), sizeof path)) {
        return std::string();
    }
    return path;
}

const char* TextOrEmpty(CFStringRef string)
{
    const char* const text = KVUStr::GetCStrFromCFStr(string, kCFStringEncodingMacRoman);
    return text != nullptr ? text : "";
}
} // namespace

CBundle* CBundle::Instance()
{
    static CBundle* sInstance = nullptr;
    if (sInstance == nullptr) {
        sInstance = new (std::nothrow) CBundle;
        CErr::CheckNull(sInstance, "static CBundle *CBundle::Instance()",
                        "Failed to construct CBundle singleton member");
    }
    return sInstance;
}

CBundle::CBundle() : mBundle(CFBundleGetMainBundle()), mURL(nullptr)
{
    CErr::CheckNull(mBundle, "CBundle::CBundle()", "CFBundleGetMainBundle() failed");
    mURL = CFBundleCopyBundleURL(mBundle);
    CErr::CheckNull(mURL, "CBundle::CBundle()", "CFBundleGetMainBundle() failed");
}

CBundle::~CBundle()
{
    CFRelease(mURL);
}

const char* CBundle::GetBundleName() const
{
    const Platform::tReleased<CFStringRef> name(CFURLCopyLastPathComponent(mURL));
    // The conversion may hand out the string's own storage, which has to outlive this call.
    static std::string sName;
    sName = TextOrEmpty(name.get());
    return sName.c_str();
}

const char* CBundle::GetIdentifier() const
{
    return TextOrEmpty(CFBundleGetIdentifier(mBundle));
}

const char* CBundle::GetVersionNumber() const
{
    const CFTypeRef version = CFBundleGetValueForInfoDictionaryKey(mBundle, kCFBundleVersionKey);
    if (version == nullptr) {
        return "";
    }
    return CFGetTypeID(version) == CFStringGetTypeID() ? TextOrEmpty(static_cast<CFStringRef>(version)) : "?";
}

bool CBundle::GetBundleLocation(FSRef& location) const
{
    return Platform::MakeReference(PathOf(mURL), location) == noErr;
}

CFURLRef CBundle::GetURLForResource(const char* name, const char* type) const
{
    using tString = Platform::tReleased<CFStringRef>;
    const tString nameString(CFStringCreateWithCString(kCFAllocatorDefault, name, kCFStringEncodingMacRoman));
    const tString typeString(CFStringCreateWithCString(kCFAllocatorDefault, type, kCFStringEncodingMacRoman));
    return nameString && typeString ? CFBundleCopyResourceURL(mBundle, nameString.get(), typeString.get(), nullptr)
                                    : nullptr;
}

bool CBundle::GetFSRefForResource(const char* name, const char* type, FSRef& resource) const
{
    const Platform::tReleased<CFURLRef> url(GetURLForResource(name, type));
    return url && Platform::MakeReference(PathOf(url.get()), resource) == noErr;
}

bool CBundle::GetFSRefForFileNextToApp(const char* name, FSRef& file) const
{
    const std::string bundle = PathOf(mURL);
    const size_t separator = bundle.rfind('/');
    if (separator == std::string::npos) {
        return false;
    }
    HFSUniStr255 units = {};
    int length = 0;
    KVUStr::CStr2UniChar(name, reinterpret_cast<char*>(units.unicode), sizeof units.unicode, length);
    const Platform::tReleased<CFStringRef> string(
        CFStringCreateWithCharacters(kCFAllocatorDefault, units.unicode, length));
    std::string fileName; // as the file system has it
    FSRef folder;
    return KVUStr::GetText(string.get(), kCFStringEncodingUTF8, fileName) &&
           Platform::MakeReference(separator == 0 ? "/" : bundle.substr(0, separator), folder) == noErr &&
           Platform::MakeReferenceInFolder(folder, fileName, file) == noErr;
}
