// Grows a rectangle over points.
#pragma once

#include "CRect/DRect.h"

#include <algorithm>

/// Accumulates the smallest upright rectangle around points. The first point replaces what the rectangle held; without
/// a point it keeps that.
class CCalcBoundingBox {
public:
    /// @param box  grown in place; not owned, outlives this object
    explicit CCalcBoundingBox(DRect& box) : mBox(box) {}

    void Update(double x, double y)
    {
        if (mEmpty) {
            mBox = {y, x, y, x};
            mEmpty = false;
            return;
        }
        mBox.left = std::min(mBox.left, x);
        mBox.right = std::max(mBox.right, x);
        mBox.top = std::min(mBox.top, y);
        mBox.bottom = std::max(mBox.bottom, y);
    }
    void Update(const CPoint& point) { Update(point.x, point.y); }
    /// Grows over another rectangle.
    void Update(const DRect& box)
    {
        Update(box.left, box.top);
        Update(box.right, box.bottom);
    }
    bool IsEmpty() const { return mEmpty; }

private:
    DRect& mBox;
    bool mEmpty = true;
};
