// A layout that needs no file: workers import it to warm up, and the host to see whether imports work.
#pragma once

#include "protocol/CDescriptor.h"

#include <string>

namespace BuiltInDocument {
inline constexpr char kDescription[] = "Built-in layout";
inline constexpr char kLayer[] = "Layer";
inline constexpr char kText[] = "Text";

/// Its bytes: one layer, and on it a turned text.
std::string MakeBytes();

/// It, open for reading. @return closed, with errno set, when there is no room for it
CDescriptor Open();
} // namespace BuiltInDocument
