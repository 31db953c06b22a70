#import "Drawing/Cocoa/CCocoaDrawing.h"

#import "Drawing/Cocoa/NSColor+CColor.h"
#import "Drawing/Cocoa/UCocoaDrawing.h"

#include "KVUNum/Angles.h"
#include "Portable/TextPieces.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace {
/// Keeps what AppKit autoreleases from piling up in a picture of many elements.
class CPool {
public:
    CPool() : mPool([[NSAutoreleasePool alloc] init]) {}
    ~CPool() { [mPool drain]; }
    CPool(const CPool&) = delete;
    CPool& operator=(const CPool&) = delete;

private:
    NSAutoreleasePool* mPool;
};

NSColor* ToNSColor(const tPaint& paint)
{
    return [NSColor colorWithCColor:CColor(paint.red, paint.green, paint.blue, paint.alpha)];
}

NSPoint ToNSPoint(const CPoint& point) { return NSMakePoint(point.x, point.y); }

/// The font of that PostScript name, else the regular face of that family, else the system font;
/// nil where there is none.
NSFont* FindFont(const tTextLook& look)
{
    NSString* const name = [NSString stringWithUTF8String:look.font.c_str()]; // nil for malformed text
    NSFontManager* const fonts = [NSFontManager sharedFontManager];           // before any font can be found by name
    NSFont* font = nil;
    if ([name length] > 0) {
        font = [NSFont fontWithName:name size:look.size];
        if (font == nil) {
            constexpr int kRegular = 5;
            font = [fonts fontWithFamily:name traits:0 weight:kRegular size:static_cast<float>(look.size)];
        }
    }
    return font != nil ? font : [NSFont systemFontOfSize:look.size];
}

/// Autoreleased; line breaks of any kind become LF.
NSString* ToNSString(const std::string& text)
{
    std::string clean;
    std::string_view rest = text;
    bool ends = false;
    for (bool more = true; more || !ends;) {
        clean += Platform::TakePiece(rest, ends, more);
        if (more) {
            clean += '\n';
        }
    }
    return [NSString stringWithUTF8String:clean.c_str()];
}
} // namespace

CPoint CCocoaDrawing::tPlacing::Apply(double x, double y) const
{
    CPoint point(x * scale, y * scale, 0.0);
    point.Rotate(0.0, 0.0, angle);
    return point + shift;
}

CCocoaDrawing::CCocoaDrawing(double height)
    : mContext([[NSGraphicsContext currentContext] retain]), mPath([[NSBezierPath alloc] init])
{
    if (mContext == nil) {
        return;
    }
    [NSGraphicsContext saveGraphicsState];
    if (![mContext isFlipped]) {
        const CPool pool;
        NSAffineTransform* const flip = [NSAffineTransform transform];
        [flip translateXBy:0.0 yBy:height];
        [flip scaleXBy:1.0 yBy:-1.0];
        [flip concat];
    }
}

CCocoaDrawing::~CCocoaDrawing()
{
    while (!mSaved.empty()) {
        Restore();
    }
    if (mContext != nil) {
        [NSGraphicsContext restoreGraphicsState];
    }
    [mPath release];
    [mContext release];
}

void CCocoaDrawing::MoveTo(double x, double y)
{
    [UCocoaDrawing continueLine:mPath ToPoint:mPlacing.Apply(x, y) drawLine:NO];
}

void CCocoaDrawing::LineTo(double x, double y)
{
    if ([mPath isEmpty]) {
        MoveTo(x, y);
        return;
    }
    [UCocoaDrawing continueLine:mPath ToPoint:mPlacing.Apply(x, y) drawLine:YES];
}

void CCocoaDrawing::CurveTo(double x1, double y1, double x2, double y2, double x, double y)
{
    if ([mPath isEmpty]) {
        MoveTo(x1, y1);
    }
    [mPath curveToPoint:ToNSPoint(mPlacing.Apply(x, y))
          controlPoint1:ToNSPoint(mPlacing.Apply(x1, y1))
          controlPoint2:ToNSPoint(mPlacing.Apply(x2, y2))];
}

void CCocoaDrawing::ArcTo(double centreX, double centreY, double radius, double start, double sweep)
{
    // By curves of at most a quarter, since AppKit takes the two ends of an arc modulo 360.
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / 90.0)));
    const double step = sweep / pieces * kRadiansPerDegree;
    const double handle = radius * 4.0 / 3.0 * std::tan(step / 4.0); // meets the arc in its middle, too
    double angle = start * kRadiansPerDegree;
    double x = centreX + radius * std::cos(angle);
    double y = centreY + radius * std::sin(angle);
    LineTo(x, y);
    for (int piece = 0; piece < pieces; ++piece) {
        const double x1 = x - handle * std::sin(angle);
        const double y1 = y + handle * std::cos(angle);
        angle += step;
        x = centreX + radius * std::cos(angle);
        y = centreY + radius * std::sin(angle);
        CurveTo(x1, y1, x + handle * std::sin(angle), y - handle * std::cos(angle), x, y);
    }
}

