// Letters and their marks.
#pragma once

#include "Platform/Export.h"

#include <string>

namespace Platform {
/// The UTF-8 text with letters and marks as one character where there is one (NFC). File names brought over from a
/// Mac's disk have them apart. What is no UTF-8 comes back as it is.
PLATFORM_EXPORT std::string ComposeUtf8(const std::string& text);
} // namespace Platform
