// Generated elements for laws that hold for every shape.
#pragma once

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "KVUNum/Angles.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

/// Documents keep seven decimals, so lengths (mm) and angles (degrees) agree to this.
constexpr double kTolerance = 1e-6;

/// Random points as well.
class CRandomShapes : public CRandom {
public:
    using CRandom::CRandom;
    virtual ~CRandomShapes() = default;
    virtual double Between(double low, double high) { return CRandom::Between(low, high); }
    CPoint Point(double reach) { return {Between(-reach, reach), Between(-reach, reach), Between(-reach, reach)}; }
    std::vector<CPoint> Points(int count, double reach)
    {
        std::vector<CPoint> points(static_cast<size_t>(count));
        for (CPoint& point : points) {
            point = {Between(-reach, reach), Between(-reach, reach), 0.0};
        }
        return points;
    }
};

/// By how much two directions differ, degrees, 0 to 180.
inline double AngleBetween(double a, double b)
{
    return std::fabs(std::remainder(a - b, 360.0));
}

inline double DirectionFrom(const CPoint& from, const CPoint& to)
{
    return std::atan2(to.y - from.y, to.x - from.x) * kDegreesPerRadian;
}

inline void ExpectSamePlace(const CPoint& actual, const CPoint& expected, double tolerance = kTolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

inline void ExpectSamePlaces(const std::vector<CPoint>& actual, const std::vector<CPoint>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < actual.size(); ++i) {
        SCOPED_TRACE(i);
        ExpectSamePlace(actual[i], expected[i]);
    }
}

inline CPoint Turned(CPoint point, const CPoint& centre, double angle)
{
    point.Rotate(centre, angle);
    return point;
}

/// A component of one of the five kinds that have a shape of their own, placed and turned anyhow.
inline std::unique_ptr<CBasicGeometry> RandomComponent(CRandomShapes& random, int type)
{
    const double x = random.Between(-300, 300);
    const double y = random.Between(-300, 300);
    const double angle = random.Between(-360, 360);
    const double gauge = random.Between(0, 45);
    const double trackbed = random.Between(0, 60);
    switch (type) {
    case kStraightType: {
        auto straight = std::make_unique<CStraightBIG>();
        straight->SpecifyStraightGeometry(x, y, random.Between(0, 400), angle, gauge, trackbed, true, true);
        return straight;
    }
    case kCurveType: {
        auto curve = std::make_unique<CCurveBIG>();
        curve->SpecifyCurveGeometry(x, y, random.Between(10, 900), random.Between(-400, 760), angle, gauge, trackbed,
                                    true, true);
        return curve;
    }
    case kFlexTrackType: {
        auto flex = std::make_unique<CFlexTrackBIG>();
        flex->SpecifyFlexGeometry(x, y, random.Points(2 + random.Below(6), 400), angle, trackbed, 800);
        return flex;
    }
    case kPolyType: {
        auto poly = std::make_unique<CPolyBIG>();
        poly->SpecifyPolyGeometry(x, y, random.Points(1 + random.Below(7), 300), angle, 1, 1);
        poly->SetPolyCloseFlag(random.Bool());
        poly->SetTrackbedWidth(random.Bool() ? trackbed : 0.0);
        return poly;
    }
    default: {
        auto circle = std::make_unique<COvalBIG>();
        circle->SpecifyOvalGeometry(x, y, random.Between(1, 200), 1);
        return circle;
    }
    }
}

/// An element of one to five such components, aligned as a load leaves it.
inline std::unique_ptr<CCompositeGeometry> RandomElement(CRandomShapes& random)
{
    static constexpr int kTypes[] = {kStraightType, kCurveType, kFlexTrackType, kPolyType, kOvalType};
    auto element = std::make_unique<CCompositeGeometry>();
    for (int count = 1 + random.Below(5); count > 0; --count) {
        element->AppendBIG(RandomComponent(random, kTypes[random.Below(5)]).release());
    }
    const CPoint place = random.Point(2000);
    element->SetPosition(place.x, place.y);
    element->SetZPosition(place.z);
    element->AlignComponentsLeftTop(nullptr);
    element->DefineAllJoints();
    return element;
}
