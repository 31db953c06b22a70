#include "BuildingBlocks/CCountedCIG.h"
#include "BuildingBlocks/UGrades.h"
#include "Source/Elements/Elements.h"
#include "Source/Geometry/Shapes.h"

#include <climits>

TEST(CJoint, FitsAJointThatFacesItToAHundredthOfADegree)
{
    const struct {
        double a, b;
        bool fits;
    } cases[] = {{90, 270, true}, {90, 269.995, true},  {90, 269.98, false},  {0, 180.004, true},
                 {0, 0, false},   {359.999, 180, true}, {720.005, 180, true}, {179.991, -0.001, true}};
    for (const auto& c : cases) {
        CJoint a;
        CJoint b;
        a.SetAngle(c.a);
        b.SetAngle(c.b);
        EXPECT_EQ(a.AppropriateAngleForConnection(b), c.fits) << c.a << " and " << c.b;
        EXPECT_EQ(b.AppropriateAngleForConnection(a), c.fits) << c.b << " and " << c.a;
    }
}

TEST(CJoint, ConnectsAndFreesBothSides)
{
    CJoint a;
    CJoint c;
    {
        CJoint b;
        a.ConnectToJoint(&b);
        EXPECT_FALSE(a.IsActive() || b.IsActive());
        EXPECT_EQ(b.GetPartner(), &a);
        b.DisconnectJoint();
        EXPECT_TRUE(a.IsActive() && b.IsActive() && a.GetPartner() == nullptr);
        a.ConnectToJoint(&b);
    }
    EXPECT_TRUE(a.IsActive() && a.GetPartner() == nullptr) << "its partner is gone";
    a.ConnectToJoint(&c);
    CJoint d;
    d.ConnectToJoint(&c);
    EXPECT_EQ(a.GetPartner(), &c) << "nobody told it";
    a.DisconnectJoint();
    EXPECT_TRUE(c.IsActive());
    EXPECT_EQ(d.GetPartner(), &c);
}

TEST(CJoint, AssignmentTakesThePositionForBothPoints)
{
    CJoint partner;
    CJoint source;
    source.SetAngle(33);
    source.GetPosition() = CPoint(1, 2, 3);
    source.GetLocalPoint() = CPoint(7, 8, 9);
    source.SetComponentFlag(false);
    source.ConnectToJoint(&partner);
    CJoint target;
    target = source;
    ExpectSamePlace(target.GetPosition(), CPoint(1, 2, 3));
    ExpectSamePlace(target.GetLocalPoint(), CPoint(1, 2, 3));
    EXPECT_EQ(target.GetAngle(), 33.0);
    EXPECT_EQ(target.GetPartner(), &partner);
    EXPECT_EQ(partner.GetPartner(), &source);
    EXPECT_FALSE(target.IsActive() || target.GetComponentFlag());
    EXPECT_EQ(target.DistanceToJoint(partner), std::sqrt(5.0)) << "heights do not count";
}

TEST(CGradeVector, RunsUpwardsOrNotAtAll)
{
    const CPoint start(10, 20, 0);
    const CPoint end(40, 60, 0);
    const struct {
        double rise, angle;
    } cases[] = {{-5, 0}, {0.0005, 0}, {0.001, std::asin(0.00002) * kDegreesPerRadian}, {25, 30}, {50, 90}, {80, 90}};
    for (const auto& c : cases) {
        const CGradeVector grade(start, end, c.rise);
        EXPECT_NEAR(grade.GetGradeAngle(), c.angle, 1e-9) << c.rise;
        EXPECT_EQ(grade.IsGraded(), c.angle > 0) << c.rise;
    }
    const CGradeVector grade(start, {40, 60, 120}, 5);
    EXPECT_EQ(grade.GetVectorLength(), 130.0) << "in space";
    EXPECT_NEAR(grade.GetAngleToXAxis(), std::atan2(40, 30) * kDegreesPerRadian, 1e-9);
    EXPECT_FALSE(CGradeVector::ZeroGrade.IsGraded());
}

