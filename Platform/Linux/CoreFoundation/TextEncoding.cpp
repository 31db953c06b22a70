#include "Linux/CoreFoundation/TextEncoding.h"

#include "Platform/MacRoman.h"
#include "Portable/Utf8.h"

#include <cstring>

namespace Platform {
static bool IsLeadSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

static bool IsTrailSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

static bool DecodeUtf8Text(std::string_view bytes, std::u16string& units)
{
    char32_t character = 0;
    for (size_t length = 0; !bytes.empty(); bytes.remove_prefix(length)) {
        if (!DecodeUtf8(bytes, character, length)) {
            return false;
        }
        if (character > 0xFFFF) {
            units.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
        } else {
            units.push_back(static_cast<char16_t>(character));
        }
    }
    return true;
}

static bool EncodeUtf8Text(std::u16string_view units, std::string& bytes)
{
    for (size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (IsLeadSurrogate(character) && i + 1 < units.size() && IsTrailSurrogate(units[i + 1])) {
            character = 0x10000 + ((character - 0xD800) << 10) + (units[++i] - 0xDC00u);
        } else if (IsLeadSurrogate(character) || IsTrailSurrogate(character)) {
            return false;
        }
        if (character < 0x80) {
            bytes.push_back(static_cast<char>(character));
            continue;
        }
        const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        const char32_t mark = following == 1 ? 0xC0 : following == 2 ? 0xE0 : 0xF0;
        bytes.push_back(static_cast<char>(mark | (character >> (6 * following))));
        for (int shift = 6 * (following - 1); shift >= 0; shift -= 6) {
            bytes.push_back(static_cast<char>(0x80 | ((character >> shift) & 0x3F)));
        }
    }
    return true;
}

bool DecodeText(std::string_view bytes, CFStringEncoding encoding, std::u16string& units)
{
    units.clear();
    units.reserve(bytes.size());
    switch (encoding) {
    case kCFStringEncodingMacRoman:
        for (const char byte : bytes) {
            units.push_back(MacRomanToUnicode(static_cast<unsigned char>(byte)));
        }
        return true;
    case kCFStringEncodingASCII:
        for (const char byte : bytes) {
            if (static_cast<unsigned char>(byte) > 127) {
                return false;
            }
            units.push_back(static_cast<char16_t>(byte));
        }
        return true;
    case kCFStringEncodingUTF8:
        return DecodeUtf8Text(bytes, units);
    case kCFStringEncodingUnicode:
        if (bytes.size() % sizeof(char16_t) != 0) {
            return false;
        }
        units.resize(bytes.size() / sizeof(char16_t));
        memcpy(units.data(), bytes.data(), bytes.size());
        return true;
    default:
        return false;
    }
}

bool EncodeText(std::u16string_view units, CFStringEncoding encoding, std::string& bytes)
{
    bytes.clear();
    bytes.reserve(units.size());
    switch (encoding) {
    case kCFStringEncodingMacRoman:
        for (const char16_t unit : units) {
            unsigned char byte = 0;
            if (!UnicodeToMacRoman(unit, byte)) {
                return false;
            }
            bytes.push_back(static_cast<char>(byte));
        }
        return true;
    case kCFStringEncodingASCII:
        for (const char16_t unit : units) {
            if (unit > 127) {
                return false;
            }
            bytes.push_back(static_cast<char>(unit));
        }
        return true;
    case kCFStringEncodingUTF8:
        return EncodeUtf8Text(units, bytes);
    case kCFStringEncodingUnicode:
        bytes.assign(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t));
        return true;
    default:
        return false;
    }
}
} // namespace Platform
