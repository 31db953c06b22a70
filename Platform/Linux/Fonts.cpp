#include "Platform/Fonts.h"

#include "TextModule.h"
#include "TextPieces.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

namespace Platform {
// Lower case as the font library compares names.
static std::string FoldCase(const char* name)
{
    FcChar8* const folded = FcStrDowncase(reinterpret_cast<const FcChar8*>(name));
    std::string result = folded != nullptr ? reinterpret_cast<const char*>(folded) : "";
    FcStrFree(folded);
    return result;
}

using tNames = std::unordered_set<std::string>;

// All names of all fonts, in folded case. Asking the font library name by name would take a walk over all fonts for
// each, and a document can hold thousands of names; and inside a jail no file can be looked at any more.
static tNames ListFontNames()
{
    tNames names;
    if (FcInit() == FcFalse) {
        return names;
    }
    FcConfigSetRescanInterval(nullptr, 0); // what was answered once stays true for this process
    FcPattern* const all = FcPatternCreate();
    FcObjectSet* const keys = FcObjectSetBuild(FC_POSTSCRIPT_NAME, FC_FULLNAME, FC_FAMILY, nullptr);
    FcFontSet* const fonts = FcFontList(nullptr, all, keys);
    for (int i = 0; fonts != nullptr && i < fonts->nfont; ++i) {
        for (const char* key : {FC_POSTSCRIPT_NAME, FC_FULLNAME, FC_FAMILY}) {
            FcChar8* name = nullptr;
            for (int n = 0; FcPatternGetString(fonts->fonts[i], key, n, &name) == FcResultMatch; ++n) {
                names.insert(FoldCase(reinterpret_cast<const char*>(name)));
            }
        }
    }
    if (fonts != nullptr) {
        FcFontSetDestroy(fonts);
    }
    FcObjectSetDestroy(keys);
    FcPatternDestroy(all);
    names.erase("");
    return names;
}

static const tNames& FontNames()
{
    static const tNames& sNames = *new tNames(ListFontNames()); // never destroyed: may be asked during exit
    return sNames;
}

bool IsFontInstalled(const std::string& name)
{
    return !name.empty() && name.find('\0') == std::string::npos && FontNames().count(FoldCase(name.c_str())) > 0;
}

size_t ListFonts()
{
    return FontNames().size();
}

std::vector<std::string> FontFolders()
{
    std::vector<std::string> folders;
    FcStrList* const list = FcInit() != FcFalse ? FcConfigGetFontDirs(nullptr) : nullptr;
    while (const FcChar8* const folder = list != nullptr ? FcStrListNext(list) : nullptr) {
        folders.emplace_back(reinterpret_cast<const char*>(folder));
    }
    if (list != nullptr) {
        FcStrListDone(list);
    }
    return folders;
}

static std::atomic<bool> sMeasures = true;

void SetTextMeasuring(bool measures)
{
    sMeasures = measures;
}

// Sizes of texts at kMeasuredSize, by font and text; emptied when it is full.
class CSizeCache {
public:
    const tSize* Find(const std::string& key) const
    {
        const auto found = mSizes.find(key);
        return found == mSizes.end() ? nullptr : &found->second;
    }
    void Add(const std::string& key, const tSize& size)
    {
        if (key.size() > kLongestKey) {
            return;
        }
        if (mSizes.size() >= kMostEntries) {
            mSizes.clear();
        }
        mSizes.emplace(key, size);
    }

private:
    static constexpr size_t kMostEntries = 4096;
    static constexpr size_t kLongestKey = 512; // so 2 MB of text at most
    std::unordered_map<std::string, tSize> mSizes;
};

bool MeasureText(const std::string& font, double size, const std::string& text, double& width, double& height)
{
    width = height = 0;
    if (!sMeasures) {
        return false;
    }
    static std::mutex sMutex;
    const std::lock_guard<std::mutex> lock(sMutex);
    if (FontNames().empty()) {
        return false;
    }
    static const auto sMeasure = reinterpret_cast<tMeasureLine>(FindInTextModule(kMeasureLineName));
    if (sMeasure == nullptr) {
        return false;
    }
    static CSizeCache& sCache = *new CSizeCache;
    const std::string installed = FindFontForModule(font);
    const std::string key = installed + '\0' + text;
    const tSize* known = sCache.Find(key);
    tSize measured;
    if (known == nullptr) {
        const auto measurePiece = [&installed](const std::string& piece, tSize& part) {
            return sMeasure(installed.c_str(), piece.data(), piece.size(), &part.width, &part.height);
        };
        if (!MeasureLines(text, measurePiece, measured)) {
            return false;
        }
        sCache.Add(key, measured);
        known = &measured;
    }
    // The largest size a document can name; beyond it only infinity would be left of the result.
    const double scale = (size > 0 ? std::min<double>(size, INT_MAX) : 12) / kMeasuredSize;
    width = known->width * scale;
    height = known->height * scale;
    return true;
}
} // namespace Platform

// From the module that lies beside this library.
void* FindInTextModule(const char* name)
{
    Dl_info self = {};
    if (dladdr(reinterpret_cast<const void*>(&Platform::IsFontInstalled), &self) == 0 || self.dli_fname == nullptr) {
        return nullptr;
    }
    std::string path = self.dli_fname;
    path.resize(path.rfind('/') + 1);
    path = (path.empty() ? "./" : path) + "libvelmora-text.so";
    // Never unloaded: what it brings has threads and handlers of its own.
    void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    return module == nullptr ? nullptr : dlsym(module, name);
}

std::string FindFontForModule(const std::string& name)
{
    return Platform::IsFontInstalled(name) ? Platform::FoldCase(name.c_str()) : "";
}
