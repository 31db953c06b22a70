// A polygon or a line of several points.
#pragma once

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "Utilities/Geometry/Point32.h"

#include <vector>

struct tTurn;

/// What a polygon once was drawn as; only carried. 1 is a free polygon.
using tPolyLegacySubType = int;

/// A polygon or polyline through points in component coordinates: relative to the item offset, before it is turned
/// about the middle of its points' box. Its joints are never used.
///
/// Editing one point leaves all others where they lie in the layout, however the polygon and its element are turned:
/// the item offset takes up what the middle moves. The element's box moves with its points; aligning it again is the
/// caller's business, as is placing its joints. Coordinates that no document can hold are brought to the nearest that
/// can. An edit that cannot be done (an index outside the list, too few points left) answers false and changes nothing.
class CPolyBIG : public CBasicGeometry {
public:
    CPolyBIG() = default;
    explicit CPolyBIG(CPolyBIG* source);
    /// Reads the raw record from behind its type code: the common record, number of points (int), x and y of each
    /// (doubles), close flag, second flag (bytes), legacy sub type, line thickness (ints). Heights are 0.
    explicit CPolyBIG(void* raw);
    /// Skips that record. @return false when it is cut short
    static bool SkipRaw(CRawWalk& walk);

    /// Points that every edit leaves.
    static constexpr int kFewestPoints = 2;
    /// How near to a point a click takes hold of it, mm.
    static constexpr double kHandleReach = 5.0;
    /// Ends closer than this meet, mm.
    static constexpr double kSamePlace = 0.01;

    void* GetParameterAsRaw(void* destination) override;
    int GetParameterRawSize() override;
    void TransferFields(CFieldStream& fields) override;

    /// The outline at half the trackbed width and `distance` more.
    void DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points) override;
    /// Appends the edge of an open line on its right and back on its left, with bevelled corners, or a closed polygon
    /// grown by `distance` all around. A single point is its own outline.
    void DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points) override;
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
    std::unique_ptr<CBasicGeometry> Clone() override { return std::make_unique<CPolyBIG>(this); }
    void Scale(double factor, bool scaleOffset) override;

    /// Places and shapes the polygon; its joints are disallowed and inactive, its gauge is 0.
    virtual void SpecifyPolyGeometry(double x, double y, const std::vector<CPoint>& points, double angle,
                                     int lineThickness, tPolyLegacySubType legacySubType);
    /// Fills `points` with the polygon's points turned by `angle` about their middle, in component coordinates.
    virtual void CalculateRotatedPointPositions(std::vector<CPoint>& points, double angle);
    virtual void GetPoints(std::vector<CPoint>& points) const { points = mPoints; }
    virtual const std::vector<CPoint>& GetPoints() const { return mPoints; }
    /// Takes over a list of points as it is, so that the polygon turns about the middle of the new box.
    virtual bool SetPoints(const std::vector<CPoint>& points);
    /// @return the point, or the origin for an index outside the list
    virtual CPoint GetPoint(int index) const;
    /// Where a point lies in the element, times `scale`: where a drawing of that scale has its handle.
    /// @return false for an index outside the list; `point` stays then
    virtual bool GetScaledRotatedPoint(CPoint& point, int index, double scale) const;
    virtual int GetNumberOfPoints() const { return static_cast<int>(mPoints.size()); }
    /// Appends a point, given in component coordinates.
    virtual bool AddPoint(const CPoint& point);
    /// Inserts a point halfway to the neighbour in front of a point or behind it. At the end of an open line the line
    /// is drawn out straight by half of its last edge.
    virtual bool InsertPointBefore(int index);
    virtual bool InsertPointAfter(int index);
    /// Inserts a point, given in component coordinates, so that it has that index.
    virtual bool InsertPointAtIdx(int index, const CPoint& point);
    /// Takes out a point, unless fewer than kFewestPoints would stay.
    virtual bool DelPoint(int index);
    /// Moves the point added or inserted last into a direction seen from its neighbour in front (from the one behind
    /// for the first point): "h" level with it, "v" straight above or below it, "d" the nearest multiple of 45°.
    /// @return false for any other text, or when there is no such point, or none any more
    virtual bool RestrictPolyPoint(const char* restriction);
    /// The handle that a click takes hold of: the nearest point within kHandleReach.
    /// @param point   in the element's coordinates
    /// @param handle  receives the place of that point in them, rounded
    /// @return the point's index, or -1
    virtual int PointIsCloseToHandle(const CPoint& point, Point32& handle) const;
    /// The rotation reference point as last asked for.
    virtual const CPoint& GetLastCenterPoint() const { return mSecondWorkPoint; }
    /// Mirror the unturned polygon about the middle of its box: left to right, or top to bottom.
    virtual void MirrorPointsHorizontally();
    virtual void MirrorPointsVertically();
    /// Takes over the points of another open line of the same kind, joined where two of their ends are nearest; ends
    /// that meet become one point, a gap becomes an edge. A line whose ends then meet is closed. The direction of this
    /// line stays. The other line is left as it is, but for what its far joint was connected to, which this one's joint
    /// there takes over. @return false when either is closed or empty
    virtual bool Merge(CPolyBIG* other);
    /// Turns the points by the component's own angle, which becomes 0, drops those that repeat their predecessor and
    /// lets their box begin at (0, 0). Nothing moves in the element.
    virtual void Normalize();
    /// Rounds the points to whole millimetres, halves upwards.
    virtual void RoundPointPositions();
    virtual void SetPolyCloseFlag(bool close) { mCloseFlag = close; }
    bool GetPolyCloseFlag() const { return mCloseFlag; }
    tPolyLegacySubType GetLegacySubType() const { return mLegacySubType; }
    /// From component coordinates into those of an element with that angle: about the middle, and to the item offset.
    tTurn Placing(double angle) const;
    /// Appends the points as they lie in an element of that angle.
    void AppendPlacedPoints(double angle, std::vector<CPoint>& points) const;

