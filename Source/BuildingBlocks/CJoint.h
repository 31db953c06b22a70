// A connection point of a track component.
#pragma once

#include "CPoint/CPoint.h"

#include <cmath>

class CCompositeGeometry;

/// Mark that an operation puts on a joint; 0 is none, everything else highlights it.
using tJointOpFlag = unsigned short;

/// One of the two joints of a component: where it lies, where it faces, and what it is connected to. Refers to its
/// owner and partner without owning them; a joint that dies frees its partner.
class CJoint {
public:
    /// How far joints that are connected may lie apart along each axis, mm.
    static constexpr double kSnapTolerance = 0.5;
    /// What CalculateTrackMarkEndpoints marks: this value the local point, every other the absolute position.
    static constexpr int kMarkLocalPoint = 2;

    CJoint() = default;
    CJoint(const CJoint&) = delete;
    ~CJoint();
    /// Takes over all but the local point, which becomes the source's position:
    /// a component that needs it places it anew.
    CJoint& operator=(const CJoint& source);

    /// Links both joints to each other. An old partner of either one is not told.
    void ConnectToJoint(CJoint* other);
    /// Frees this joint and its partner, if any.
    void DisconnectJoint();

    /// True while the joint is free.
    bool IsActive() const { return mActive; }
    void Activate() { mActive = true; }
    void Deactivate() { mActive = false; }
    void SetActiveTo(bool active) { mActive = active; }

    /// True when the two joints face exactly opposite ways, to within 0.01 degrees.
    bool AppropriateAngleForConnection(const CJoint& other) const;
    /// Whether the positions are close enough for a connection, heights included.
    bool LiesAt(const CJoint& other) const;
    /// Distance of the positions in the drawing plane, mm; heights are ignored.
    double DistanceToJoint(const CJoint& other) const;
    /// Ends of the cross line of length 2 × `halfWidth` through the joint, perpendicular to its direction.
    /// @param which  kMarkLocalPoint for a line through the local point, anything else for one through the position
    void CalculateTrackMarkEndpoints(int which, double halfWidth, CPoint& a, CPoint& b) const;

    /// Marks the joint. The class-wide count goes up for a mark and down for none, whatever the joint bore before:
    /// callers pair SetFlag with ClearFlag.
    void SetFlag(tJointOpFlag flag);
    void ClearFlag();
    tJointOpFlag GetFlag() const { return mOpFlag; }
    static void IncNumberOfHighlightedJoints() { ++sNumHiLiteJoints; }
    static void DecNumberOfHighlightedJoints() { --sNumHiLiteJoints; }
    /// Highlighted joints of the process; goes below zero when marks are cleared that were never set.
    static int sNumHiLiteJoints;

    /// Direction of travel into the component, degrees, not normalised.
    double GetAngle() const { return mAngle; }
    void SetAngle(double angle) { mAngle = angle; }
    /// Sets fmod(angle, 360), for which most angles need no division.
    void SetReducedAngle(double angle) { mAngle = angle > -360.0 && angle < 360.0 ? angle : std::fmod(angle, 360.0); }
    bool GetComponentFlag() const { return mComponentFlag; }
    void SetComponentFlag(bool flag) { mComponentFlag = flag; }
    /// Absolute position in the layout, mm, as last placed.
    const CPoint& GetPosition() const { return mPosition; }
    CPoint& GetPosition() { return mPosition; }
    /// Point relative to the element's position, mm, as last placed.
    const CPoint& GetLocalPoint() const { return mLocalPoint; }
    CPoint& GetLocalPoint() { return mLocalPoint; }
    CCompositeGeometry* GetOwner() const { return mOwner; }
    void SetOwner(CCompositeGeometry* owner) { mOwner = owner; }
    CJoint* GetPartner() const { return mPartner; }

private:
    double mAngle = 0.0;
    bool mComponentFlag = true;
    CPoint mPosition;
    CPoint mLocalPoint;
    CCompositeGeometry* mOwner = nullptr;
    CJoint* mPartner = nullptr;
    bool mActive = true;
    tJointOpFlag mOpFlag = 0;
};
