// What a document's bytes are recognised by.
#pragma once

#include <optional>
#include <string>

namespace ContentHash {
/// XXH3 with 128 bits over a file's content, 16 bytes; it tells versions of a document apart, and is no protection
/// against somebody who wants two of them to look alike. @param descriptor  a regular file; its position stays
/// @return nothing when the file cannot be read
std::optional<std::string> OfFile(int descriptor);

/// The same over bytes.
std::string OfBytes(const std::string& bytes);

/// A hash for people: two digits a byte.
std::string InHex(const std::string& hash);
} // namespace ContentHash
