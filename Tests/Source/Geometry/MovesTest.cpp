#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/UGrades.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Source/Geometry/Shapes.h"

#include <array>

namespace {
using tElement = std::unique_ptr<CCompositeGeometry>;

tElement Curve(double radius, double arc, double angle, double gauge, double trackbed)
{
    auto curve = std::make_unique<CCurveBIG>();
    curve->SpecifyCurveGeometry(0, 0, radius, arc, angle, gauge, trackbed, true, true);
    auto element = std::make_unique<CCompositeGeometry>();
    element->AppendBIG(curve.release());
    return element;
}

/// Turns and moves the element so that its joint lies on another element's and faces it.
void Join(CCompositeGeometry& element, int joint, const CJoint& other)
{
    element.DefineAllJoints();
    element.RotateBy(other.GetAngle() + 180.0 - element.GetBIGAtIndex(0)->GetJoint(joint)->GetAngle());
    element.AlignComponentJointOnPoint(0, joint, other.GetPosition());
}

/// Points that are fixed to an element, in layout coordinates: whatever moves it must move them all alike.
std::vector<CPoint> FixedPoints(CCompositeGeometry& element)
{
    std::vector<CPoint> points;
    const CPoint& position = element.GetPosition();
    for (CBasicGeometry* component : element.GetComponents()) {
        component->DefineJoints(position, element.GetAngle(), CGradeVector::ZeroGrade,
                                CBasicGeometry::kPlaceForConnection);
        std::vector<CPoint> shape;
        if (component->GetType() == kOvalType) {
            shape.push_back(component->GetRotationReferencePoint(element.GetAngle()));
        } else if (IsPolygonType(component->GetType())) {
            static_cast<CPolyBIG*>(component)->CalculateRotatedPointPositions(shape, component->GetAngle() +
                                                                                         element.GetAngle());
            for (CPoint& point : shape) {
                point.MoveBy(component->GetItemXOffset(), component->GetItemYOffset(), 0.0);
            }
        } else {
            component->DefineTrackItemOutline(element.GetAngle(), 10.0, shape);
        }
        for (CPoint& point : shape) {
            points.emplace_back(point.x + position.x, point.y + position.y, 0.0);
        }
        if (IsTrackType(component->GetType())) {
            for (int i = 0; i < 2; ++i) {
                CPoint joint = component->GetJoint(i)->GetPosition();
                joint.z = 0.0;
                points.push_back(joint);
            }
        }
    }
    return points;
}

void ExpectSamePlaces(CCompositeGeometry& element, const std::vector<CPoint>& expected)
{
    const std::vector<CPoint> points = FixedPoints(element);
    ASSERT_EQ(points.size(), expected.size());
    for (size_t k = 0; k < points.size(); ++k) {
        ExpectSamePlace(points[k], expected[k]);
    }
}

/// The points turned about a centre.
std::vector<CPoint> Turned(std::vector<CPoint> points, const CPoint& centre, double angle)
{
    for (CPoint& point : points) {
        point.Rotate(centre, angle);
    }
    return points;
}

std::vector<double> JointAngles(const CCompositeGeometry& element)
{
    std::vector<double> angles;
    for (CBasicGeometry* component : element.GetComponents()) {
        angles.push_back(component->GetJoint(0)->GetAngle());
        angles.push_back(component->GetJoint(1)->GetAngle());
    }
    return angles;
}
} // namespace

