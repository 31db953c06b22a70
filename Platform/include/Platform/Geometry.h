// Sizes on the screen, under the name that Core Graphics gives them.
#pragma once

#if defined(__APPLE__)
#include <CoreGraphics/CGGeometry.h>
#else
using CGFloat = double;

/// Width and height, in the units of whoever measures.
struct CGSize {
    CGFloat width;
    CGFloat height;
};
#endif
