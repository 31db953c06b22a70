// Text between UTF-16 and the encodings of CFStringEncoding. Foundation's own converters are not used: they map two
// bytes of Mac OS Roman wrongly, leave partial output behind and may raise.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <string_view>

namespace Platform {
/// @return false for text that is malformed in the encoding and for an unknown encoding; `units` is then unspecified
bool DecodeText(std::string_view bytes, CFStringEncoding encoding, std::u16string& units);

/// @return false when a unit has no form in the encoding and for an unknown encoding; `bytes` is then unspecified
bool EncodeText(std::u16string_view units, CFStringEncoding encoding, std::string& bytes);

/// The string as UTF-8; empty for null and for one that has no UTF-8 form.
std::string Utf8(CFStringRef string);

/// A new string, to be released by the caller; null for malformed UTF-8.
CFStringRef CreateString(std::string_view utf8);
} // namespace Platform
