// A straight piece of track.
#pragma once

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"

/// A straight track. Its joints lie on a line that runs the gauge beside the item offset; it turns about the middle of
/// that line.
class CStraightBIG : public CBasicGeometry {
public:
    CStraightBIG() = default;
    explicit CStraightBIG(CStraightBIG* source);
    /// Reads the raw record from behind its type code: the common record and the length (double).
    explicit CStraightBIG(void* raw);
    /// Skips that record. @return false when it is cut short
    static bool SkipRaw(CRawWalk& walk);

    /// Places and dimensions the track; joints are active where they are allowed.
    void SpecifyStraightGeometry(double xOffset, double yOffset, double length, double angle, double gauge,
                                 double trackbedWidth, bool joint0Allowed, bool joint1Allowed);
    double GetLength() const { return mLength; }

    void* GetParameterAsRaw(void* destination) override;
    int GetParameterRawSize() override { return kTypeCodeSize + kCommonRawSize + 8; }
    void TransferFields(CFieldStream& fields) override;
    void DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points) override;
    /// Appends the four corners, counter-clockwise from joint 0's right side.
    void DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points) override;
    std::string ToString(int unit) override;
    /// The box of both end marks.
    void CalcBoundingBox(DRect& box, double angle) override;
    void DefineJoints(const CPoint& origin, double angle, const CGradeVector& grade, int mode) override;
    int GetType() const override { return kStraightType; }
    /// Common block and key 311, the length.
    bool Load(FILE* file, int version) override;
    void Save(FILE* file) override;
    std::unique_ptr<CBasicGeometry> Clone() override { return std::make_unique<CStraightBIG>(this); }
    void Scale(double factor, bool scaleOffset) override;

private:
    double mLength = 0.0;
};
