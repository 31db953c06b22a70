// What an element holds in layouts and track libraries: a header, its attributes, and the components.
#pragma once

#include "CTaggedFile/RecordTable.h"

#include <cstdint>

namespace ElementFormat {
using enum eRecordType;

constexpr uint32_t kMagic = 0x52436967; // "RCig"
constexpr int kOldestVersion = 3;
/// The version that is written, and the only one with height, grade and layer.
constexpr int kCurrentVersion = 4;

inline constexpr tRecord kTexts[] = {{207, kText, 32, "product number"},
                                     {208, kText, 64, "description"},
                                     {209, kText, 32, "manufacturer"},
                                     {210, kText, 128, "library name"},
                                     {211, kText, 8, "prefix"}};
inline constexpr tRecord kNumbers[] = {{212, kInt, "library number"}, {213, kInt, "price"},
                                       {214, kInt, "currency"},       {215, kInt, "model scale"},
                                       {216, kBool, "library flag"},  {200, kDouble, "x position"},
                                       {201, kDouble, "y position"},  {218, kDouble, "height", kCurrentVersion}};
inline constexpr tRecord kGrade[] = {
    {219, kDouble, "grade start x", kCurrentVersion}, {220, kDouble, "grade start y", kCurrentVersion},
    {221, kDouble, "grade start z", kCurrentVersion}, {222, kDouble, "grade end x", kCurrentVersion},
    {223, kDouble, "grade end y", kCurrentVersion},   {224, kDouble, "grade end z", kCurrentVersion},
    {225, kDouble, "grade height", kCurrentVersion}};
inline constexpr tRecord kPlacement[] = {
    {202, kDouble, "angle"}, {203, kRaw, 6, "fill colour"}, {204, kRaw, 6, "second colour"}, {205, kBool, "fill mode"}};
inline constexpr tRecord kLayerName = {217, kText, 64, "layer name", kCurrentVersion};
inline constexpr tRecord kNumComponents = {206, kInt, "number of components"};
} // namespace ElementFormat
