// The joints of the open layout and the snapping of those that lie on each other.
#pragma once

#include "CRect/DRect.h"

#include <unordered_set>
#include <vector>

class CCompositeGeometry;
class CJoint;
class CPoint;

/// Process-wide register of joints. The components own them: whoever destroys an element first takes its joints out.
/// Lengths in mm. One thread.
class CLayoutJointsManager {
public:
    /// The one object, made on first use and never destroyed.
    static CLayoutJointsManager* Instance();
    /// Connects close joints of the register: to each free joint, in ascending x, the first suitable one behind it that
    /// belongs to another element, lies within 0.5 in x, y and z, and faces the opposite way to 0.01 degrees.
    static void SnapCloseJoints();

    /// Sets the radius in which joints are searched: the track width by the preferences' factor, but at least 2.5.
    void SetSnapRadius(double trackWidth);
    double GetSnapRadius() const { return mSnapRadius; }

    void InsertJoint(CJoint* joint) { mJoints.push_back(joint); }
    /// Disconnects and unregisters the joints of an element. @return their number
    int RemoveJointsForItem(CCompositeGeometry* item);
    /// The same for several elements, in one pass.
    int RemoveJointsForItems(const std::unordered_set<CCompositeGeometry*>& items);
    bool IsEmpty() const { return mJoints.empty(); }
    void DisconnectAllJoints();

    /// The registered joint nearest to a point, heights included, of those in the snap area; the earlier of equally
    /// near ones; null when there is none.
    CJoint* FindJointClosestToPoint(const CPoint& point) const;
    /// Appends all registered joints in the snap area of a point.
    void FindAllJointsCloseToPoint(const CPoint& point, std::vector<CJoint*>& joints) const;
    /// The square around a point that is searched: the snap radius and 1 more on every side.
    void GetSnapArea(DRect& area, const CPoint& point) const;
    /// Index of the last registered free joint in the snap area of a joint that may be turned to fit it, or -1. The
    /// joint itself and its element are not left out.
    int FindUnsnappedJointCloseToJoint(const CJoint* joint) const;
    /// Whether two joints face each other within the preferences' angle.
    bool IsRotationValidForSnap(const CJoint* a, const CJoint* b) const;
    int GetNumberOfSnappedJoints() const;

private:
    CLayoutJointsManager();
    void privateSnapCloseJoints();
    template <typename tBelongs>
    int RemoveJoints(tBelongs belongs);

    std::vector<CJoint*> mJoints; ///< not owned
    double mSnapRadius = 0.0;

    static CLayoutJointsManager* mSingletonInstance;
};
