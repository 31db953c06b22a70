#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/UGrades.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Source/Geometry/Shapes.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"
#include "Utilities/Geometry/UBezier.h"

#include <cstring>

namespace {
constexpr double kWild[] = {0.0,           -0.0,  1e-300, 720.0,    -90.0,     2147483647.0,
                            -2147483648.0, 1e308, -1e308, INFINITY, -INFINITY, NAN};

/// Every other number is what no document should hold.
class CWildShapes : public CRandomShapes {
public:
    using CRandomShapes::CRandomShapes;
    double Between(double low, double high) override
    {
        return Bool() ? CRandomShapes::Between(low, high) : kWild[Below(12)];
    }
};

std::vector<CPoint> Outline(CBasicGeometry& component, double angle, double distance)
{
    std::vector<CPoint> outline;
    component.DefineTrackItemOutline(angle, distance, outline);
    return outline;
}

DRect BoxOf(CBasicGeometry& component, double angle)
{
    DRect box = {};
    component.CalcBoundingBox(box, angle);
    return box;
}

/// A track or polygon as people draw it: no bend tighter than the trackbed, no edge that crosses another.
std::unique_ptr<CBasicGeometry> Ordinary(CRandomShapes& random, int type)
{
    auto component = RandomComponent(random, type);
    if (!IsPolygonType(type)) {
        return component;
    }
    auto* poly = static_cast<CPolyBIG*>(component.get());
    std::vector<CPoint> points;
    const bool closed = type == kPolyType && random.Bool();
    const int count = 3 + random.Below(6);
    for (int i = 0; i < count; ++i) { // a wave, or around a middle
        points.push_back(
            closed ? Turned({random.Between(80, 300), 0, 0}, CPoint(), (i + 0.5 * random.Between(0, 1)) * 360 / count)
                   : CPoint(200.0 * i, random.Between(0, 60), 0));
    }
    poly->SetPolyCloseFlag(closed);
    static_cast<CBasicGeometry*>(poly)->SetTrackbedWidth(random.Between(1, 40));
    poly->CPolyBIG::SetPoints(points); // of any length
    return component;
}

bool IsFinite(const CPoint& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

bool IsFinite(const DRect& box)
{
    return std::isfinite(box.left) && std::isfinite(box.top) && std::isfinite(box.right) && std::isfinite(box.bottom);
}
} // namespace

TEST(Properties, ABoxHoldsItsOutlineAndTouchesItOnEverySide)
{
    CRandomShapes random(41);
    static constexpr int kTypes[] = {kStraightType, kCurveType, kPolyType, kFlexTrackType};
    for (int i = 0; i < 800; ++i) {
        SCOPED_TRACE(i);
        const int type = kTypes[i % 4];
        const bool ordinary = random.Bool();
        const auto component = ordinary ? Ordinary(random, type) : RandomComponent(random, type);
        const double angle = i % 8 < 4 ? 45.0 * random.Below(9) : random.Between(-720, 720);
        const DRect box = BoxOf(*component, angle);
        const auto outline = Outline(*component, angle, component->GetTrackbedWidth() / 2.0);
        ASSERT_FALSE(outline.empty());
        DRect touched = {};
        CCalcBoundingBox grow(touched);
        for (const CPoint& point : outline) {
            grow.Update(point);
        }
        const bool bent = type == kCurveType || type == kFlexTrackType;
        // The chords of an outline cut off up to their flatness of an arc; nothing ever sticks out.
        const double slack = bent ? 1.5 * UTrackCourse::kFlatness : kTolerance;
        const double inside[] = {touched.left - box.left, touched.top - box.top, box.right - touched.right,
                                 box.bottom - touched.bottom};
        for (const double gap : inside) {
            EXPECT_GE(gap, -kTolerance);
            EXPECT_TRUE(gap <= slack || (!ordinary && IsPolygonType(type))) << gap;
        }
        std::vector<CPoint> area;
        component->DefineTrackItemArea(angle, 7.0, area);
        ExpectSamePlaces(area, Outline(*component, angle, component->GetTrackbedWidth() / 2.0 + 7.0));
    }
}

TEST(Properties, JoinedJointsMeetAndFaceEachOther)
{
    CRandomShapes random(43);
    static constexpr int kTypes[] = {kStraightType, kCurveType, kFlexTrackType};
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        CCompositeGeometry elements[2];
        int at[2] = {};
        int joint[2] = {};
        for (int k = 0; k < 2; ++k) {
            for (int count = 1 + random.Below(3); count > 0; --count) {
                elements[k].AppendBIG(RandomComponent(random, kTypes[random.Below(3)]).release());
            }
            elements[k].SetPosition(random.Between(-900, 900), random.Between(-900, 900));
            elements[k].RotateBy(random.Between(-400, 400));
            at[k] = random.Below(static_cast<int>(elements[k].GetNumberOfComponents()));
            joint[k] = random.Below(2);
        }
        const auto find = [&](int k) {
            return elements[k].GetBIGAtIndex(static_cast<short>(at[k]))->GetJoint(joint[k]);
        };
        elements[1].RotateBy(find(0)->GetAngle() + 180.0 - find(1)->GetAngle());
        elements[1].AlignComponentJointOnPoint(at[1], joint[1], find(0)->GetPosition());
        ExpectSamePlace(find(1)->GetPosition(), find(0)->GetPosition());
        EXPECT_TRUE(find(0)->AppropriateAngleForConnection(*find(1)));
        EXPECT_TRUE(find(1)->AppropriateAngleForConnection(*find(0)));

        // What moves an element leaves it connected, and moved to the origin or its middle there it is where it says.
        find(0)->ConnectToJoint(find(1));
        elements[1].SetGrade(
            CGradeVector(find(1)->GetLocalPoint() + CPoint(50, 20, -find(1)->GetLocalPoint().z), {600, 70, 0}, 25));
        elements[1].DefineAllJoints();
        const CPoint before = find(1)->GetPosition();
        const CPoint moved =
            i % 2 == 0 ? elements[1].CenterAllComponents() : elements[1].AlignComponentsOnJoint(at[1], joint[1]);
        ExpectSamePlace(find(1)->GetPosition(), before + moved);
        DRect box = {};
        elements[1].CalcBoundingBox(box);
        const CPoint atOrigin = i % 2 == 0 ? UDRect::Center(box) : find(1)->GetLocalPoint();
        EXPECT_LE(atOrigin.CalcDistance2D(CPoint::ZeroPos), kTolerance);
        elements[1].SetAngle(33);
        elements[1].AlignComponentsOnJoint(-1, 0);
        EXPECT_EQ(find(0)->GetPartner(), find(1));
        EXPECT_EQ(find(1)->GetPartner(), find(0));
    }
}

