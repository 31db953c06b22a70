// Core Foundation values as the protocol's texts.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <string_view>
#include <vector>

/// A string as UTF-8, whole, zero characters included; an unpaired surrogate becomes U+FFFD.
std::string ToUTF8(CFStringRef string);

/// A string made of valid UTF-8; the caller releases it.
CFStringRef MakeString(std::string_view text);

/// Takes a string, or the strings of an array; entries of other kinds are left out.
/// @param isList  set to whether it was an array
/// @return false for any other value, and for null
bool ToTexts(CFTypeRef value, std::vector<std::string>& texts, bool& isList);