TEST(Moves, CurvesJoinedEndToEndCloseACircle)
{
    const struct {
        double arc, radius, gauge, trackbed, start;
    } cases[] = {{30, 360, 16.5, 32, 0}, {22.5, 195, 6.5, 12, 45}, {120, 60, 1, 200, 1},      {180, 250, 9, 18, 270},
                 {360, 250, 9, 18, 77},  {1, 5000, 16.5, 32, 400}, {-30, 360, 16.5, 32, 12.5}};
    for (const auto& c : cases) {
        for (const int entry : {0, 1}) {
            SCOPED_TRACE(testing::Message() << c.arc << " degrees from " << c.start << ", in by joint " << entry);
            std::vector<tElement> ring;
            const int count = static_cast<int>(std::lround(360.0 / std::fabs(c.arc)));
            for (int i = 0; i < count; ++i) {
                ring.push_back(Curve(c.radius, c.arc, 0, c.gauge, c.trackbed));
                if (i == 0) {
                    ring[0]->SetPosition(1234.5, -678.9);
                    ring[0]->RotateBy(c.start);
                } else {
                    const CJoint& end = *ring[static_cast<size_t>(i) - 1]->GetBIGAtIndex(0)->GetJoint(1 - entry);
                    Join(*ring.back(), entry, end);
                    const CJoint& begin = *ring.back()->GetBIGAtIndex(0)->GetJoint(entry);
                    ExpectSamePlace(begin.GetPosition(), end.GetPosition());
                    EXPECT_TRUE(begin.AppropriateAngleForConnection(end));
                }
            }
            const CJoint& begin = *ring.front()->GetBIGAtIndex(0)->GetJoint(entry);
            const CJoint& end = *ring.back()->GetBIGAtIndex(0)->GetJoint(1 - entry);
            ExpectSamePlace(end.GetPosition(), begin.GetPosition());
            EXPECT_TRUE(begin.AppropriateAngleForConnection(end));
            CPoint centre;
            for (const tElement& element : ring) {
                centre = centre + element->GetBIGAtIndex(0)->GetJoint(0)->GetPosition() * (1.0 / count);
            }
            for (const tElement& element : ring) {
                const CPoint& joint = element->GetBIGAtIndex(0)->GetJoint(0)->GetPosition();
                EXPECT_NEAR(joint.CalcDistance2D(centre), count > 1 ? c.radius + c.gauge : 0.0, kTolerance);
            }
        }
    }
}

TEST(Moves, AJointFacesTheWayIntoItsTrack)
{
    CRandomShapes random(11);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        const auto track = RandomComponent(random, i % 2 == 0 ? kStraightType : kCurveType);
        const double angle = random.Between(-720, 720);
        const CPoint origin = random.Point(1000);
        const auto place = [&](int mode) { track->DefineJoints(origin, angle, CGradeVector::ZeroGrade, mode); };
        place(CBasicGeometry::kPlaceForConnection);
        // The centre line, and how much its direction may turn between two of its points.
        std::vector<CPoint> line;
        double turn = kTolerance;
        track->DefineTrackItemOutline(angle, 0.0, line);
        line.resize(line.size() / 2); // there, without the way back
        ExpectSamePlace(line.front() + origin, track->GetJoint(0)->GetPosition());
        ExpectSamePlace(line.back() + origin, track->GetJoint(1)->GetPosition());
        if (track->GetType() == kCurveType) {
            turn = std::fabs(static_cast<CCurveBIG&>(*track).GetItemArcAngle()) / (double(line.size()) - 1.0);
        }
        const size_t last = line.size() - 1;
        EXPECT_LE(AngleBetween(track->GetJoint(0)->GetAngle(), DirectionFrom(line[0], line[1])), turn);
        EXPECT_LE(AngleBetween(track->GetJoint(1)->GetAngle(), DirectionFrom(line[last], line[last - 1])), turn);
        EXPECT_EQ(track->GetJoint(0)->GetComponentFlag(), track->GetType() != kCurveType);
        EXPECT_TRUE(track->GetJoint(1)->GetComponentFlag());

        const CPoint placed = track->GetJoint(1)->GetPosition();
        track->MoveItemBy(5, 0);
        place(CBasicGeometry::kPlaceForTrackMarks);
        ExpectSamePlace(track->GetJoint(1)->GetPosition(), placed); // only the local points were asked for
        EXPECT_NEAR(track->GetJoint(1)->GetLocalPoint().x + origin.x, placed.x + 5, kTolerance);
        CPoint marks[4];
        track->CalcTrackMarks(angle, marks[0], marks[1], marks[2], marks[3]);
        for (int k = 0; k < 2; ++k) {
            const CJoint& joint = *track->GetJoint(k);
            ExpectSamePlace((marks[2 * k] + marks[2 * k + 1]) * 0.5, joint.GetLocalPoint());
            EXPECT_NEAR(marks[2 * k].CalcDistance2D(marks[2 * k + 1]), track->GetTrackbedWidth(), kTolerance);
            if (track->GetTrackbedWidth() > 1.0) {
                EXPECT_LE(AngleBetween(DirectionFrom(marks[2 * k], marks[2 * k + 1]), joint.GetAngle() + 90.0), 1e-6);
            }
        }
    }
}