void CCocoaDrawing::ClosePath()
{
    if (![mPath isEmpty]) {
        [mPath closePath];
    }
}

void CCocoaDrawing::Fill(const tPaint& paint, bool keepPath)
{
    if (mContext != nil && ![mPath isEmpty]) {
        const CPool pool;
        [ToNSColor(paint) set];
        [mPath setWindingRule:NSNonZeroWindingRule];
        [mPath fill];
    }
    if (!keepPath) {
        [mPath removeAllPoints];
    }
}

void CCocoaDrawing::Stroke(const tPen& pen)
{
    if (mContext != nil && ![mPath isEmpty]) {
        const CPool pool;
        constexpr NSLineCapStyle kCaps[] = {NSButtLineCapStyle, NSRoundLineCapStyle, NSSquareLineCapStyle};
        constexpr NSLineJoinStyle kJoins[] = {NSMiterLineJoinStyle, NSRoundLineJoinStyle, NSBevelLineJoinStyle};
        [mPath setLineWidth:pen.width * mPlacing.scale];
        [mPath setLineCapStyle:kCaps[static_cast<int>(pen.cap)]];
        [mPath setLineJoinStyle:kJoins[static_cast<int>(pen.join)]];
        std::vector<CGFloat> dash;
        dash.reserve(pen.dash.size());
        for (const double length : pen.dash) {
            dash.push_back(length * mPlacing.scale);
        }
        [mPath setLineDash:dash.data() count:static_cast<NSInteger>(dash.size()) phase:pen.dashOffset * mPlacing.scale];
        [ToNSColor(pen.paint) set];
        [mPath stroke];
    }
    [mPath removeAllPoints];
}

void CCocoaDrawing::Clip()
{
    if (mContext != nil) {
        const CPool pool;
        if ([mPath isEmpty]) { // inside nothing there is nothing to draw
            [NSBezierPath clipRect:NSMakeRect(0.0, 0.0, 0.0, 0.0)];
        } else {
            [mPath setWindingRule:NSNonZeroWindingRule];
            [mPath addClip];
        }
    }
    [mPath removeAllPoints];
}

void CCocoaDrawing::Save()
{
    mSaved.push_back(mPlacing);
    if (mContext != nil) {
        [NSGraphicsContext saveGraphicsState];
    }
}

void CCocoaDrawing::Restore()
{
    if (mSaved.empty()) {
        return;
    }
    mPlacing = mSaved.back();
    mSaved.pop_back();
    if (mContext != nil) {
        [NSGraphicsContext restoreGraphicsState];
    }
}

void CCocoaDrawing::Shift(double x, double y) { mPlacing.shift = mPlacing.Apply(x, y); }

void CCocoaDrawing::Turn(double angle) { mPlacing.angle += angle; }

void CCocoaDrawing::Scale(double factor) { mPlacing.scale *= factor; }

void CCocoaDrawing::DrawText(const std::string& text, double x, double y, const tTextLook& look)
{
    if (mContext == nil) {
        return;
    }
    const CPool pool;
    NSString* const string = ToNSString(text);
    NSFont* const font = FindFont(look);
    [NSGraphicsContext saveGraphicsState];
    [UCocoaDrawing offsetContextBy:mPlacing.Apply(x, y)];
    [UCocoaDrawing rotateContextBy:mPlacing.angle aroundPoint:CPoint::ZeroPos];
    // Letters stand on their heads where y grows downwards against the context's own direction: there it is turned up.
    const bool isFlipped = [mContext isFlipped];
    NSAffineTransform* const size = [NSAffineTransform transform];
    [size scaleXBy:mPlacing.scale yBy:isFlipped ? mPlacing.scale : -mPlacing.scale];
    [size concat];
    const CPoint corner(0.0, isFlipped ? 0.0 : -[UCocoaDrawing measureText:string font:font].height, 0.0);
    if (look.halo > 0.0) {
        // The seam on either side of the letters' edges, and no letters yet: they hide its inner half.
        [UCocoaDrawing drawText:string
                      withColor:[NSColor clearColor]
                           font:font
                        atPoint:corner
                   outlineColor:ToNSColor(look.haloPaint)
                    strokeWidth:2.0 * look.halo / [font pointSize] * 100.0];
    }
    [UCocoaDrawing drawText:string withColor:ToNSColor(look.paint) font:font atPoint:corner];
    [NSGraphicsContext restoreGraphicsState];
}

void CCocoaDrawing::MeasureText(const std::string& text, const tTextLook& look, double& width, double& height)
{
    width = height = 0.0;
    if (mContext == nil) {
        return;
    }
    const CPool pool;
    const NSSize size = [UCocoaDrawing measureText:ToNSString(text) font:FindFont(look)];
    width = size.width;
    height = size.height;
}
