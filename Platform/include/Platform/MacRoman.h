// Mac OS Roman, the character set of every text inside documents: the one table, both directions.
#pragma once

#include "Platform/Export.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Platform {
/// Unicode of a Mac OS Roman byte, as Apple maps it (0xC6 U+2206, 0xDB U+20AC, 0xBD U+03A9, 0xF0 U+F8FF).
/// Bytes below 128 are ASCII. Every result fits in 16 bits.
PLATFORM_EXPORT char16_t MacRomanToUnicode(unsigned char byte);

/// Mac OS Roman byte of a UTF-16 unit. @return false when the set does not hold the character; `byte` is then untouched
PLATFORM_EXPORT bool UnicodeToMacRoman(char16_t unit, unsigned char& byte);

/// The text as UTF-8; every input is convertible.
PLATFORM_EXPORT std::string MacRomanToUtf8(std::string_view text);

/// The UTF-8 text in Mac OS Roman. @return false for malformed UTF-8 or a character outside the set;
/// `result` is then untouched
PLATFORM_EXPORT bool Utf8ToMacRoman(std::string_view utf8, std::string& result);
} // namespace Platform
