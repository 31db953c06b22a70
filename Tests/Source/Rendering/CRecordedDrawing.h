// A drawing that only looks at what it is told.
#pragma once

#include "Drawing/CDrawing.h"

#include <cmath>
#include <string>

class CRecordedDrawing : public CDrawing {
public:
    /// Whether every number so far was finite, every width above 0, and every Save had its Restore.
    bool IsFinite() const { return mIsFinite && mDepth == 0; }

    void MoveTo(double x, double y) override { Check({x, y}); }
    void LineTo(double x, double y) override { Check({x, y}); }
    void CurveTo(double x1, double y1, double x2, double y2, double x, double y) override
    {
        Check({x1, y1, x2, y2, x, y});
    }
    void ArcTo(double centreX, double centreY, double radius, double start, double sweep) override
    {
        Check({centreX, centreY, radius, start, sweep}, radius >= 0 && std::fabs(sweep) <= 360);
    }
    void ClosePath() override {}
    void Fill(const tPaint& paint, bool) override { Check({paint.red, paint.green, paint.blue, paint.alpha}); }
    void Stroke(const tPen& pen) override
    {
        Fill(pen.paint, false);
        Check({pen.width, pen.dashOffset}, pen.width > 0);
        for (const double dash : pen.dash) {
            Check({dash}, dash > 0);
        }
    }
    void Clip() override {}
    void Save() override { ++mDepth; }
    void Restore() override { --mDepth; }
    void Shift(double x, double y) override { Check({x, y}); }
    void Turn(double angle) override { Check({angle}); }
    void Scale(double factor) override { Check({factor}, factor > 0); }
    void DrawText(const std::string&, double x, double y, const tTextLook& look) override
    {
        Check({x, y, look.size, look.halo}, look.size > 0);
    }
    void MeasureText(const std::string& text, const tTextLook& look, double& width, double& height) override
    {
        width = static_cast<double>(text.size()) * look.size / 2;
        height = look.size;
    }

private:
    void Check(std::initializer_list<double> numbers, bool isSound = true)
    {
        mIsFinite = mIsFinite && isSound;
        for (const double number : numbers) {
            mIsFinite = mIsFinite && std::isfinite(number);
        }
    }

    bool mIsFinite = true;
    int mDepth = 0;
};
