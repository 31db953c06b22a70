// What libvelmora-text.so offers to Platform's font functions. It alone needs the text layout library, which takes
// several milliseconds to start and starts threads: it is loaded when something is measured for the first time.
#pragma once

#include <cstddef>

/// Name under which the module exports its one function.
inline constexpr char kMeasureLineName[] = "VelmoraMeasureLine";

/// Measures one line of text, set in points at 100 pt.
/// @param font  name of an installed font, UTF-8; empty for the system font
/// @param text,length  well-formed UTF-8 without control characters and line breaks, at most 1,000 characters
/// @param width,height  set to the line's logical size; an empty text has the height of a line
/// @return false where no font can be used at all; width and height are then untouched
/// Not for several threads at a time.
using tMeasureLine = bool (*)(const char* font, const char* text, size_t length, double* width, double* height);

inline constexpr double kMeasuredSize = 100; ///< point size at which the module measures
