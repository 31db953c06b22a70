#include "Platform/Fonts.h"

#include "Platform/Released.h"
#include "TextPieces.h"

#include <CoreText/CoreText.h>
#include <atomic>
#include <climits>
#include <mutex>
#include <unordered_map>

namespace Platform {
static constexpr size_t kMostRemembered = 4096; // of names and of sizes; then all are forgotten

static tReleased<CFStringRef> MakeString(const std::string& text)
{
    return tReleased<CFStringRef>(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                                          static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8,
                                                          false));
}

// The installed font of a name; null when there is none: the attribute is mandatory, so nothing takes its place.
static tReleased<CTFontDescriptorRef> FindFont(const std::string& name)
{
    const tReleased<CFStringRef> wanted = MakeString(name);
    if (name.empty() || !wanted) {
        return nullptr;
    }
    for (const CFStringRef key : {kCTFontNameAttribute, kCTFontDisplayNameAttribute, kCTFontFamilyNameAttribute}) {
        const void* keys[] = {key};
        const void* values[] = {wanted.get()};
        const tReleased<CFDictionaryRef> attributes(CFDictionaryCreate(
            nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
        const tReleased<CFSetRef> mandatory(CFSetCreate(nullptr, keys, 1, &kCFTypeSetCallBacks));
        const tReleased<CTFontDescriptorRef> asked(CTFontDescriptorCreateWithAttributes(attributes.get()));
        tReleased<CTFontDescriptorRef> found(
            CTFontDescriptorCreateMatchingFontDescriptor(asked.get(), mandatory.get()));
        if (found) {
            return found;
        }
    }
    return nullptr;
}

bool IsFontInstalled(const std::string& name)
{
    static std::mutex sMutex;
    static auto& sKnown = *new std::unordered_map<std::string, bool>; // never destroyed: may be asked during exit
    const std::lock_guard<std::mutex> lock(sMutex);
    if (const auto known = sKnown.find(name); known != sKnown.end()) {
        return known->second;
    }
    if (sKnown.size() >= kMostRemembered) {
        sKnown.clear();
    }
    return sKnown[name] = FindFont(name) != nullptr;
}

size_t ListFonts()
{
    return 0;
}

std::vector<std::string> FontFolders()
{
    return {};
}

static std::atomic<bool> sMeasures = true;

void SetTextMeasuring(bool measures)
{
    sMeasures = measures;
}

static bool MeasurePiece(CTFontRef font, const std::string& piece, tSize& size)
{
    size.height = CTFontGetAscent(font) + CTFontGetDescent(font) + CTFontGetLeading(font);
    const tReleased<CFStringRef> text = MakeString(piece);
    const void* keys[] = {kCTFontAttributeName};
    const void* values[] = {font};
    const tReleased<CFDictionaryRef> attributes(
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    if (!text || !attributes) {
        return false;
    }
    const tReleased<CFAttributedStringRef> attributed(CFAttributedStringCreate(nullptr, text.get(), attributes.get()));
    const tReleased<CTLineRef> line(CTLineCreateWithAttributedString(attributed.get()));
    if (!line) {
        return false;
    }
    CGFloat ascent = 0;
    CGFloat descent = 0;
    CGFloat leading = 0;
    size.width = CTLineGetTypographicBounds(line.get(), &ascent, &descent, &leading);
    size.height = std::max<double>(size.height, ascent + descent + leading);
    return true;
}

bool MeasureText(const std::string& font, double size, const std::string& text, double& width, double& height)
{
    width = height = 0;
    if (!sMeasures) {
        return false;
    }
    const double points = size > 0 ? std::min<double>(size, INT_MAX) : 12; // as on Linux
    static std::mutex sMutex;
    static auto& sKnown = *new std::unordered_map<std::string, tSize>;
    const std::lock_guard<std::mutex> lock(sMutex);
    const std::string key = font + '\0' + std::to_string(points) + '\0' + text;
    if (const auto known = sKnown.find(key); known != sKnown.end()) {
        width = known->second.width;
        height = known->second.height;
        return true;
    }
    const tReleased<CTFontDescriptorRef> found = FindFont(font);
    const tReleased<CTFontRef> used(found ? CTFontCreateWithFontDescriptor(found.get(), points, nullptr)
                                          : CTFontCreateUIFontForLanguage(kCTFontUIFontSystem, points, nullptr));
    tSize measured;
    const auto measurePiece = [&used](const std::string& piece, tSize& part) {
        return MeasurePiece(used.get(), piece, part);
    };
    if (!used || !MeasureLines(text, measurePiece, measured)) {
        return false;
    }
    if (sKnown.size() >= kMostRemembered) {
        sKnown.clear();
    }
    if (key.size() <= 1024) {
        sKnown.emplace(key, measured);
    }
    width = measured.width;
    height = measured.height;
    return true;
}
} // namespace Platform
