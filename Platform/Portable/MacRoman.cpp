// Own tables: the systems' converters disagree at 0xC6 and 0xF0, and some load files when they are first used.
#include "Platform/MacRoman.h"

#include "Utf8.h"

#include <algorithm>
#include <array>

namespace Platform {
// The bytes from 0x80 on, eight to a line.
static constexpr std::array<char16_t, 128> kUpperHalf = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, // 80  letters with marks
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8, // 88
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, // 90
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, // 98
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF, // A0  dagger, degree, cent, pound, ...
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, // A8
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, // B0
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, // B8  BD is the Greek letter, not the ohm sign
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, // C0  C6 is the increment, not the Greek letter
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, // C8
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, // D0
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, // D8  DB was the currency sign before 1998
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, // E0
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, // E8
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC, // F0  F0 is a private character
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7, // F8
};

struct tPair {
    char16_t unit;
    unsigned char byte;
};

static constexpr std::array<tPair, 128> MakeReverse()
{
    std::array<tPair, 128> pairs = {};
    for (size_t i = 0; i < pairs.size(); ++i) {
        pairs[i] = {kUpperHalf[i], static_cast<unsigned char>(0x80 + i)};
    }
    std::sort(pairs.begin(), pairs.end(), [](const tPair& a, const tPair& b) { return a.unit < b.unit; });
    return pairs;
}

static constexpr std::array<tPair, 128> kReverse = MakeReverse(); // ordered by unit

char16_t MacRomanToUnicode(unsigned char byte)
{
    return byte < 0x80 ? char16_t{byte} : kUpperHalf[byte - 0x80u];
}

bool UnicodeToMacRoman(char16_t unit, unsigned char& byte)
{
    if (unit < 0x80) {
        byte = static_cast<unsigned char>(unit);
        return true;
    }
    const auto found = std::lower_bound(kReverse.begin(), kReverse.end(), unit,
                                        [](const tPair& pair, char16_t wanted) { return pair.unit < wanted; });
    if (found == kReverse.end() || found->unit != unit) {
        return false;
    }
    byte = found->byte;
    return true;
}

std::string MacRomanToUtf8(std::string_view text)
{
    const auto isHigh = [](char character) { return static_cast<unsigned char>(character) >= 0x80; };
    const auto high = static_cast<size_t>(std::count_if(text.begin(), text.end(), isHigh));
    if (high == 0) {
        return std::string(text);
    }
    std::string result;
    result.reserve(text.size() + 2 * high); // a high byte becomes two or three
    for (const char character : text) {
        if (!isHigh(character)) {
            result += character;
            continue;
        }
        const unsigned unit = MacRomanToUnicode(static_cast<unsigned char>(character));
        if (unit < 0x800) {
            result += static_cast<char>(0xC0 | (unit >> 6));
        } else {
            result += static_cast<char>(0xE0 | (unit >> 12));
            result += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
        }
        result += static_cast<char>(0x80 | (unit & 0x3F));
    }
    return result;
}

bool Utf8ToMacRoman(std::string_view utf8, std::string& result)
{
    std::string converted;
    converted.reserve(utf8.size());
    char32_t character = 0;
    for (size_t length = 0; !utf8.empty(); utf8.remove_prefix(length)) {
        unsigned char byte = 0;
        if (!DecodeUtf8(utf8, character, length) || character > 0xFFFF ||
            !UnicodeToMacRoman(static_cast<char16_t>(character), byte)) {
            return false;
        }
        converted += static_cast<char>(byte);
    }
    result = std::move(converted);
    return true;
}
} // namespace Platform
