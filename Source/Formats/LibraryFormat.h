// What a track library holds: a header, what holds for all of it, and the elements.
#pragma once

#include "CTaggedFile/RecordTable.h"

#include <cstdint>

namespace LibraryFormat {
using enum eRecordType;

constexpr uint32_t kMagic = 0x52536574; // "RSet"
constexpr uint32_t kVersion = 2;

inline constexpr tRecord kNumElements = {100, kInt, "number of elements"};
inline constexpr tRecord kCodes[] = {{101, kInt, "model scale"}, {102, kInt, "content type"}, {103, kInt, "currency"}};
/// In tenths of a millimetre.
inline constexpr tRecord kWidths[] = {{104, kInt, "gauge"}, {105, kInt, "trackbed width"}, {106, kInt, "rail width"}};
inline constexpr tRecord kTexts[] = {
    {107, kText, 128, "free text"}, {108, kText, 128, "manufacturer"}, {109, kText, 256, "free text"},
    {110, kText, 256, "free text"}, {111, kText, 8, "prefix"},         {112, kText, 512, "free text"},
    {113, kText, 256, "free text"}, {114, kText, 32, "creation date"}, {115, kText, 32, "modification date"}};
} // namespace LibraryFormat
