#include "CRect/CRect.h"

#include <algorithm>

CPoint& CRect::GetCenter(CPoint& center) const
{
    center.SetPos(mLeft + mWidth / 2.0, mTop + mHeight / 2.0, 0.0);
    return center;
}

bool CRect::Contains(const CRect& rect) const
{
    return rect.GetLeft() >= GetLeft() && rect.GetTop() >= GetTop() && GetRight() >= rect.GetRight() &&
           GetBottom() >= rect.GetBottom();
}

bool CRect::Intersects(const CRect& rect) const
{
    const double left = std::max(GetLeft(), rect.GetLeft());
    const double top = std::max(GetTop(), rect.GetTop());
    const double bottom = std::min(GetBottom(), rect.GetBottom());
    const double right = std::min(GetRight(), rect.GetRight());
    return !(top > bottom || left > right);
}

bool CRect::IsInside(const CPoint& p) const
{
    return GetLeft() <= p.x && p.x <= GetRight() && GetTop() <= p.y && p.y <= GetBottom();
}
