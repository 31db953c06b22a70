// What every component of an element has.
#pragma once

#include "BuildingBlocks/BasicGeometries/UComponentKinds.h"
#include "BuildingBlocks/CGradeVector.h"
#include "BuildingBlocks/CJoint.h"
#include "CBlockPool/CBlockPool.h"
#include "CColor/RGBColor.h"
#include "CPoint/CPoint.h"
#include "CRect/DRect.h"
#include "Formats/ElementFormat.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

class CFieldStream;

/// A piece of an element: its place in the element, its track dimensions, its colour and exactly two joints. Lengths
/// are mm, angles degrees. The element owns its components, a component owns its joints.
///
/// Geometry operations take the element's angle, which adds to the component's own;
/// points are in the element's coordinates.
class CBasicGeometry {
public:
    /// What DefineJoints places: also the absolute positions, or local points alone for track marks.
    static constexpr int kPlaceForConnection = 1;
    static constexpr int kPlaceForTrackMarks = 2;
    /// Bytes of the common raw record.
    static constexpr int kCommonRawSize = 60;
    /// Bytes of the type code in front of it.
    static constexpr int kTypeCodeSize = 4;

    CBasicGeometry();
    /// Copies what the source's getters give; positions and connections of the joints are not copied.
    explicit CBasicGeometry(CBasicGeometry* source);
    /// Reads the common raw record: host byte order, packed; offset x and y, gauge, angle (doubles), two allowed flags
    /// (bytes), trackbed and rail width (doubles), mid-rail flag (int), fixed colour (three 16-bit). Joints stay active
    /// as constructed.
    explicit CBasicGeometry(void* raw);
    CBasicGeometry(const CBasicGeometry&) = delete;
    virtual ~CBasicGeometry() = default;

    static void* operator new(size_t size) { return CBlockPool::Allocate(size); }
    static void* operator new(size_t size, const std::nothrow_t& tag) noexcept
    {
        return CBlockPool::Allocate(size, tag);
    }
    static void operator delete(void* block, size_t size) noexcept { CBlockPool::Release(block, size); }
    /// Copies as the copying constructor does, from the fields themselves.
    CBasicGeometry& operator=(const CBasicGeometry& source);

