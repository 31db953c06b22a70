// A circle.
#pragma once

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"

/// A circle of the first of its two radii; the second is only carried. Its joints are never used.
class COvalBIG : public CBasicGeometry {
public:
    COvalBIG() = default;
    explicit COvalBIG(COvalBIG* source);
    /// Reads the raw record from behind its type code: the common record, both radii (doubles), line thickness (int).
    explicit COvalBIG(void* raw);
    /// Skips that record. @return false when it is cut short
    static bool SkipRaw(CRawWalk& walk);

    /// Places and dimensions the circle; its joints are disallowed and inactive, its gauge is 0.
    void SpecifyOvalGeometry(double xOffset, double yOffset, double radius, int lineThickness);
    double GetRadX() const { return mRadiusX; }
    double GetRadY() const { return mRadiusY; }

    void* GetParameterAsRaw(void* destination) override;
    int GetParameterRawSize() override { return kCommonRawSize + 24; }
    void TransferFields(CFieldStream& fields) override;
    std::string ToString(int unit) override;
    /// The square around the circle, with its left top corner at the item offset at any angle.
    void CalcBoundingBox(DRect& box, double angle) override;
    /// The centre.
    CPoint& GetRotationReferencePoint(double angle) override;
    void DefineJoints(const CPoint&, double, const CGradeVector&, int) override {}
    int GetType() const override { return kOvalType; }
    int GetLineThickness() const override { return mLineThickness; }
    void SetLineThickness(int thickness) override { mLineThickness = thickness; }
    /// Common block, keys 315 and 316 the radii, key 317 the line thickness.
    bool Load(FILE* file, int version) override;
    void Save(FILE* file) override;
    std::unique_ptr<CBasicGeometry> Clone() override { return std::make_unique<COvalBIG>(this); }
    void Scale(double factor, bool scaleOffset) override;

private:
    int mLineThickness = 1;
    double mRadiusX = 50.0;
    double mRadiusY = 50.0;
    CPoint mCentre;
};
