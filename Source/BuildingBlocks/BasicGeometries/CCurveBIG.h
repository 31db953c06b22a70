// A piece of track along a circular arc.
#pragma once

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "Utilities/Geometry/UArcGeometry.h"

/// A curved track. Its joints lie on the arc of its radius plus its gauge, which is laid so that the box of the
/// trackbed begins at the item offset at its left and top, whatever the angle. From joint 0 the track turns towards
/// growing angles, with a negative arc angle towards falling ones.
class CCurveBIG : public CBasicGeometry {
public:
    CCurveBIG();
    explicit CCurveBIG(CCurveBIG* source);
    /// Reads the raw record from behind its type code: the common record, radius and arc angle (doubles).
    explicit CCurveBIG(void* raw);
    /// Skips that record. @return false when it is cut short
    static bool SkipRaw(CRawWalk& walk);

    /// Places and dimensions the track; joints are active where they are allowed. Mind the order: radius and arc angle
    /// come before the angle.
    void SpecifyCurveGeometry(double xOffset, double yOffset, double radius, double arcAngle, double angle,
                              double gauge, double trackbedWidth, bool joint0Allowed, bool joint1Allowed);
    double GetItemRadius() const { return mRadius; }
    double GetItemArcAngle() const { return mArcAngle; }

    void* GetParameterAsRaw(void* destination) override;
    int GetParameterRawSize() override { return kTypeCodeSize + kCommonRawSize + 16; }
    void TransferFields(CFieldStream& fields) override;
    void DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points) override;
    /// Appends the right edge from joint 0 to joint 1 (the outer one of a positive arc) and the left edge back, in
    /// steps whose chords stay within 0.05 mm of the arc (UTrackCourse::kFlatness), but 720 of them at the most.
    void DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points) override;
    std::string ToString(int unit) override;
    /// The box of the arc at half the trackbed width on either side.
    void CalcBoundingBox(DRect& box, double angle) override;
    void DefineJoints(const CPoint& origin, double angle, const CGradeVector& grade, int mode) override;
    int GetType() const override { return kCurveType; }
    /// Common block, key 312 the radius, key 313 the arc angle.
    bool Load(FILE* file, int version) override;
    void Save(FILE* file) override;
    std::unique_ptr<CBasicGeometry> Clone() override { return std::make_unique<CCurveBIG>(this); }
    void Scale(double factor, bool scaleOffset) override;

private:
    /// Track length = radius × arc; the gauge does not count.
    void UpdateCurvedRailLength();
    tTravelledArc JointArc(double angle) const;
    /// Computes both end points into the scratch points. @return the centre of the arc
    CPoint GetOffsetForLeftTopAlignedCurve(double angle);
    void CurveInternalDefJoints();

    double mRadius = 360.0;
    double mArcAngle = 15.0;
    CPoint mFirstEnd;
    CPoint mSecondEnd;
};
