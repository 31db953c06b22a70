#include "Texts.h"

static void AppendUTF8(std::string& text, char32_t character)
{
    const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | character >> 6);
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    }
}

std::string ToUTF8(CFStringRef string)
{
    const CFIndex length = CFStringGetLength(string);
    std::vector<UniChar> units(static_cast<size_t>(length));
    CFStringGetCharacters(string, CFRangeMake(0, length), units.data());
    std::string text;
    text.reserve(units.size() + units.size() / 8);
    for (size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (character >= 0xD800 && character <= 0xDFFF) {
            const bool pair = character <= 0xDBFF && i + 1 < units.size() && (units[i + 1] & 0xFC00) == 0xDC00;
            character = pair ? 0x10000 + ((character & 0x3FF) << 10) + (units[++i] & 0x3FF) : 0xFFFD;
        }
        AppendUTF8(text, character);
    }
    return text;
}

CFStringRef MakeString(std::string_view text)
{
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                   static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
}

bool ToTexts(CFTypeRef value, std::vector<std::string>& texts, bool& isList)
{
    if (value == nullptr) {
        return false;
    }
    if (CFGetTypeID(value) == CFStringGetTypeID()) {
        isList = false;
        texts.push_back(ToUTF8(static_cast<CFStringRef>(value)));
        return true;
    }
    if (CFGetTypeID(value) != CFArrayGetTypeID()) {
        return false;
    }
    isList = true;
    const CFArrayRef array = static_cast<CFArrayRef>(value);
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        const CFTypeRef entry = CFArrayGetValueAtIndex(array, i);
        if (entry != nullptr && CFGetTypeID(entry) == CFStringGetTypeID()) {
            texts.push_back(ToUTF8(static_cast<CFStringRef>(entry)));
        }
    }
    return true;
}