TEST(Properties, ScalingKeepsTheShape)
{
    CRandomShapes random(44);
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE(i);
        const auto element = RandomElement(random);
        element->RotateBy(random.Between(-300, 300));
        const double factor = random.Between(0.1, 4);
        element->SetGrade(CGradeVector({10, 20, 0}, {900, 30, 0}, 40));
        const CPoint position = element->GetPosition();
        CCompositeGeometry scaled(element.get());
        scaled.Scale(factor);
        scaled.Scale(-1.0);
        scaled.Scale(NAN);
        ExpectSamePlace(scaled.GetPosition(), position);
        DRect boxes[2] = {};
        element->CalcBoundingBox(boxes[0]);
        scaled.CalcBoundingBox(boxes[1]);
        EXPECT_NEAR(boxes[1].right, boxes[0].right * factor, kTolerance);
        EXPECT_NEAR(boxes[1].bottom, boxes[0].bottom * factor, kTolerance);
        EXPECT_NEAR(scaled.GetTrackLength(), element->GetTrackLength() * factor,
                    std::fabs(scaled.GetTrackLength()) * 1e-6);
        std::vector<CJoint*> joints[2];
        element->GetJoints(joints[0], true, true);
        scaled.GetJoints(joints[1], true, true);
        ASSERT_EQ(joints[0].size(), joints[1].size());
        for (size_t k = 0; k < joints[0].size(); ++k) {
            ExpectSamePlace(joints[1][k]->GetLocalPoint(), joints[0][k]->GetLocalPoint() * factor);
            EXPECT_LE(AngleBetween(joints[1][k]->GetAngle(), joints[0][k]->GetAngle()), kTolerance);
        }
    }
}

