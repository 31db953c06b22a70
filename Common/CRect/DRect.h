// A rectangle given by its edges.
#pragma once

#include "CPoint/CPoint.h"
#include "Platform/Geometry.h"

/// A rectangle in the drawing plane, in layout units. Vertical edge first, as in the platform's Rect.
struct DRect {
    double top;
    double left;
    double bottom;
    double right;
};

/// Operations on DRect.
class UDRect {
public:
    /// Sets the edges. The horizontal ones come first here, unlike in the structure.
    static void SetDRect(DRect& rect, double left, double top, double right, double bottom)
    {
        rect = {top, left, bottom, right};
    }

    /// Whether the point lies inside or on an edge; z does not count.
    static bool PtInDRect(const DRect& rect, const CPoint& p)
    {
        return rect.left <= p.x && p.x <= rect.right && rect.top <= p.y && p.y <= rect.bottom;
    }

    /// The middle of the rectangle, with z 0.
    static CPoint Center(const DRect& rect)
    {
        return {rect.left + (rect.right - rect.left) / 2.0, rect.top + (rect.bottom - rect.top) / 2.0, 0.0};
    }

    /// Turns the rectangle about (0, 0) and replaces it by the smallest upright one around the result.
    static void RotateDRect(DRect& rect, double degrees);

    /// The edges of a rectangle given by corner and size; a negative size gives turned edges.
    static DRect CGRect2DRect(const CGRect& rect)
    {
        return {rect.origin.y, rect.origin.x, rect.origin.y + rect.size.height, rect.origin.x + rect.size.width};
    }

    /// Moves the rectangle so that left and top become 0.
    static void ZeroAlignDRect(DRect& rect) { rect = {0.0, 0.0, rect.bottom - rect.top, rect.right - rect.left}; }
};
