// What a layout document holds: a header, the settings, the layers, the elements and the groups.
#pragma once

#include "CTaggedFile/RecordTable.h"

#include <cstdint>

namespace LayoutFormat {
using enum eRecordType;

constexpr uint32_t kMagic = 0x576B5374; // "WkSt"
constexpr int kOldestVersion = 3;
constexpr int kFirstVersionWithLayers = 4;
constexpr int kCurrentVersion = 5;

inline constexpr tRecord kSettings[] = {{400, kText, 128, "author"},
                                        {401, kText, 256, "private author"},
                                        {402, kText, 32, "creation date"},
                                        {403, kText, 32, "modification date"},
                                        {404, kText, 4096, "description"},
                                        {405, kText, 1024, "free text"},
                                        {406, kText, 128, "short free text"},
                                        {407, kText, 32, "revision"},
                                        {408, kChar, "setting"},
                                        {409, kInt, "setting"},
                                        {410, kInt, "element labels"},
                                        {411, kInt, "track style"},
                                        {412, kInt, "colour scheme"},
                                        {413, kInt, "setting"},
                                        {414, kInt, "grid spacing"},
                                        {415, kInt, "setting"},
                                        {416, kBool, "show grid"},
                                        {417, kInt, "zoom"},
                                        {418, kInt, "workspace width"},
                                        {419, kInt, "workspace height"},
                                        {420, kRaw, 6, "colour"},
                                        {421, kRaw, 8, "rectangle"},
                                        {422, kRaw, 20, "view parameters"},
                                        {426, kBool, "3D terrain", kFirstVersionWithLayers},
                                        {427, kBool, "3D tracks only", kFirstVersionWithLayers},
                                        {428, kInt, "setting", kCurrentVersion},
                                        {429, kInt, "setting", kCurrentVersion},
                                        {430, kBool, "flag", kCurrentVersion}};

inline constexpr tRecord kNumLayers = {500, kInt, "number of layers"};
/// These come for each layer.
inline constexpr tRecord kLayerName = {501, kText, 64, "layer name"};
inline constexpr tRecord kLayerState[] = {{502, kBool, "layer locked"}, {503, kBool, "layer visible"}};

/// The elements follow.
inline constexpr tRecord kNumElements = {423, kInt, "number of elements"};

inline constexpr tRecord kNumGroupEntries = {424, kInt, "number of group entries"};
inline constexpr tRecord kGroupEntry = {425, kInt, "group entry"};
} // namespace LayoutFormat
