// The platform's small rectangle, as layout files store it.
#pragma once

#if defined(__APPLE__)
#include <MacTypes.h>
#else
/// Window or screen rectangle in pixels; 8 bytes, big-endian inside files.
struct Rect {
    short top;
    short left;
    short bottom;
    short right;
};
#endif
