// A drawing that only looks at what it is told.
#pragma once

#include "Drawing/CDrawing.h"
#include "KVUNum/Angles.h"
#include "Utilities/Geometry/UTrackCourse.h"

#include <cmath>
#include <string>
#include <vector>

class CRecordedDrawing : public CDrawing {
public:
    /// Points on the lines of the path, in the coordinates given; of curves and arcs several.
    const std::vector<tVector2D>& GetPoints() const { return mPoints; }
    /// Whether every number so far was finite, every width above 0, and every Save had its Restore.
    bool IsFinite() const { return mIsFinite && mDepth == 0; }

    void MoveTo(double x, double y) override { Add(x, y); }
    void LineTo(double x, double y) override { Add(x, y); }
    void CurveTo(double x1, double y1, double x2, double y2, double x, double y) override
    {
        const tVector2D from = mPoints.empty() ? tVector2D{x1, y1} : mPoints.back();
        Check({x1, y1, x2, y2});
        for (const double t : {0.25, 0.5, 0.75}) {
            const double u = 1 - t;
            Add(u * u * u * from.x + 3 * u * u * t * x1 + 3 * u * t * t * x2 + t * t * t * x,
                u * u * u * from.y + 3 * u * u * t * y1 + 3 * u * t * t * y2 + t * t * t * y);
        }
        Add(x, y);
    }
    void ArcTo(double centreX, double centreY, double radius, double start, double sweep) override
    {
        Check({centreX, centreY, radius, start, sweep});
        mIsFinite = mIsFinite && radius >= 0 && std::fabs(sweep) <= 360;
        for (int i = 0; i <= 8; ++i) {
            const double angle = (start + sweep * i / 8) * kRadiansPerDegree;
            Add(centreX + radius * std::cos(angle), centreY + radius * std::sin(angle));
        }
    }
    void ClosePath() override {}
    void Fill(const tPaint& paint, bool) override { Check({paint.red, paint.green, paint.blue, paint.alpha}); }
    void Stroke(const tPen& pen) override
    {
        Fill(pen.paint, false);
        Check({pen.width, pen.dashOffset});
        mIsFinite = mIsFinite && pen.width > 0;
        for (const double dash : pen.dash) {
            Check({dash});
            mIsFinite = mIsFinite && dash > 0;
        }
    }
    void Clip() override {}
    void Save() override { ++mDepth; }
    void Restore() override { --mDepth; }
    void Shift(double x, double y) override { Check({x, y}); }
    void Turn(double angle) override { Check({angle}); }
    void Scale(double factor) override
    {
        Check({factor});
        mIsFinite = mIsFinite && factor > 0;
    }
    void DrawText(const std::string&, double x, double y, const tTextLook& look) override
    {
        Check({x, y, look.size, look.halo});
        mIsFinite = mIsFinite && look.size > 0;
    }
    void MeasureText(const std::string& text, const tTextLook& look, double& width, double& height) override
    {
        width = static_cast<double>(text.size()) * look.size / 2;
        height = look.size;
    }

private:
    void Check(std::initializer_list<double> numbers)
    {
        for (const double number : numbers) {
            mIsFinite = mIsFinite && std::isfinite(number);
        }
    }
    void Add(double x, double y)
    {
        Check({x, y});
        mPoints.push_back({x, y});
    }

    std::vector<tVector2D> mPoints;
    bool mIsFinite = true;
    int mDepth = 0;
};
