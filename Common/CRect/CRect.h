// An axis-aligned rectangle of the drawing plane.
#pragma once

#include "CPoint/CPoint.h"
#include "CRect/DRect.h"
#include "CRect/Rect.h"

/// A rectangle by its top left corner and its size, in layout units, copied by value. Bottom and right are derived. The
/// virtual operations let derived geometry override them; comparisons ask the virtual getters of both rectangles.
class CRect {
public:
    CRect() = default;
    /// Vertical values first, unlike SetPos, MoveBy and ResizeBy.
    CRect(double top, double left, double height, double width) : mTop(top), mLeft(left), mHeight(height), mWidth(width)
    {}
    explicit CRect(const Rect& rect) : CRect(rect.top, rect.left, rect.bottom - rect.top, rect.right - rect.left) {}
    explicit CRect(const DRect& rect) : CRect(rect.top, rect.left, rect.bottom - rect.top, rect.right - rect.left) {}
    CRect(const CRect&) = default;
    CRect& operator=(const CRect&) = default;
    virtual ~CRect() = default;

    virtual double GetTop() const { return mTop; }
    virtual double GetLeft() const { return mLeft; }
    virtual double GetHeight() const { return mHeight; }
    virtual double GetWidth() const { return mWidth; }
    virtual double GetRight() const { return mLeft + mWidth; }
    virtual double GetBottom() const { return mTop + mHeight; }

    /// Sets `center` to the middle, with z 0. @return center
    virtual CPoint& GetCenter(CPoint& center) const;

    virtual void SetTop(double top) { mTop = top; }
    virtual void SetLeft(double left) { mLeft = left; }
    virtual void SetHeight(double height) { mHeight = height; }
    virtual void SetWidth(double width) { mWidth = width; }

    /// Changes the width; the left edge stays.
    virtual void SetRight(double right) { mWidth = right - mLeft; }

    /// Changes the height; the top edge stays.
    virtual void SetBottom(double bottom) { mHeight = bottom - mTop; }

    /// Moves the top left corner to (x, y). Horizontal value first, as in the next two.
    virtual void SetPos(double x, double y)
    {
        mLeft = x;
        mTop = y;
    }

    virtual void MoveBy(double dx, double dy)
    {
        mLeft += dx;
        mTop += dy;
    }

    virtual void ResizeBy(double dWidth, double dHeight)
    {
        mWidth += dWidth;
        mHeight += dHeight;
    }

    /// Whether `rect` lies inside; edges may coincide.
    virtual bool Contains(const CRect& rect) const;

    /// Whether the rectangles have a point in common; touching at an edge or corner is enough.
    virtual bool Intersects(const CRect& rect) const;

    /// Whether the point lies inside or on an edge; z does not count.
    virtual bool IsInside(const CPoint& p) const;

private:
    double mTop = 0.0;
    double mLeft = 0.0;
    double mHeight = 0.0;
    double mWidth = 0.0;
};
