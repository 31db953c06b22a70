// UTF-8 as strings arrive from files, file systems and workers: checked, never assumed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace UTF8 {
/// What DecodeNext answers where the bytes are no character.
inline constexpr char32_t kInvalid = 0xFFFFFFFF;

/// The character that starts at `position`, which is moved behind it. Overlong forms, surrogates and values above
/// U+10FFFF are refused. @return kInvalid for a byte that starts no character; then `position` moves by that one byte
char32_t DecodeNext(std::string_view text, size_t& position);

/// Whether the whole text is valid UTF-8.
bool IsValid(std::string_view text);

/// The text with U+FFFD for each byte that is not part of valid UTF-8.
std::string MakeValid(std::string_view text);

/// Code points of a valid text.
size_t CountCharacters(std::string_view text);
} // namespace UTF8