TEST(UGrades, Conversions)
{
    EXPECT_NEAR(UGrades::AngleToPerMille(45.0), 1.0, 1e-12);
    // 30 mm over a vector of 500 that starts at (100, 200) towards (3, 4) / 5.
    const CGradeVector grade({100, 200, 0}, {400, 600, 0}, 30);
    for (const double along : {-250.0, 0.0, 500.0, 1000.0}) {
        for (const double beside : {0.0, 70.0}) {
            CPoint point(100 + along * 0.6 - beside * 0.8, 200 + along * 0.8 + beside * 0.6, 77);
            UGrades::ApplyGradeToPoint(point, grade);
            ExpectSamePlace(point, CPoint(100 + along * 0.6 - beside * 0.8, 200 + along * 0.8 + beside * 0.6,
                                          30.0 * along / 500.0));
        }
    }
    CStraightBIG straight;
    straight.SpecifyStraightGeometry(0, 0, 500, 0, 0, 40, true, true);
    CGradeVector slope({250, -250, 0}, {250, 250, 0}, 30);
    std::vector<CPoint> outline;
    straight.DefineTrackItemOutlineAndHeight(90, 20, slope, outline);
    ExpectSamePlace(outline[2], CPoint(230, 250, 30));
    CPoint marks[4];
    straight.CalcTrackMarks(90, slope, marks[0], marks[1], marks[2], marks[3]);
    ExpectSamePlace(marks[2], CPoint(230, 250, 30)); // joint 1 looks back
}

TEST(UGrades, FixesAGradeToWhereTheTrackLies)
{
    CRandomShapes random(31);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        CCompositeGeometry element;
        element.AppendBIG(RandomComponent(random, i % 2 == 0 ? kStraightType : kFlexTrackType).release());
        element.SetPosition(-300, 50);
        element.SetZPosition(40);
        element.RotateBy(random.Between(0, 360));
        CJoint* joints[] = {element.GetBIGAtIndex(0)->GetJoint(0), element.GetBIGAtIndex(0)->GetJoint(1)};
        CJoint partners[2];
        const double heights[] = {random.Between(0, 20), random.Between(0, 20)};
        for (int k = 0; k < 2; ++k) {
            partners[k].GetPosition().z = heights[k];
            joints[k]->ConnectToJoint(&partners[k]);
        }
        if (joints[0]->DistanceToJoint(*joints[1]) < 40.0) {
            continue;
        }
        UGrades::FixGradeForTrack(&element);
        EXPECT_NEAR(joints[0]->GetPosition().z, heights[0], kTolerance);
        EXPECT_NEAR(joints[1]->GetPosition().z, heights[1], kTolerance);
        partners[0].DisconnectJoint();
        element.SetZPosition(element.GetPosition().z + 5);
        UGrades::FixGradeForTrack(&element); // one end is free: the climb stays
        EXPECT_NEAR(joints[0]->GetPosition().z, heights[0] + 5, kTolerance);
        EXPECT_NEAR(joints[1]->GetPosition().z, heights[1] + 5, kTolerance);
    }
}

TEST(CCountedCIG, CountsACopyOfItsOwn)
{
    const tElement element = NewElement(kFlexTrackType, "A100", "Alpha");
    CCountedCIG counted(element.get(), 3);
    element->SetName("B");
    EXPECT_STREQ(counted.GetName(), "A100");
    counted.IncCount(4);
    EXPECT_EQ(counted.GetCount(), 7);
    // What a stock file may claim.
    CCountedCIG hostile(&counted);
    hostile.IncCount(INT_MAX);
    EXPECT_EQ(hostile.GetCount(), INT_MAX);
    hostile.DecCount(INT_MIN);
    EXPECT_EQ(hostile.GetCount(), INT_MAX);
    CCountedCIG debt(&counted, INT_MIN);
    debt.DecCount(1);
    EXPECT_EQ(debt.GetCount(), 0);
}
