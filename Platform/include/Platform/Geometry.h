// Points, sizes and rectangles on the screen, under the names that Core Graphics gives them.
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

struct CGPoint {
    CGFloat x;
    CGFloat y;
};

/// The corner with the smallest coordinates, and the way from there to the opposite one.
struct CGRect {
    CGPoint origin;
    CGSize size;
};

inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) { return {{x, y}, {width, height}}; }
#endif
