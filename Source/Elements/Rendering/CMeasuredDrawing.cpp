#include "Elements/Rendering/CMeasuredDrawing.h"

#include "KVUNum/Angles.h"

#include <algorithm>
#include <cmath>

namespace {
// Bytes of SVG. A number is at most 15 characters long within a kilometre of model, mostly 11.
constexpr double kPathBytes = 340.0; ///< its style and transform
constexpr double kDashBytes = 60.0;
constexpr double kPointBytes = 32.0;
constexpr double kCurveBytes = 92.0;
constexpr double kTextBytes = 300.0;
constexpr double kLetterBytes = 85.0;    ///< where it stands
constexpr double kOutlineBytes = 1400.0; ///< of a letter; few have more

// Nanoseconds, measured with the drawing library that Platform uses on Linux.
constexpr double kSegmentWork = 300.0;
constexpr double kDashWork = 130.0;
constexpr double kEdgeWork = 60.0;       ///< for each pixel along an edge
constexpr double kCoarseEdgeWork = 30.0; ///< the same without smooth edges
/// So many edges side by side make each of them twice as dear.
constexpr double kEasyEdges = 200.0;
constexpr double kAreaWork = 0.7; ///< for each pixel
constexpr double kLetterWork = 3000.0;
constexpr double kByteWork = 10.0; ///< where they are written: bytes err upwards by more than the work does

/// Dashes of a path are in memory at the same time, with some 150 bytes each. A picture has no room for more.
constexpr double kMostDashes = 100000.0;
constexpr double kDays = 1e15;
/// Arcs become curves of at most this many degrees, device units of the radius not counted.
constexpr double kDegreesPerCurve = 30.0;
/// From this size on, in device units, letters are drawn one by one.
constexpr double kTallestGlyphs = 200.0;
} // namespace

void CMeasuredDrawing::AddPoint(tVector2D point, double length)
{
    mLength += length;
    ++mSegments;
    mLow = {std::min(mLow.x, point.x), std::min(mLow.y, point.y)};
    mHigh = {std::max(mHigh.x, point.x), std::max(mHigh.y, point.y)};
    mAt = point;
}

void CMeasuredDrawing::MoveTo(double x, double y)
{
    mStart = mAt = {x, y};
    if (mPieces == 0.0) {
        mLow = mHigh = mAt;
    }
    ++mPieces;
    AddPoint(mAt, 0.0);
    mPathBytes += kPointBytes;
}

void CMeasuredDrawing::LineTo(double x, double y)
{
    AddPoint({x, y}, std::hypot(x - mAt.x, y - mAt.y));
    mPathBytes += kPointBytes;
}

void CMeasuredDrawing::CurveTo(double x1, double y1, double x2, double y2, double x, double y)
{
    const double controls =
        std::hypot(x1 - mAt.x, y1 - mAt.y) + std::hypot(x2 - x1, y2 - y1) + std::hypot(x - x2, y - y2);
    AddPoint({x, y}, (controls + std::hypot(x - mAt.x, y - mAt.y)) / 2.0);
    mSegments += 2.0;
    mPathBytes += kCurveBytes;
}

void CMeasuredDrawing::ArcTo(double centreX, double centreY, double radius, double start, double sweep)
{
    const double end = (start + sweep) / kDegreesPerRadian;
    const double curves = std::ceil(std::fabs(sweep) / kDegreesPerCurve);
    AddPoint({centreX - radius, centreY - radius}, 0.0);
    AddPoint({centreX + radius, centreY + radius}, 0.0);
    AddPoint({centreX + radius * std::cos(end), centreY + radius * std::sin(end)},
             radius * std::fabs(sweep) / kDegreesPerRadian);
    mSegments += 3.0 * curves;
    mPathBytes += curves * kCurveBytes;
}

void CMeasuredDrawing::ClosePath()
{
    LineTo(mStart.x, mStart.y); // the library begins the next piece there
}

void CMeasuredDrawing::AddBytes(double bytes)
{
    mBytes += bytes;
    mWork += mIsScalable ? bytes * kByteWork : 0.0;
}

void CMeasuredDrawing::AddEdges(double pixels, bool isCoarse)
{
    mWork += mSegments * kSegmentWork;
    if (!mIsScalable) {
        // The more edges a line of pixels meets, the longer each is looked for.
        const double side = std::max({(mHigh.x - mLow.x) * mScale, (mHigh.y - mLow.y) * mScale, 1.0});
        mWork += pixels * (isCoarse ? kCoarseEdgeWork : kEdgeWork) * (1.0 + pixels / side / kEasyEdges);
    }
}

void CMeasuredDrawing::Fill(const tPaint&, bool keepPath)
{
    AddBytes(kPathBytes + mPathBytes);
    AddEdges(mLength * mScale, false);
    if (!mIsScalable) {
        mWork += (mHigh.x - mLow.x) * (mHigh.y - mLow.y) * mScale * mScale * kAreaWork;
    }
    if (!keepPath) {
        ForgetPath();
    }
}

void CMeasuredDrawing::Stroke(const tPen& pen)
{
    double bytes = kPathBytes + mPathBytes;
    const double width = pen.width * mScale;
    double edges = 2.0 * mLength * mScale;
    if (!pen.dash.empty()) {
        bytes += kDashBytes;
        double period = 0.0;
        for (const double length : pen.dash) {
            period += length;
        }
        const double dashes = mLength / period * static_cast<double>(pen.dash.size()) / 2.0 + mPieces;
        mWork += dashes <= kMostDashes ? dashes * kDashWork : kDays;
        edges += dashes * 2.0 * width; // of dashes that no longer are one line
    }
    AddBytes(bytes);
    AddEdges(edges, pen.isCoarse);
    if (!mIsScalable) {
        mWork += mLength * mScale * width * kAreaWork;
    }
    ForgetPath();
}

void CMeasuredDrawing::Restore()
{
    mScale = mScales.back();
    mScales.pop_back();
    mAngle = 0.0;
}

void CMeasuredDrawing::DrawText(const std::string& text, double, double, const tTextLook& look)
{
    std::bitset<256>& known = mLetters[{look.font, look.size, mAngle}];
    const auto knownBefore = known.count();
    for (const char letter : text) {
        known.set(static_cast<unsigned char>(letter));
    }
    const auto letters = static_cast<double>(text.size());
    const double size = look.size * mScale;
    const double outlines = (size > kTallestGlyphs ? letters : static_cast<double>(known.count() - knownBefore)) +
                            (look.halo > 0.0 ? letters : 0.0);
    const double bytes = kTextBytes + letters * kLetterBytes + outlines * kOutlineBytes;
    AddBytes(bytes);
    mWork += letters * kLetterWork;
    if (!mIsScalable) {
        mWork += letters * size * (size * kAreaWork + 4.0 * kEdgeWork);
    }
}

void CMeasuredDrawing::MeasureText(const std::string& text, const tTextLook& look, double& width, double& height)
{
    width = static_cast<double>(text.size()) * look.size;
    height = look.size;
}

void CMeasuredDrawing::ForgetPath()
{
    mPathBytes = mSegments = mLength = mPieces = 0.0;
}
