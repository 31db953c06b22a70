// How elements are joined.
#pragma once

#include <utility>
#include <vector>

class CCompositeGeometry;
class CJoint;

/// Answers questions about the joints of an element and the tracks behind a joint; changes nothing. A joint that is not
/// active is connected. The order of joints is that of CCompositeGeometry::GetJoints, all allowed ones included, and
/// their positions are those last placed. Elements and joints in vectors are never owned.
class UElementJointQueries {
public:
    UElementJointQueries() = delete;

    using tElements = std::vector<CCompositeGeometry*>;
    using tJoints = std::vector<CJoint*>;
    /// An element and the joint of it through which it was reached.
    using tTrack = std::pair<CCompositeGeometry*, CJoint*>;

    /// The joint with the smallest or largest x, the earliest of equal ones; null without joints.
    static CJoint* GetJointWithMinX(CCompositeGeometry* element);
    static CJoint* GetJointWithMinX(const tJoints& joints);
    static CJoint* GetJointWithMaxX(CCompositeGeometry* element);
    static CJoint* GetJointWithMaxX(const tJoints& joints);
    /// The other joint of the same component, be it allowed or not; null when no component of the joint's owner has it.
    static CJoint* GetOppositeJoint(const CJoint* joint);

    /// For an element at the end of a chain: the index of the joint behind its connected one, the first one behind the
    /// last. Looks no further than that joint, so connected joints apart from each other pass unnoticed.
    /// @return -1 without joints; -1 after a warning when no joint, or the next one too, is connected
    static int GetNextConnectedJointIdx(CCompositeGeometry* element);
    static int GetNumberOfJoints(CCompositeGeometry* element);
    static int GetNumberOfConnectedJoints(CCompositeGeometry* element);
    static int GetNumberOfUnconnectedJoints(CCompositeGeometry* element);
    /// Null when every joint is free.
    static CJoint* GetFirstConnectedJoint(CCompositeGeometry* element);
    /// The joint's place among the element's joints, or -1.
    static int GetIndexOfJointInElementJointVector(CCompositeGeometry* element, const CJoint* joint);
    /// Appends each connected joint to `own` and its partner, which may be null, to `partners`.
    static void GetJointConnections(CCompositeGeometry* element, tJoints& own, tJoints& partners);
    /// Appends the connected joints.
    static void GetConnectedJoints(CCompositeGeometry* element, tJoints& out);
    /// Replaces `out` by all joints but one.
    static void ExcludeJointFromJointVector(const tJoints& joints, const CJoint* excluded, tJoints& out);

    /// Replaces `out` by the tracks behind a joint, the nearest ones first, each once for every joint through which it
    /// is reached; the walk never enters the joint's own element. It also goes back: a track that leads further comes
    /// once more two levels on, with the joint at which it leads further. Within a level the joints found last are
    /// followed first.
    ///
    /// Ends the process when a joint has no owner.
    static void GetAllTracksWithJointsConnectedToJoint(CJoint* joint, std::vector<tTrack>& out);
    /// The elements that GetAllTracksWithJointsConnectedToJoint finds, each as often as it finds them.
    static void GetAllTracksConnectedToJoint(CJoint* joint, tElements& out);
};