    /// Writes the raw record; a concrete component writes its type code, the common record and its own fields.
    /// @return the position behind it
    virtual void* GetParameterAsRaw(void* destination);
    virtual int GetParameterRawSize() { return kCommonRawSize; }
    /// Passes the fields that the copying constructor reads.
    virtual void TransferFields(CFieldStream& fields);
    /// Appends the area that a click or a collision tests, widened by `distance` on every side; nothing by default.
    virtual void DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points);
    /// The outline with the heights of a grade.
    virtual void DefineTrackItemOutlineAndHeight(double angle, double distance, CGradeVector& grade,
                                                 std::vector<CPoint>& points);
    /// Appends the closed outline at `distance` from the centre line; nothing by default.
    virtual void DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points);
    /// One line for people; lengths in measure unit `unit`.
    virtual std::string ToString(int unit) = 0;
    /// Ends of the cross marks at joint 0 (a1, a2) and joint 1 (b1, b2).
    virtual void CalcTrackMarks(double angle, CPoint& a1, CPoint& a2, CPoint& b1, CPoint& b2);
    virtual void CalcTrackMarks(double angle, CGradeVector& grade, CPoint& a1, CPoint& a2, CPoint& b1, CPoint& b2);
    /// Half the length of a cross mark.
    virtual double CalcTrackMarkerWidth() { return mTrackbedWidth * 0.5; }
    /// The smallest upright rectangle around the component at that angle of its element.
    virtual void CalcBoundingBox(DRect& box, double angle) = 0;
    /// A point that is fixed to the component, as last placed.
    virtual CPoint& GetRotationReferencePoint(double angle);
    /// Places both joints.
    /// @param origin  the element's position, added to the local points for kPlaceForConnection
    virtual void DefineJoints(const CPoint& origin, double angle, const CGradeVector& grade, int mode) = 0;
    virtual CJoint* GetJoint(int i) { return &mJoints[i]; }
    /// Replaces `joints` by both joints, disabled ones included, placed anew if `recalculate` is set.
    virtual void GetJoints(const CPoint& origin, double angle, const CGradeVector& grade, std::vector<CJoint*>& joints,
                           bool recalculate);
    /// Moves the component so that joint i lies at (x, y) of an unturned element.
    virtual void SetJointPos(int i, double x, double y);
    virtual void GetJointPos(int i, double& x, double& y);
    virtual CJoint* GetJointConnection(int i) { return mJoints[i].GetPartner(); }
    virtual bool IsJointAllowed(short i) { return mJointAllowed[i]; }
    virtual void DisableJoint(short i) { mJointAllowed[i] = false; }
    virtual void EnableJoint(short i) { mJointAllowed[i] = true; }
    virtual int GetType() const = 0;
    /// Centre of the box; z stays.
    virtual void GetCenter(CPoint& centre, double angle);
    /// Moves the component so that its box in an unturned element is centred there.
    virtual void SetCenter(CPoint& centre);
    virtual void SetCenter(double x, double y);
    virtual void MoveItemBy(double dx, double dy)
    {
        mItemXOffset += dx;
        mItemYOffset += dy;
    }
    virtual double GetRailWidth() { return mRailWidth; }
    virtual void SetRailWidth(double width) { mRailWidth = width; }
    virtual double GetGauge() { return mGauge; }
    virtual void SetGauge(double gauge) { mGauge = gauge; }
    virtual double GetTrackbedWidth() { return mTrackbedWidth; }
    virtual void SetTrackbedWidth(double width) { mTrackbedWidth = width; }
    virtual double GetItemXOffset() { return mItemXOffset; }
    virtual double GetItemYOffset() { return mItemYOffset; }
    virtual void GetItemOffset(CPoint& offset) { offset.SetPos(mItemXOffset, mItemYOffset); }
    virtual void SetItemXOffset(double x) { mItemXOffset = x; }
    virtual void SetItemYOffset(double y) { mItemYOffset = y; }
    /// Non-zero when the track has a middle rail.
    virtual int GetMidRailFlag() const { return mMidRailFlag; }
    virtual void SetMidRailFlag(int flag) { mMidRailFlag = flag; }
    virtual void GetFixedColor(RGBColor& color) { color = mFixedColor; }
    virtual void SetFixedColor(RGBColor& color) { mFixedColor = color; }
    /// Only lines have a thickness.
    virtual int GetLineThickness() const { return 0; }
    virtual void SetLineThickness(int thickness);
    virtual void SetAngle(double angle) { mAngle = angle; }
    virtual double GetAngle() { return mAngle; }
    /// Length of the centre line, mm.
    virtual double GetTrackLength() { return mTrackLength; }
    /// Reads the common block, keys 301 to 310; a record that is missing leaves its field.
    /// @param version  of the element record; 3 and 4 are known
    /// @return false for another version, with nothing read
    virtual bool Load(FILE* file, int version);
    virtual void Save(FILE* file);
    /// A copy, as the copying constructor makes it; null for a class that has none.
    virtual std::unique_ptr<CBasicGeometry> Clone() { return nullptr; }
    /// Multiplies the size of all that is drawn, and the item offset if the flag is set. Rails keep their width. Only a
    /// circle takes a factor that is no scale.
    virtual void Scale(double factor, bool scaleOffset);
    /// The box of the component as it lies in an element of that angle. Only a text's differs from CalcBoundingBox.
    virtual void CalcPlacedBox(DRect& box, double angle);

    /// Whether sizes may be multiplied by this: positive,
    /// and neither it nor its inverse larger than a document reaches.
    static bool IsScale(double factor);
    /// Makes an element the owner of both joints.
    void SetJointOwner(CCompositeGeometry* owner);

protected:
    /// A component's own fields in raw memory that starts with the common record.
    static const void* BehindCommonRecord(const void* raw) { return static_cast<const char*>(raw) + kCommonRawSize; }
    /// True for the element versions whose component records are known.
    static bool IsKnownVersion(int version)
    {
        return version >= ElementFormat::kOldestVersion && version <= ElementFormat::kCurrentVersion;
    }
    /// Reports a record version that `function` does not know.
    static void WarnUnsupported(const char* function, int version);
    /// A whole size, mm or points, multiplied and rounded; one above 0 stays so.
    static int ScaledSize(int size, double factor);
    /// Allows or disallows both joints, active as allowed.
    void AllowJoints(bool joint0, bool joint1);
    /// Last step of placing: heights of the local points, and for kPlaceForConnection their absolute positions.
    void FinishJoints(const CPoint& origin, const CGradeVector& grade, int mode);

    double mItemXOffset = 0.0;
    double mItemYOffset = 0.0;
    double mGauge = 0.0;
    double mTrackbedWidth = 0.0;
    double mRailWidth = 0.0;
    double mAngle = 0.0;
    double mTrackLength = 0.0;
    int mMidRailFlag = 1;
    RGBColor mFixedColor = {0, 0, 0};
    bool mJointAllowed[2] = {true, true};
    CJoint mJoints[2];

private:
    auto CommonFields();
};
