// Reading UTF-8 strictly, one character at a time. For the sources of Platform and the drawing over Cocoa.
#pragma once

#include <cstddef>
#include <string_view>

namespace Platform {
/// Reads the character at the start of `text` and sets `length` to the number of its bytes. Over-long forms, surrogates
/// and values above U+10FFFF count as malformed.
/// @return false when `text` is empty or does not start with a well-formed character; `length` is then 1
inline bool DecodeUtf8(std::string_view text, char32_t& character, size_t& length)
{
    const auto byte = [text](size_t index) { return static_cast<unsigned char>(text[index]); };
    length = 1;
    if (text.empty()) {
        return false;
    }
    const unsigned char first = byte(0);
    if (first < 0x80) {
        character = first;
        return true;
    }
    const size_t wanted = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < wanted) {
        return false;
    }
    char32_t value = first & (0x7Fu >> wanted);
    for (size_t i = 1; i < wanted; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return false;
        }
        value = (value << 6) | (byte(i) & 0x3Fu);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < kSmallest[wanted] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return false;
    }
    character = value;
    length = wanted;
    return true;
}

/// Whether the whole text is well-formed UTF-8.
inline bool IsUtf8(std::string_view text)
{
    char32_t character = 0;
    for (size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        if (!DecodeUtf8(text, character, length)) {
            return false;
        }
    }
    return true;
}
} // namespace Platform
