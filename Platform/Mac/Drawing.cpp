// Pictures drawn with Core Graphics. There is no SVG: the system cannot write it.
#include "Platform/Drawing.h"

#include "Bounds.h"
#include "Platform/Fonts.h"
#include "Platform/Released.h"
#include "TextPieces.h"

#include <CoreGraphics/CoreGraphics.h>
#include <CoreText/CoreText.h>
#include <ImageIO/ImageIO.h>
#include <algorithm>

namespace Platform {
namespace {
class CCorePicture final : public CPicture {
public:
    CCorePicture(ePictureFormat format, int width, int height) : mFormat(format), mData(CFDataCreateMutable(nullptr, 0))
    {
        if (format == ePictureFormat::kPNG) {
            const tReleased<CGColorSpaceRef> colors(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
            mContext.reset(CGBitmapContextCreate(nullptr, static_cast<size_t>(width), static_cast<size_t>(height), 8, 0,
                                                 colors.get(), kCGImageAlphaPremultipliedLast));
        } else if (format == ePictureFormat::kPDF) {
            const tReleased<CGDataConsumerRef> consumer(CGDataConsumerCreateWithCFData(mData.get()));
            const CGRect page = CGRectMake(0, 0, width, height);
            mContext.reset(CGPDFContextCreate(consumer.get(), &page, nullptr));
            if (mContext) {
                CGPDFContextBeginPage(mContext.get(), nullptr);
            }
        }
        if (mContext) { // y downwards
            CGContextTranslateCTM(mContext.get(), 0, height);
            CGContextScaleCTM(mContext.get(), 1, -1);
        }
    }

    bool IsGood() const { return mContext != nullptr; }

    void MoveTo(double x, double y) override { CGContextMoveToPoint(mContext.get(), x, y); }
    void LineTo(double x, double y) override { CGContextAddLineToPoint(mContext.get(), x, y); }
    void CurveTo(double x1, double y1, double x2, double y2, double x, double y) override
    {
        CGContextAddCurveToPoint(mContext.get(), x1, y1, x2, y2, x, y);
    }
    void ArcTo(double centreX, double centreY, double radius, double start, double sweep) override
    {
        // "Clockwise" is meant for y upwards and tells the sign of the turn alone.
        CGContextAddArc(mContext.get(), centreX, centreY, radius, start * kRadiansPerDegree,
                        (start + sweep) * kRadiansPerDegree, sweep < 0 ? 1 : 0);
    }
    void ClosePath() override { CGContextClosePath(mContext.get()); }

    void Fill(const tPaint& paint, bool keepPath) override
    {
        CGContextSetRGBFillColor(mContext.get(), paint.red, paint.green, paint.blue, paint.alpha);
        const tReleased<CGPathRef> path(keepPath ? CGContextCopyPath(mContext.get()) : nullptr);
        CGContextFillPath(mContext.get());
        if (path) {
            CGContextAddPath(mContext.get(), path.get());
        }
    }

    void Stroke(const tPen& pen) override
    {
        const tPaint& paint = pen.paint;
        CGContextSetRGBStrokeColor(mContext.get(), paint.red, paint.green, paint.blue, paint.alpha);
        CGContextSetLineWidth(mContext.get(), pen.width);
        CGContextSetLineCap(mContext.get(), pen.cap == eLineCap::kRound    ? kCGLineCapRound
                                            : pen.cap == eLineCap::kSquare ? kCGLineCapSquare
                                                                           : kCGLineCapButt);
        CGContextSetLineJoin(mContext.get(), pen.join == eLineJoin::kRound   ? kCGLineJoinRound
                                             : pen.join == eLineJoin::kBevel ? kCGLineJoinBevel
                                                                             : kCGLineJoinMiter);
        const std::vector<CGFloat> dash(pen.dash.begin(), pen.dash.end());
        CGContextSetLineDash(mContext.get(), pen.dashOffset, dash.data(), dash.size());
        CGContextStrokePath(mContext.get());
    }

    void Clip() override { CGContextClip(mContext.get()); }
    void Save() override { CGContextSaveGState(mContext.get()); }
    void Restore() override { CGContextRestoreGState(mContext.get()); }
    void Shift(double x, double y) override { CGContextTranslateCTM(mContext.get(), x, y); }
    void Turn(double angle) override { CGContextRotateCTM(mContext.get(), angle * kRadiansPerDegree); }
    void Scale(double factor) override { CGContextScaleCTM(mContext.get(), factor, factor); }

    void DrawText(const std::string& text, double x, double y, const tTextLook& look) override
    {
        const tReleased<CFStringRef> name(MakeText(look.font));
        const tReleased<CTFontRef> font(IsFontInstalled(look.font)
                                            ? CTFontCreateWithName(name.get(), look.size, nullptr)
                                            : CTFontCreateUIFontForLanguage(kCTFontUIFontSystem, look.size, nullptr));
        if (!font) {
            return;
        }
        const double height = CTFontGetAscent(font.get()) + CTFontGetDescent(font.get()) + CTFontGetLeading(font.get());
        for (const bool isHalo : {true, false}) {
            if (isHalo && look.halo <= 0) {
                continue;
            }
            std::string_view rest = text;
            double left = x;
            double top = y;
            bool ends = false;
            for (bool more = true; more || !ends;) {
                left += DrawPiece(TakePiece(rest, ends, more), left, top + CTFontGetAscent(font.get()), font.get(),
                                  look, isHalo);
                if (ends) {
                    left = x;
                    top += height;
                }
            }
        }
    }

    void MeasureText(const std::string& text, const tTextLook& look, double& width, double& height) override
    {
        Platform::MeasureText(look.font, look.size, text, width, height);
    }

    bool Finish(std::string& bytes) override
    {
        bytes.clear();
        if (mFormat == ePictureFormat::kPDF) {
            CGPDFContextEndPage(mContext.get());
            CGPDFContextClose(mContext.get());
        } else {
            const tReleased<CGImageRef> image(CGBitmapContextCreateImage(mContext.get()));
            const tReleased<CGImageDestinationRef> file(
                CGImageDestinationCreateWithData(mData.get(), CFSTR("public.png"), 1, nullptr));
            if (!image || !file) {
                return false;
            }
            CGImageDestinationAddImage(file.get(), image.get(), nullptr);
            if (!CGImageDestinationFinalize(file.get())) {
                return false;
            }
        }
        bytes.assign(reinterpret_cast<const char*>(CFDataGetBytePtr(mData.get())),
                     static_cast<size_t>(CFDataGetLength(mData.get())));
        return true;
    }

private:
    static CFStringRef MakeText(const std::string& text)
    {
        return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                       static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
    }

    /// Draws at a baseline. @return the width
    double DrawPiece(const std::string& piece, double x, double baseline, CTFontRef font, const tTextLook& look,
                     bool isHalo)
    {
        const tReleased<CFStringRef> text(MakeText(piece));
        const void* keys[] = {kCTFontAttributeName, kCTForegroundColorFromContextAttributeName};
        const void* values[] = {font, kCFBooleanTrue};
        const tReleased<CFDictionaryRef> attributes(CFDictionaryCreate(
            nullptr, keys, values, 2, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
        if (!text || !attributes) {
            return 0;
        }
        const tReleased<CFAttributedStringRef> attributed(
            CFAttributedStringCreate(nullptr, text.get(), attributes.get()));
        const tReleased<CTLineRef> line(CTLineCreateWithAttributedString(attributed.get()));
        const tPaint& paint = isHalo ? look.haloPaint : look.paint;
        Save();
        CGContextSetTextDrawingMode(mContext.get(), isHalo ? kCGTextStroke : kCGTextFill);
        CGContextSetLineWidth(mContext.get(), 2 * look.halo);
        CGContextSetLineJoin(mContext.get(), kCGLineJoinRound);
        CGContextSetLineDash(mContext.get(), 0, nullptr, 0);
        CGContextSetRGBFillColor(mContext.get(), paint.red, paint.green, paint.blue, paint.alpha);
        CGContextSetRGBStrokeColor(mContext.get(), paint.red, paint.green, paint.blue, paint.alpha);
        CGContextSetTextMatrix(mContext.get(), CGAffineTransformMakeScale(1, -1)); // letters stand up all the same
        CGContextSetTextPosition(mContext.get(), x, baseline);
        CTLineDraw(line.get(), mContext.get());
        Restore();
        return CTLineGetTypographicBounds(line.get(), nullptr, nullptr, nullptr);
    }

    ePictureFormat mFormat;
    tReleased<CFMutableDataRef> mData;
    tReleased<CGContextRef> mContext;
};
} // namespace

std::unique_ptr<CPicture> BeginPicture(ePictureFormat format, int width, int height)
{
    if (width < 1 || height < 1 || width > Bounds::kMostPictureSide || height > Bounds::kMostPictureSide ||
        int64_t{width} * height > Bounds::kMostPicturePixels) {
        return nullptr;
    }
    auto picture = std::make_unique<CCorePicture>(format, width, height);
    return picture->IsGood() ? std::move(picture) : nullptr;
}
} // namespace Platform
