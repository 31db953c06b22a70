// A drawing that only looks at what it is told.
#pragma once

#include "Drawing/CDrawing.h"

#include <cmath>
#include <initializer_list>
#include <string>
#include <vector>

class CRecordedDrawing : public CDrawing {
public:
    /// Farthest from the origin, in device units, that the drawing library's numbers of 24 bits before the point reach.
    static constexpr double kFarthest = 8388608.0;

    /// Whether every number so far was finite, every point within reach, every width above 0, and every Save had its
    /// Restore.
    bool IsSound() const { return mWrong.empty() && mKept.empty(); }
    /// The numbers of the first call that was not sound.
    const std::string& GetWrong() const { return mWrong; }

    void MoveTo(double x, double y) override { CheckPoint(x, y); }
    void LineTo(double x, double y) override { CheckPoint(x, y); }
    void CurveTo(double x1, double y1, double x2, double y2, double x, double y) override
    {
        CheckPoint(x1, y1);
        CheckPoint(x2, y2);
        CheckPoint(x, y);
    }
    void ArcTo(double centreX, double centreY, double radius, double start, double sweep) override
    {
        Check({centreX, centreY, radius, start, sweep}, radius >= 0 && std::fabs(sweep) <= 360);
        for (const double angle : {start, start + sweep}) {
            CheckPoint(centreX + radius * std::cos(angle * Platform::kRadiansPerDegree),
                       centreY + radius * std::sin(angle * Platform::kRadiansPerDegree));
        }
    }
    void ClosePath() override {}
    void Fill(const tPaint& paint, bool) override
    {
        for (const double part : {paint.red, paint.green, paint.blue, paint.alpha}) {
            Check({part}, part >= 0 && part <= 1);
        }
    }
    void Stroke(const tPen& pen) override
    {
        Fill(pen.paint, false);
        Check({pen.width, pen.dashOffset}, pen.width > 0);
        for (const double dash : pen.dash) {
            Check({dash}, dash > 0);
        }
    }
    void Clip() override {}
    void Save() override { mKept.push_back(mTransform); }
    void Restore() override
    {
        Check({}, !mKept.empty());
        if (!mKept.empty()) {
            mTransform = mKept.back();
            mKept.pop_back();
        }
    }
    void Shift(double x, double y) override
    {
        Check({x, y});
        mTransform = {mTransform.cos, mTransform.sin, mTransform.X(x, y), mTransform.Y(x, y)};
    }
    void Turn(double angle) override
    {
        Check({angle});
        const double cos = std::cos(angle * Platform::kRadiansPerDegree);
        const double sin = std::sin(angle * Platform::kRadiansPerDegree);
        mTransform = {mTransform.cos * cos - mTransform.sin * sin, mTransform.sin * cos + mTransform.cos * sin,
                      mTransform.x, mTransform.y};
    }
    void Scale(double factor) override
    {
        Check({factor}, factor > 0);
        mTransform.cos *= factor;
        mTransform.sin *= factor;
    }
    void DrawText(const std::string&, double x, double y, const tTextLook& look) override
    {
        CheckPoint(x, y);
        Check({look.size, look.halo}, look.size > 0);
    }
    void MeasureText(const std::string& text, const tTextLook& look, double& width, double& height) override
    {
        width = static_cast<double>(text.size()) * look.size / 2;
        height = look.size;
    }

private:
    /// A turn, a factor and a shift.
    struct tTransform {
        double cos = 1;
        double sin = 0;
        double x = 0;
        double y = 0;
        double X(double atX, double atY) const { return cos * atX - sin * atY + x; }
        double Y(double atX, double atY) const { return sin * atX + cos * atY + y; }
    };

    void CheckPoint(double x, double y)
    {
        const double atX = mTransform.X(x, y);
        const double atY = mTransform.Y(x, y);
        Check({x, y, atX, atY}, std::fabs(atX) <= kFarthest && std::fabs(atY) <= kFarthest);
    }
    void Check(std::initializer_list<double> numbers, bool isSound = true)
    {
        for (const double number : numbers) {
            isSound = isSound && std::isfinite(number);
        }
        if (isSound || !mWrong.empty()) {
            return;
        }
        mWrong = "numbers:";
        for (const double number : numbers) {
            mWrong += " " + std::to_string(number);
        }
    }

    std::string mWrong;
    tTransform mTransform;
    std::vector<tTransform> mKept;
};
