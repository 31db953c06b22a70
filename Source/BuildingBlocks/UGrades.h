// Conversions of grades and the heights they give.
#pragma once

#include "BuildingBlocks/CGradeVector.h"

class CCompositeGeometry;
class CJoint;
class CPoint;

/// Static operations on grades.
class UGrades {
public:
    UGrades() = delete;

    /// 1 / x.
    static double PerMilleToRatio(double x);
    /// atan(x), degrees.
    static double PerMilleToAngle(double x);
    /// tan of an angle in degrees.
    static double AngleToPerMille(double angle);
    /// Angle in degrees of a rise over a length.
    static double GradeFromHeightDiff(double length, double heightDiff);
    /// Sets the point's z to the height of the grade there; x and y (element coordinates) stay.
    static void ApplyGradeToPoint(CPoint& point, const CGradeVector& grade);

    /// The grade of an element that climbs by `heightDiff` (mm, not negative) from joint a to joint b, from the joints'
    /// places in the element. Its own heights are 0, so that joint b comes to lie exactly `heightDiff` above joint a.
    static CGradeVector GetGradeVectorForHeightDiffBetweenJoints(CCompositeGeometry* element, const CJoint* jointA,
                                                                 const CJoint* jointB, double heightDiff);
    /// Makes the grade of a track with two joints fit where it lies now: between the heights of its partners where both
    /// ends are connected, else with the climb it has between its joints. Sets the element's height and grade; an
    /// element without two joints stays as it is.
    static void FixGradeForTrack(CCompositeGeometry* element);
};
