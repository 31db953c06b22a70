// What a component of an element holds: its type, what every component has, and what its type has.
#pragma once

#include "CTaggedFile/RecordTable.h"

namespace ComponentFormat {
using enum eRecordType;

inline constexpr tRecord kType = {300, kInt, "component type"};
inline constexpr tRecord kCommon[] = {{301, kDouble, "x offset"},       {302, kDouble, "y offset"},
                                      {303, kDouble, "gauge"},          {304, kDouble, "component angle"},
                                      {305, kBool, "joint 0 allowed"},  {306, kBool, "joint 1 allowed"},
                                      {307, kDouble, "trackbed width"}, {308, kDouble, "rail width"},
                                      {309, kInt, "middle rail"},       {310, kRaw, 6, "fixed colour"}};
inline constexpr tRecord kStraight[] = {{311, kDouble, "length"}};
inline constexpr tRecord kCurve[] = {{312, kDouble, "radius"}, {313, kDouble, "arc angle"}};
inline constexpr tRecord kOval[] = {
    {315, kDouble, "x radius"}, {316, kDouble, "y radius"}, {317, kInt, "line thickness"}};
inline constexpr tRecord kTextItem[] = {
    {324, kInt, "text size"}, {325, kInt, "text style"}, {326, kRaw, 256, "font name"}, {327, kText, 2048, "text"}};

/// A polygon has these, the point for each of its points. A flexible track has a polygon's type and all its records,
/// then its own.
inline constexpr tRecord kNumPoints = {318, kInt, "number of points"};
inline constexpr tRecord kPoint[] = {{319, kDouble, "point x"}, {320, kDouble, "point y"}};
inline constexpr tRecord kPolygon[] = {
    {321, kBool, "closed"}, {322, kInt, "polygon sub type"}, {323, kInt, "line thickness"}};
inline constexpr tRecord kFlexTrack[] = {{314, kDouble, "maximum length"}};
} // namespace ComponentFormat