TEST(Moves, OutlinesOfCurvesKeepTheirDistance)
{
    CRandomShapes random(12);
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE(i);
        CCurveBIG curve;
        const double radius = random.Between(50, 2000);
        curve.SpecifyCurveGeometry(0, 0, radius, random.Between(-360, 360), 0, 9, random.Between(0, 40), true, true);
        const double distance = random.Between(0, 30);
        std::vector<CPoint> outline;
        curve.DefineTrackItemOutline(33, distance, outline);
        const double side = curve.GetItemArcAngle() < 0 ? -1.0 : 1.0;
        const double toCentre = (33.0 + 90.0 * side) * kRadiansPerDegree;
        const CPoint centre = (outline.front() + outline.back()) * 0.5 +
                              CPoint(std::cos(toCentre), std::sin(toCentre), 0.0) * (radius + 9);
        for (size_t k = 0; k < outline.size(); ++k) {
            // The right edge there, the left edge back.
            const double expected = radius + 9 + (k < outline.size() / 2 ? side : -side) * distance;
            EXPECT_NEAR(outline[k].CalcDistance2D(centre), expected, kTolerance);
            if (k > 0 && k != outline.size() / 2) {
                EXPECT_NEAR(((outline[k - 1] + outline[k]) * 0.5).CalcDistance2D(centre), expected, 0.05);
            }
        }
    }
}

TEST(Moves, TurningIsRigidAndTurningBackRestores)
{
    CRandomShapes random(13);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        const tElement element = RandomElement(random);
        if (random.Bool()) {
            element->RotateBy(random.Between(-360, 360));
        }
        const std::vector<CPoint> before = FixedPoints(*element);
        const std::vector<double> anglesBefore = JointAngles(*element);
        const CPoint position = element->GetPosition();
        const double angle = random.Between(-500, 500);
        const CPoint centre = random.Point(3000);
        std::vector<CCompositeGeometry*> alone = {element.get()};
        UElementVectorOperations::RotateItemVectorBy(alone, centre, angle);
        ExpectSamePlaces(*element, Turned(before, centre, angle));
        const std::vector<double> anglesAfter = JointAngles(*element);
        size_t joint = 0;
        for (const CBasicGeometry* component : element->GetComponents()) {
            for (int k = 0; k < 2; ++k, ++joint) {
                if (IsTrackType(component->GetType())) {
                    EXPECT_LE(AngleBetween(anglesAfter[joint], anglesBefore[joint] + angle), kTolerance);
                }
            }
        }
        DRect box = {};
        element->CalcBoundingBox(box);
        EXPECT_NEAR(box.left, 0.0, kTolerance) << "aligned again";
        EXPECT_NEAR(box.top, 0.0, kTolerance);
        element->RotateBy(centre, -angle);
        ExpectSamePlace(element->GetPosition(), position);
        ExpectSamePlaces(*element, before);
        element->RotateBy(angle);
        element->RotateBy(-angle);
        ExpectSamePlace(element->GetPosition(), position);
        ExpectSamePlaces(*element, before);
    }
}

