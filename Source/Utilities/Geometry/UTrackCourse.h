// The course of a track: where it runs, and the lines beside it.
#pragma once

#include "CPoint/CPoint.h"

#include <cstddef>
#include <vector>

/// A vector in the drawing plane; points of curves carry no height.
struct tVector2D {
    double x;
    double y;
};

/// A point of a track's centre line.
struct tCoursePoint {
    tVector2D point;
    tVector2D heading; ///< direction of travel, of length 1
    double length;     ///< along the track from its start, mm
};

/// A centre line as points so close that the chords between them, and those of a line beside it at the distance for
/// which it was made, stay within UTrackCourse::kFlatness of the true line.
using tCourse = std::vector<tCoursePoint>;

/// Courses that bend as they like: of chains of straight edges, and of flexible track, which UBezier::Flatten makes.
/// (Straights and arcs need none: the lines beside them are straights and arcs.) No operation ever gives a number that
/// is not finite: where the geometry is not, nothing is appended.
class UTrackCourse {
public:
    UTrackCourse() = delete;

    /// How far chords may lie from their curve, mm. Too little to see, and less than a document's author can mean.
    static constexpr double kFlatness = 0.05;
    /// Steps of an arc at the most, however large the radius.
    static constexpr int kMostArcSteps = 720;

    /// Appends the course from one point to another; nothing when they are the same.
    static void AppendStraight(tVector2D from, tVector2D to, tCourse& course);
    /// Appends the course along straight edges from point to point; at each corner it turns on the spot.
    static void AppendChain(const std::vector<CPoint>& points, tCourse& course);
    /// The largest turn between two points of a course whose chords keep to kFlatness in a line that runs `radius`
    /// from the centre of the bend, in radians.
    static double WidestStep(double radius);

    /// The point of a course at a length from its start, exact to the third order between the course's own points; cut
    /// to the course's ends. Logarithmic. The course is not empty.
    static tCoursePoint AtLength(const tCourse& course, double length);

    /// Appends the line at `distance` (mm) beside a course: positive to the left of the travel (towards positive y from
    /// positive x), negative to the right, 0 the course itself. It begins and ends square to the course's ends.
    ///
    /// Where the course bends more tightly than the distance, the line would run backwards and cross itself before and
    /// behind the bend. It is cut where it crosses itself, as long as that is within 12 distances of the bend (bends
    /// that turn by up to 170°); all that is left keeps its distance. At a hairpin that turns by more, the line goes
    /// straight from where it would turn back to where it would go on.
    ///
    /// One or two points for each of the course at the most. Linear, but for the search behind tight bends, whose whole
    /// work is bounded.
    static void CalcOffset(const tCourse& course, double distance, std::vector<CPoint>& line);
};
