#include "CPoint/CPoint.h"
#include "CRect/CRect.h"

#include <gtest/gtest.h>

#include <utility>

namespace {
void ExpectAt(const CPoint& p, double x, double y, double z)
{
    EXPECT_NEAR(p.x, x, 1e-12);
    EXPECT_NEAR(p.y, y, 1e-12);
    EXPECT_NEAR(p.z, z, 1e-12);
}
} // namespace

TEST(CPoint, PositionAndDirection)
{
    CPoint p(1, 2, 3);
    p.MoveBy(-1, 0.5, 2);
    p.SetPos(p.y, p.x);
    ExpectAt(p, 2.5, 0, 5);
    ExpectAt(p + CPoint(1, 1, 1) * 2.0 - CPoint(0.5, 0, 0), 4, 2, 7);
    EXPECT_EQ(CPoint(1, 1, 9).CalcDistance2D(CPoint(4, 5, 0)), 5.0);
    EXPECT_EQ(CPoint(1, 1, 1).CalcDistance(CPoint(3, 4, 7)), 7.0);

    EXPECT_DOUBLE_EQ(CPoint::ZeroPos.CalcAngle(CPoint(-1, 0, 0)), -180.0);
    EXPECT_DOUBLE_EQ(CPoint::ZeroPos.CalcAngle(CPoint(-1, 1, 0)), -225.0);
    EXPECT_NEAR(CPoint::ZeroPos.CalcAngle(CPoint(0, 1, 0)), 89.99427, 1e-5);
    EXPECT_NEAR(CPoint::ZeroPos.CalcAngle(CPoint(-0.01, -1, 0)), -89.99427, 1e-5) << "0.01 still counts as vertical";
}

TEST(CRect, Comparisons)
{
    const CRect rect(0, 0, 10, 10);
    const struct {
        CRect other;
        bool contained, met;
    } cases[] = {{rect, true, true},
                 {CRect(10, 10, 5, 5), false, true}, // touches at a corner
                 {CRect(10.1, 0, 5, 5), false, false},
                 {CRect(2, 2, 9, 5), false, true},
                 {CRect(2, -1, 5, 5), false, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.other.GetTop() << ", " << c.other.GetLeft());
        EXPECT_EQ(rect.Contains(c.other), c.contained);
        EXPECT_EQ(rect.Intersects(c.other), c.met);
        EXPECT_EQ(c.other.Intersects(rect), c.met);
    }
    for (const auto& [p, inside] : {std::pair(CPoint(2, 1, 99), true), std::pair(CPoint(42, 4, 0), true),
                                    std::pair(CPoint(1.9, 2, 0), false), std::pair(CPoint(5, 4.1, 0), false)}) {
        EXPECT_EQ(CRect(1, 2, 3, 40).IsInside(p), inside);
        EXPECT_EQ(UDRect::PtInDRect(DRect{1, 2, 4, 42}, p), inside);
    }
}
