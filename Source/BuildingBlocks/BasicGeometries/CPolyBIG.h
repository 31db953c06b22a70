// A polygon or a line of several points.
#pragma once

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"

#include <vector>

/// What a polygon once was drawn as; only carried. 1 is a free polygon.
using tPolyLegacySubType = int;

/// A polygon or polyline through points in component coordinates: relative to the item offset, before it is turned
/// about the middle of its points' box. Its joints are never used.
class CPolyBIG : public CBasicGeometry {
public:
    CPolyBIG() = default;
    explicit CPolyBIG(CPolyBIG* source);
    /// Reads the raw record from behind its type code: the common record, number of points (int), x and y of each
    /// (doubles), close flag, second flag (bytes), legacy sub type, line thickness (ints). Heights are 0.
    explicit CPolyBIG(void* raw);

    void* GetParameterAsRaw(void* destination) override;
    int GetParameterRawSize() override;
    std::string ToString(int unit) override;
    /// The box of all edges at half the trackbed width on either side; without points the item offset alone.
    void CalcBoundingBox(DRect& box, double angle) override;
    /// The middle about which the polygon turns.
    CPoint& GetRotationReferencePoint(double angle) override;
    void DefineJoints(const CPoint&, double, const CGradeVector&, int) override {}
    int GetType() const override { return kPolyType; }
    int GetLineThickness() const override { return mLineThickness; }
    void SetLineThickness(int thickness) override { mLineThickness = thickness; }
    /// Common block, 318 number of points (int), for each 319 x and 320 y (doubles), 321 close flag (bool), 322 legacy
    /// sub type, 323 line thickness (ints). The list of points ends where the stream does.
    bool Load(FILE* file, int version) override;
    void Save(FILE* file) override;

    /// Places and shapes the polygon; its joints are disallowed and inactive, its gauge is 0.
    virtual void SpecifyPolyGeometry(double x, double y, const std::vector<CPoint>& points, double angle,
                                     int lineThickness, tPolyLegacySubType legacySubType);
    /// Fills `points` with the polygon's points turned by `angle` about their middle, in component coordinates.
    virtual void CalculateRotatedPointPositions(std::vector<CPoint>& points, double angle);
    virtual void GetPoints(std::vector<CPoint>& points) const { points = mPoints; }
    virtual const std::vector<CPoint>& GetPoints() const { return mPoints; }
    virtual void SetPoints(const std::vector<CPoint>& points) { mPoints = points; }
    /// @return the point, or the origin for an index outside the list
    virtual CPoint GetPoint(int index) const;
    virtual int GetNumberOfPoints() const { return static_cast<int>(mPoints.size()); }
    virtual void AddPoint(const CPoint& point) { mPoints.push_back(point); }
    virtual void SetPolyCloseFlag(bool close) { mCloseFlag = close; }
    bool GetPolyCloseFlag() const { return mCloseFlag; }
    tPolyLegacySubType GetLegacySubType() const { return mLegacySubType; }

protected:
    static constexpr int kRawSizePerPoint = 16;
    /// Middle of the points' box in component coordinates; the origin without points.
    CPoint GetMiddle() const;

    std::vector<CPoint> mPoints;
    std::vector<CPoint>
        mRotatedPoints;     ///< the points turned by the component's own angle, where a component needs them
    CPoint mFirstWorkPoint; ///< for point editing
    bool mCloseFlag = true;
    bool mSecondFlag = true; ///< not stored in files
    int mLineThickness = 1;
    tPolyLegacySubType mLegacySubType = 1;
    CPoint mSecondWorkPoint; ///< for point editing; the rotation reference point as last asked for
};
