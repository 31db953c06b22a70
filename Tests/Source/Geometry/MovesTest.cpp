#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/UGrades.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Source/Geometry/Shapes.h"

#include <algorithm>

namespace {
using tElement = std::unique_ptr<CCompositeGeometry>;

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
        } else if (component->GetType() == kTextType) {
            shape.emplace_back(component->GetItemXOffset(), component->GetItemYOffset(), 0.0);
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

        place(CBasicGeometry::kPlaceForTrackMarks);
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

TEST(Moves, TurningIsRigidAndTurningBackRestores)
{
    CRandomShapes random(13);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        const tElement element = i % 10 == 0 ? std::make_unique<CCompositeGeometry>() : RandomElement(random);
        if (i % 5 == 0) { // a text, alone or with others
            auto* text = new CTextBIG;
            text->MoveItemBy(random.Between(-99, 99), random.Between(-99, 99));
            text->SetAngle(random.Between(-360, 360));
            element->AppendBIG(text);
            element->AlignComponentsLeftTop(nullptr);
        }
        if (i % 5 == 1) { // about the middle of its box, less whole turns
            DRect box = {};
            element->CalcBoundingBox(box);
            const CPoint& place = element->GetPosition();
            const auto turned = Turned(FixedPoints(*element), UDRect::Center(box) + CPoint(place.x, place.y, 0.0), 40);
            element->SetAngle(400);
            ExpectSamePlaces(*element, turned);
        } else if (random.Bool()) {
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
        EXPECT_TRUE(i % 5 == 0 || std::max(std::fabs(box.left), std::fabs(box.top)) < kTolerance) << "aligned again";
        element->RotateBy(centre, -angle);
        ExpectSamePlace(element->GetPosition(), position);
        ExpectSamePlaces(*element, before);
        element->RotateBy(angle);
        element->RotateBy(-angle);
        ExpectSamePlace(element->GetPosition(), position);
        ExpectSamePlaces(*element, before);
    }
}

TEST(Moves, AGradeTurnsWithItsElement)
{
    CRandomShapes random(15);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        const tElement element = RandomElement(random);
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