protected:
    static constexpr int kRawSizePerPoint = 16;
    /// Middle of the points' box in component coordinates; the origin without points.
    CPoint GetMiddle() const;
    /// Whether the last point joins the first.
    virtual bool IsClosed() const { return mCloseFlag; }
    /// Brings what depends on the points up to date.
    virtual void PointsChanged() {}
    /// What follows an edit once all lies where it stays.
    virtual void Edited() {}
    /// Changes the points that an edit wants to what may be.
    /// @param spare  by how much of itself a maximum may be exceeded
    /// @return false when nothing like it may be
    virtual bool Fit(std::vector<CPoint>& points, double spare) const;
    /// Whether a merged line may become that.
    virtual bool MayBecome(const std::vector<CPoint>&) const { return true; }
    /// The point halfway between two neighbours.
    virtual CPoint Halfway(size_t from, size_t to) const;
    /// The angle of the element that this component is part of; 0 without one.
    double GetElementAngle() const;
    /// Nearest handle among the points from `first` to before `last`.
    int FindHandle(const CPoint& point, int first, int last, Point32& handle) const;
    /// Replaces the points so that those that stay keep their place.
    bool Edit(std::vector<CPoint> points, double spare = 0.0);
    bool Insert(int index, const CPoint& point, double spare);
    bool IsIndex(int index) const { return index >= 0 && index < GetNumberOfPoints(); }

    std::vector<CPoint> mPoints;
    std::vector<CPoint>
        mRotatedPoints;    ///< the points turned by the component's own angle, where a component needs them
    int mEditedPoint = -1; ///< index of the point added or inserted last, or -1
    bool mCloseFlag = true;
    bool mSecondFlag = true; ///< not stored in files
    int mLineThickness = 1;
    tPolyLegacySubType mLegacySubType = 1;
    CPoint mSecondWorkPoint; ///< the rotation reference point as last asked for
};
