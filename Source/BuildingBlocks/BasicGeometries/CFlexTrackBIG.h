// A flexible track.
#pragma once

#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "Utilities/Geometry/UTrackCourse.h"

/// A track along a smooth curve through the points of a polygon, from its first point to its last, with a joint at
/// either end. It turns about the middle of its points like a polygon, and is never closed.
///
/// Edits respect the maximum length as the real thing does: a track that is bent more, or pulled, beyond it draws back
/// its last end along its course; its first end when that is the one being pulled, or the only one that is free. With
/// both ends connected it moves as far as its length allows, and takes no point that needs more. A point inserted
/// halfway may lengthen it a little. A track that a document made longer may stay as long, but no edit makes it grow. A
/// maximum that is not positive bounds nothing.
///
/// An edit places both joints anew, and frees one that has left its partner.
class CFlexTrackBIG : public CPolyBIG {
public:
    CFlexTrackBIG();
    explicit CFlexTrackBIG(CFlexTrackBIG* source);
    /// Reads the raw record from behind its type code: a polygon's whole record with its code,
    /// and the maximum length (double).
    explicit CFlexTrackBIG(void* raw);
    /// Skips that record. @return false when it is cut short
    static bool SkipRaw(CRawWalk& walk);

    void* GetParameterAsRaw(void* destination) override;
    int GetParameterRawSize() override { return CPolyBIG::GetParameterRawSize() + kTypeCodeSize + 8; }
    void TransferFields(CFieldStream& fields) override;
    /// The outline at half the trackbed width and `distance` more.
    void DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points) override;
    /// Appends the right edge from joint 0 to joint 1 and the left edge back, both cut where they would cross
    /// themselves in a bend tighter than the distance (UTrackCourse::CalcOffset). Nothing without two different points.
    void DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points) override;
    std::string ToString(int unit) override;
    /// The box of the curve at half the trackbed width on either side.
    void CalcBoundingBox(DRect& box, double angle) override;
    void DefineJoints(const CPoint& origin, double angle, const CGradeVector& grade, int mode) override;
    int GetType() const override { return kFlexTrackType; }
    /// Length of the curve, measured when it is first asked for.
    double GetTrackLength() override;
    /// A second key 300 with the polygon's code, the polygon's records, key 314 the maximum length (double).
    bool Load(FILE* file, int version) override;
    void Save(FILE* file) override;
    std::unique_ptr<CBasicGeometry> Clone() override { return std::make_unique<CFlexTrackBIG>(this); }

    void SpecifyPolyGeometry(double x, double y, const std::vector<CPoint>& points, double angle, int lineThickness,
                             tPolyLegacySubType legacySubType) override;
    /// An end that is connected is no handle: its neighbour holds it.
    int PointIsCloseToHandle(const CPoint& point, Point32& handle) const override;
    /// Multiplies the maximum length too: the same article in another scale.
    void Scale(double factor, bool scaleOffset) override;
    /// Changes nothing: a track has two ends, and rails are as thick as they are.
    void SetPolyCloseFlag(bool) override {}
    void SetLineThickness(int) override {}
    void SetAngle(double angle) override;

    /// Places a track and allows both joints.
    /// @param maxLength  the longest piece that one article gives, mm
    void SpecifyFlexGeometry(double x, double y, const std::vector<CPoint>& points, double angle, double trackbedWidth,
                             double maxLength);
    double GetFlexTrackMaxLength() const { return mMaxLength; }
    /// Appends the centre line in the element's coordinates, for lines up to `reach` (mm) beside it.
    void DefineCourse(double angle, double reach, tCourse& course) const;
    /// Brings what is known of the curve up to date with the points.
    virtual void CalcBezierCurve();

protected:
    bool IsClosed() const override { return false; }
    void PointsChanged() override { CalcBezierCurve(); }
    void Edited() override;
    bool Fit(std::vector<CPoint>& points, double spare) const override;
    bool MayBecome(const std::vector<CPoint>& points) const override;
    /// On the curve, so that a point more does not change it much.
    CPoint Halfway(size_t from, size_t to) const override;

private:
    /// How long an edit may leave the track.
    double GetLengthLimit() const;
    /// Cuts the list of points where their curve is that long, from the first of them on.
    static void DrawBack(std::vector<CPoint>& points, double limit);
    /// Goes from the points towards as many wanted ones as far as that length allows.
    void GoTowards(std::vector<CPoint>& wanted, double limit) const;
    /// Whether an end is connected, and stays where it is.
    bool IsHeld(int joint, const CPoint& wanted) const;

    static constexpr double kLengthUnknown = -1.0;

    double mMaxLength = 500.0;
    double mStartAngle = 0.0; ///< direction of travel at the first point, degrees, before turning
    double mEndAngle = 0.0;
};
