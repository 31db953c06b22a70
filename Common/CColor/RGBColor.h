// The platform's colour record, as layout files and the clipboard store it.
#pragma once

/// A colour without alpha, components 0 to 65535; 6 bytes, big-endian inside files, host order in raw memory.
struct RGBColor {
    unsigned short red;
    unsigned short green;
    unsigned short blue;
};
static_assert(sizeof(RGBColor) == 6);
