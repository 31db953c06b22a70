#include "CScratchFolder.h"
#include "Properties.h"

#include "Platform/Released.h"
#include "Preferences/CVLPreferences.h"
#include "support/ScratchFile.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

namespace {
/// A bundle whose property list is one input after the other: bundles are read anew each time, which preferences are
/// not.
class CListBundle {
public:
    CListBundle()
    {
        fs::create_directories(mFolder.PathOf("Contents"));
        fs::create_symlink(mFile.Path(), mFolder.PathOf("Contents/Info.plist"));
    }

    Platform::tReleased<CFBundleRef> Read(std::string_view bytes)
    {
        mFile.Set(bytes);
        const std::string path = mFolder.PathOf("");
        const Platform::tReleased<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
            kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true));
        return Platform::tReleased<CFBundleRef>(CFBundleCreate(kCFAllocatorDefault, url.get()));
    }

    /// The file of the preferences, which the program has put into a folder of its own.
    static std::string GetSaved()
    {
        std::ifstream file(getenv("XDG_CONFIG_HOME") + std::string("/velmora/com.velmora.Velmora.plist"),
                           std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    CScratchFile mFile;
    CScratchFolder mFolder;
};

bool Ends(const char* text, size_t capacity)
{
    return std::memchr(text, 0, capacity) != nullptr;
}
} // namespace

std::string Properties::Preferences(std::string_view bytes)
{
    static CListBundle sBundle;
    const Platform::tReleased<CFBundleRef> bundle = sBundle.Read(bytes);
    if (!bundle) {
        return {};
    }
    const CFDictionaryRef list = CFBundleGetInfoDictionary(bundle.get());
    const auto count = static_cast<size_t>(CFDictionaryGetCount(list));
    std::vector<const void*> keys(count);
    std::vector<const void*> values(count);
    CFDictionaryGetKeysAndValues(list, keys.data(), values.data());
    for (size_t i = 0; i < count; ++i) {
        CFPreferencesSetAppValue(static_cast<CFStringRef>(keys[i]), values[i], CVLPreferences::GetIdentifier());
    }
    const CVLPreferences read;
    std::string wrong;
    if (!Ends(read.mDefaultLibraryName, sizeof read.mDefaultLibraryName) ||
        !Ends(read.mStockFileName, sizeof read.mStockFileName)) {
        wrong = "a text without its end";
    }
    if (!CFPreferencesAppSynchronize(CVLPreferences::GetIdentifier())) {
        wrong = "not saved";
    } else if (count > 0) {
        const Platform::tReleased<CFBundleRef> saved = sBundle.Read(CListBundle::GetSaved());
        if (!saved || !CFEqual(CFBundleGetInfoDictionary(saved.get()), list)) {
            wrong = "saved, but not as it was";
        }
    }
    for (const void* key : keys) {
        CFPreferencesSetAppValue(static_cast<CFStringRef>(key), nullptr, CVLPreferences::GetIdentifier());
    }
    return wrong;
}
