// Lays track, one piece after another.
#pragma once

#include "CPoint/CPoint.h"

#include <initializer_list>
#include <memory>
#include <vector>

class CCompositeGeometry;
class CPlan;
struct tArticle;

/// An open end of track: where it lies, and which way the next piece goes, in degrees clockwise from growing x.
struct tTrackEnd {
    CPoint place;
    double heading;
};

/// An arc of flexible track; a positive sweep, in degrees, turns right.
struct tArc {
    double radius;
    double sweep;
};

/// Builds a line of track from an open end on: each piece is turned and moved so that its joint meets the end, which
/// then moves on to the piece's other joint.
class CTrackLayer {
public:
    CTrackLayer(CPlan& plan, const tTrackEnd& start) : mPlan(plan), mEnd(start) {}

    const tTrackEnd& GetEnd() const { return mEnd; }
    /// The tracks from here on climb by this much per mm of their length; a negative slope descends. Only pieces with
    /// two joints can.
    void SetSlope(double slope) { mSlope = slope; }

    /// Straight pieces, or curves to the right.
    CTrackLayer& Lay(const tArticle& article, int count = 1);
    CTrackLayer& Right(const tArticle& curve, int count = 1) { return Lay(curve, count); }
    CTrackLayer& Left(const tArticle& curve, int count = 1);
    /// Straight pieces, the longest first, up to that x, as near as the shortest of them gets.
    CTrackLayer& LayUntil(double x);
    /// A turnout from its toe; goes on straight. @return the branch
    tTrackEnd LayTurnout(const tArticle& turnout);
    /// A turnout from its straight end; goes on behind its toe. @return the branch
    tTrackEnd LayTrailing(const tArticle& turnout);
    /// An article from one joint to another. @return its other joints, in their order
    std::vector<tTrackEnd> LayThrough(const tArticle& article, size_t entry, size_t exit);
    /// Flexible track along these arcs.
    CTrackLayer& LayFlexible(std::initializer_list<tArc> arcs);
    /// The article that ends the track.
    void Finish(const tArticle& article);

private:
    /// Joins an element's joint to the end and adds it to the plan. @return the ends of its other joints
    std::vector<tTrackEnd> Join(std::unique_ptr<CCompositeGeometry> element, size_t entry);

    CPlan& mPlan;
    tTrackEnd mEnd;
    double mSlope = 0.0;
};