TEST(Moves, AnElementTurnsAboutTheMiddleOfItsBox)
{
    CRandomShapes random(14);
    for (int i = 0; i < 50; ++i) {
        const tElement element = RandomElement(random);
        DRect box = {};
        element->CalcBoundingBox(box);
        CPoint middle = UDRect::Center(box) + element->GetPosition();
        middle.z = 0.0;
        const std::vector<CPoint> before = FixedPoints(*element);
        element->SetAngle(400);
        EXPECT_EQ(element->GetAngle(), 40) << "less whole turns";
        ExpectSamePlaces(*element, Turned(before, middle, 40));
    }
}

TEST(Moves, ATextTurnsWithItsElement)
{
    for (const bool alone : {false, true}) {
        SCOPED_TRACE(alone);
        CCompositeGeometry element;
        CTextBIG* text = new CTextBIG;
        text->MoveItemBy(50, 30);
        text->SetAngle(20);
        element.AppendBIG(text);
        CStraightBIG* straight = alone ? nullptr : new CStraightBIG;
        if (straight != nullptr) {
            straight->SpecifyStraightGeometry(0, 0, 200, 0, 9, 20, true, true);
            element.AppendBIG(straight);
        }
        element.SetPosition(500, 500);
        // Where the text begins, in its element and in the layout, and a joint.
        const auto places = [&] {
            element.DefineAllJoints();
            const CPoint text0(text->GetItemXOffset(), text->GetItemYOffset(), 0);
            return std::array{text0 + element.GetPosition(),
                              straight != nullptr ? straight->GetJoint(0)->GetPosition() : CPoint(), text0};
        };
        const auto before = places();
        const CPoint centre(100, 50, 0);
        element.RotateBy(centre, 77);
        for (size_t i = 0; i < (alone ? 1 : 2); ++i) {
            ExpectSamePlace(places()[i], Turned(before[i], centre, 77));
        }
        const auto expectRestored = [&] {
            for (size_t i = 0; i < before.size(); ++i) {
                ExpectSamePlace(places()[i], before[i]);
            }
        };
        element.RotateBy(centre, -77);
        expectRestored();
        element.RotateBy(123);
        EXPECT_GT(places()[0].CalcDistance(before[0]), 1.0);
        element.RotateBy(-123);
        expectRestored();
        EXPECT_GT(element.CenterAllComponents().CalcDistance2D(CPoint::ZeroPos), 1.0);
        ExpectSamePlace(element.CenterAllComponents(), CPoint::ZeroPos);
    }
}

TEST(Moves, AGradeTurnsWithItsElement)
{
    CRandomShapes random(15);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        tElement element = RandomElement(random);
        if (i % 2 == 0) {
            element = Curve(random.Between(100, 900), random.Between(10, 300), 0, 9, 20);
        }
        CBasicGeometry* track = element->GetFirstTrackBIG();
        if (track == nullptr) {
            continue;
        }
        const double rise = random.Between(1, 60);
        element->SetZPosition(40);
        element->SetGrade(UGrades::GetGradeVectorForHeightDiffBetweenJoints(element.get(), track->GetJoint(0),
                                                                            track->GetJoint(1), rise));
        if (element->GetGrade().GetVectorLength() < 2.0 * rise) {
            continue; // steeper than any track
        }
        std::vector<CJoint*> joints;
        element->GetJoints(joints, true, true);
        std::vector<double> before;
        for (const CJoint* joint : joints) {
            before.push_back(joint->GetPosition().z);
        }
        EXPECT_NEAR(track->GetJoint(0)->GetPosition().z, 40, kTolerance);
        EXPECT_NEAR(track->GetJoint(1)->GetPosition().z, 40 + rise, kTolerance);
        element->RotateBy(random.Point(2000), random.Between(-400, 400));
        for (size_t k = 0; k < before.size(); ++k) {
            EXPECT_NEAR(joints[k]->GetPosition().z, before[k], kTolerance);
        }
        const CPoint target = random.Point(500);
        element->AlignComponentJointOnPoint(element->GetIndexOfBIG(track), 1, target);
        ExpectSamePlace(track->GetJoint(1)->GetPosition(), target);
        EXPECT_NEAR(track->GetJoint(0)->GetPosition().z, target.z - rise, kTolerance);
    }
}
