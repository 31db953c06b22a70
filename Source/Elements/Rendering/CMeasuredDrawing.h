// What a drawing would cost.
#pragma once

#include "Drawing/CDrawing.h"
#include "Utilities/Geometry/UTrackCourse.h"

#include <bitset>
#include <map>
#include <tuple>
#include <vector>

/// Draws nothing, but adds up what a picture would take for it. Both figures err upwards.
class CMeasuredDrawing final : public CDrawing {
public:
    /// @param scale       device units for one unit of the drawing
    /// @param isScalable  the picture keeps paths (SVG, PDF) and sets no pixels
    CMeasuredDrawing(double scale, bool isScalable) : mScale(scale), mIsScalable(isScalable) {}

    /// Adds up from 0 again. Letters that were described before still are.
    void Restart() { mBytes = mWork = 0.0; }

    /// Bytes of SVG; PDF takes fewer.
    double GetBytes() const { return mBytes; }
    /// Time, in nanoseconds of a desktop of about 2020; days for a path too large to be in memory as a whole.
    double GetWork() const { return mWork; }

    void MoveTo(double x, double y) override;
    void LineTo(double x, double y) override;
    void CurveTo(double x1, double y1, double x2, double y2, double x, double y) override;
    void ArcTo(double centreX, double centreY, double radius, double start, double sweep) override;
    void ClosePath() override;
    void Fill(const tPaint& paint, bool keepPath) override;
    void Stroke(const tPen& pen) override;
    void Clip() override { ForgetPath(); }
    void Save() override { mScales.push_back(mScale); }
    void Restore() override;
    void Shift(double, double) override {}
    void Turn(double angle) override { mAngle = angle; }
    void Scale(double factor) override { mScale *= factor; }
    void DrawText(const std::string& text, double x, double y, const tTextLook& look) override;
    void MeasureText(const std::string& text, const tTextLook& look, double& width, double& height) override;

private:
    void AddPoint(tVector2D point, double length);
    void AddBytes(double bytes);
    void AddEdges(double pixels, bool isCoarse);
    void ForgetPath();

    double mScale;
    bool mIsScalable;
    double mAngle = 0.0;
    std::vector<double> mScales;
    double mBytes = 0.0;
    double mWork = 0.0;
    /// Letters that look alike are described once: which were, by font, size and angle.
    std::map<std::tuple<std::string, double, double>, std::bitset<256>> mLetters;

    // The path at hand, in units of the drawing.
    double mPathBytes = 0.0;
    double mSegments = 0.0;
    double mLength = 0.0;
    double mPieces = 0.0;
    tVector2D mStart = {};
    tVector2D mAt = {};
    tVector2D mLow = {};
    tVector2D mHigh = {};
};