TEST(Properties, NothingGivesANumberThatIsNotFinite)
{
    static constexpr int kTypes[] = {kStraightType, kCurveType, kOvalType, kPolyType, kFlexTrackType};
    CWildShapes random(45);
    const auto wild = [&] { return random.Between(-500, 500); };
    for (int i = 0; i < 3000; ++i) {
        SCOPED_TRACE(i);
        CCompositeGeometry element;
        auto component = RandomComponent(random, kTypes[i % 5]);
        if (IsPolygonType(kTypes[i % 5])) {
            auto* poly = static_cast<CPolyBIG*>(component.get());
            component->SetTrackbedWidth(30); // which is taken as it is
            poly->AddPoint(random.Point(500));
            poly->SetPoints(random.Points(random.Below(8), 500));
            poly->InsertPointAtIdx(random.Below(3), random.Point(500));
            poly->RestrictPolyPoint(i % 2 == 0 ? "d" : "h");
            poly->InsertPointBefore(random.Below(3));
            poly->InsertPointAfter(random.Below(3));
            poly->Scale(wild(), random.Bool());
            poly->MirrorPointsVertically();
            poly->Normalize();
            poly->RoundPointPositions();
            Point32 handle = {};
            poly->PointIsCloseToHandle(random.Point(500), handle);
            for (const CPoint& point : poly->GetPoints()) {
                ASSERT_TRUE(IsFinite(point));
            }
        }
        element.AppendBIG(component.release());
        element.SetGrade(CGradeVector({0, 0, 0}, {100, 0, 0}, 30));
        element.RotateBy(wild());
        element.RotateBy(random.Point(500), wild());
        element.SetAngle(wild());
        element.Scale(wild());
        element.CenterAllComponents();
        element.AlignComponentsOnJoint(0, 1);
        UGrades::FixGradeForTrack(&element);
        CBasicGeometry& shape = *element.GetBIGAtIndex(0);
        DRect box = {};
        element.CalcBoundingBox(box);
        ASSERT_TRUE(IsFinite(box));
        element.DefineAllJoints();
        for (int k = 0; k < 2; ++k) {
            ASSERT_TRUE(IsFinite(shape.GetJoint(k)->GetPosition()));
            ASSERT_TRUE(std::isfinite(shape.GetJoint(k)->GetAngle()));
        }
        ASSERT_TRUE(std::isfinite(element.GetTrackLength()));
        ASSERT_TRUE(IsFinite(element.GetPosition()));
        for (const double distance : {0.0, 20.0, wild()}) {
            const auto outline = Outline(shape, random.Bool() ? element.GetAngle() : wild(), distance);
            ASSERT_LE(outline.size(), 20000u);
            for (const CPoint& point : outline) {
                ASSERT_TRUE(IsFinite(point));
            }
        }
    }
    // From elsewhere: numbers in a clipboard block may be anything.
    CRandomShapes sound(46);
    for (int i = 0; i < 300; ++i) {
        const auto element = RandomElement(sound);
        std::vector<CCompositeGeometry*> elements = {element.get()};
        unsigned long size = 0;
        std::unique_ptr<unsigned char[]> block(UElementVectorOperations::ElementVectorToRawMem(elements, size));
        const double value = kWild[random.Below(12)];
        const size_t start = 4 + CCompositeGeometry::kRawSizeBeforeGrade + CGradeVector::kRawSize + 8;
        for (const size_t field :
             {size_t{4 + 284}, size_t{4 + 336}, start, start + 8, start + 16, start + 24, start + 34, start + 60}) {
            if (random.Bool() && field + 8 <= size) {
                std::memcpy(block.get() + field, &value, sizeof value);
            }
        }
        std::vector<CCompositeGeometry*> pasted;
        if (UElementVectorOperations::ElementVectorFromRawMem(pasted, block.get(), size)) {
            DRect box = {};
            UElementVectorOperations::GetElementVectorBounds(pasted, box);
            EXPECT_TRUE(IsFinite(box)) << i;
        }
        UElementVectorOperations::DeleteItemVector(pasted);
    }
}
