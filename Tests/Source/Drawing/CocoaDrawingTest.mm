// What reaches the pixels of a picture through AppKit.
#import "Drawing/Cocoa/CCocoaDrawing.h"
#import "Drawing/Cocoa/NSColor+CColor.h"
#import "Drawing/Cocoa/NSShadow+SingleLineShadows.h"
#import "Drawing/Cocoa/UCocoaDrawing.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

/// Its context is flipped: y grows downwards.
@interface FlippedView : NSView
@end

@implementation FlippedView
- (BOOL)isFlipped
{
    return YES;
}
@end

namespace {
constexpr int kWidth = 120;
constexpr int kHeight = 80;
constexpr unsigned kWhite = 0xFFFFFF;
constexpr unsigned kRed = 0xFF0000;
constexpr tPaint kRedPaint = {1.0, 0.0, 0.0, 1.0};
constexpr tPaint kBluePaint = {0.0, 0.0, 1.0, 1.0};

/// Edges of an area of pixels, the outer ones; all 0 for an empty one.
struct tBox {
    int left = 0;
    int bottom = 0;
    int right = 0;
    int top = 0;
    bool operator==(const tBox&) const = default;
    bool IsInside(const tBox& other) const
    {
        return other.left <= left && other.bottom <= bottom && right <= other.right && top <= other.top;
    }
    tBox Grown(int by) const { return {left - by, bottom - by, right + by, top + by}; }
};

/// A picture's colours as 0xRRGGBB; (0, 0) is at the lower left.
struct tPicture {
    std::vector<unsigned> pixels = std::vector<unsigned>(static_cast<size_t>(kWidth * kHeight), kWhite);

    unsigned& At(int x, int y) { return pixels[static_cast<size_t>(y * kWidth + x)]; }

    /// Around the pixels that are not white.
    tBox Box() const
    {
        tBox box = {kWidth, kHeight, 0, 0};
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                if (pixels[static_cast<size_t>(y * kWidth + x)] != kWhite) {
                    box = {std::min(box.left, x), std::min(box.bottom, y), std::max(box.right, x + 1),
                           std::max(box.top, y + 1)};
                }
            }
        }
        return box.right == 0 ? tBox{} : box;
    }
    auto Count(unsigned color) const { return std::count(pixels.begin(), pixels.end(), color); }
    /// Pixels that are another colour there, by more than edges are that another engine has smoothed.
    auto Differences(const tPicture& other) const
    {
        return std::inner_product(pixels.begin(), pixels.end(), other.pixels.begin(), 0, std::plus{},
                                  [](unsigned a, unsigned b) {
                                      int most = 0;
                                      for (; a != b; a >>= 8, b >>= 8) {
                                          most = std::max(most, std::abs(int(a & 0xFF) - int(b & 0xFF)));
                                      }
                                      return most > 96 ? 1 : 0;
                                  });
    }
};

tPicture Pixels(NSBitmapImageRep* bitmap)
{
    tPicture picture;
    EXPECT_EQ([bitmap pixelsWide], kWidth);
    EXPECT_EQ([bitmap pixelsHigh], kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            NSUInteger components[5] = {};
            [bitmap getPixel:components atX:x y:kHeight - 1 - y];
            picture.At(x, y) = static_cast<unsigned>(components[0] << 16 | components[1] << 8 | components[2]);
        }
    }
    return picture;
}

/// What is to be seen after `draw` on a white view.
tPicture Draw(const std::function<void()>& draw, bool isFlipped = false)
{
    const NSRect all = NSMakeRect(0, 0, kWidth, kHeight);
    NSWindow* const window = [[NSWindow alloc] initWithContentRect:all
                                                         styleMask:NSBorderlessWindowMask
                                                           backing:NSBackingStoreBuffered
                                                             defer:NO];
    [window setReleasedWhenClosed:NO];
    NSView* const view = [[(isFlipped ? [FlippedView class] : [NSView class]) alloc] initWithFrame:all];
    [window setContentView:view];
    [view lockFocus];
    EXPECT_EQ([[NSGraphicsContext currentContext] isFlipped], isFlipped);
    [[NSColor whiteColor] set];
    NSRectFill(all);
    [NSGraphicsContext saveGraphicsState];
    draw();
    [NSGraphicsContext restoreGraphicsState];
    NSBitmapImageRep* const bitmap = [[NSBitmapImageRep alloc] initWithFocusedViewRect:all];
    [view unlockFocus];
    const tPicture picture = Pixels(bitmap);
    [bitmap release];
    [view release];
    [window close];
    [window release];
    return picture;
}

class CocoaDrawing : public testing::Test {
protected:
    void SetUp() override
    {
        mPool = [[NSAutoreleasePool alloc] init];
        [NSApplication sharedApplication];
        mFont = [NSFont systemFontOfSize:20.0];
        ASSERT_NE(mFont, nil);
    }
    void TearDown() override { [mPool drain]; }

    NSAutoreleasePool* mPool = nil;
    NSFont* mFont = nil;
};

void Fill(NSBezierPath* path)
{
    [[NSColor redColor] set];
    [path fill];
}
} // namespace

TEST_F(CocoaDrawing, PathsLieWhereTheirPointsAndTheContextAre)
{
    EXPECT_EQ(Draw([] { Fill([UCocoaDrawing pathForDRect:DRect{10, 20, 30, 60}]); }).Box(), (tBox{20, 10, 60, 30}));
    EXPECT_EQ(Draw([] { Fill([UCocoaDrawing pathForCircleAtPoint:CPoint(50, 40, 7) withRadius:25]); }).Box(),
              (tBox{25, 15, 75, 65}));
    const tPicture dashed = Draw([] {
        NSBezierPath* const path = [UCocoaDrawing pathForLineStartingAtPoint:CPoint(10, 20, 0)];
        [UCocoaDrawing continueLine:path ToPoint:CPoint(30, 20, 0) drawLine:YES];
        [UCocoaDrawing continueLine:path ToPoint:CPoint(50, 20, 0) drawLine:NO];
        [UCocoaDrawing continueLine:path ToPoint:CPoint(50, 60, 0) drawLine:YES];
        [[NSColor redColor] set];
        [path setLineWidth:4];
        [path stroke];
    });
    EXPECT_EQ(dashed.Box(), (tBox{10, 18, 52, 60}));
    EXPECT_EQ(dashed.Count(kRed), 20 * 4 + 40 * 4);
    EXPECT_EQ(Draw([] {
                  [UCocoaDrawing offsetContextBy:CPoint(-30, 10, 5)];
                  [UCocoaDrawing rotateContextBy:90 aroundPoint:CPoint(50, 40, 0)];
                  Fill([UCocoaDrawing pathForDRect:DRect{40, 50, 44, 70}]);
              }).Box(),
              (tBox{16, 50, 20, 70}));
}

namespace {
tPicture DrawOnSurface(const std::function<void(CDrawing&)>& draw, bool isFlipped = false)
{
    return Draw(
        [&] {
            CCocoaDrawing drawing(kHeight);
            draw(drawing);
        },
        isFlipped);
}

void AddRect(CDrawing& drawing, double left, double top, double width, double height)
{
    drawing.MoveTo(left, top);
    drawing.LineTo(left + width, top);
    drawing.LineTo(left + width, top + height);
    drawing.LineTo(left, top + height);
    drawing.ClosePath();
}

/// The same in a picture that is made without AppKit.
tPicture DrawInFile(const std::function<void(CDrawing&)>& draw)
{
    const auto file = Platform::BeginPicture(Platform::ePictureFormat::kPNG, kWidth, kHeight);
    AddRect(*file, 0, 0, kWidth, kHeight);
    file->Fill({1, 1, 1, 1}, false);
    draw(*file);
    std::string bytes;
    EXPECT_TRUE(file->Finish(bytes));
    return Pixels([NSBitmapImageRep imageRepWithData:[NSData dataWithBytes:bytes.data() length:bytes.size()]]);
}
} // namespace

TEST_F(CocoaDrawing, TheCoresSurfaceShowsWhatAPictureFileShows)
{
    const auto draw = [](CDrawing& drawing) {
        // A frame around its area, by one path.
        AddRect(drawing, 10, 10, 20, 20);
        drawing.Fill(kRedPaint, true);
        drawing.Stroke({.paint = kBluePaint, .width = 2});
        // Parts of discs and of rings, either way round and whole.
        double x = 8;
        for (const double sweep : {60.0, -150.0, 200.0, 360.0, -360.0, 0.0}) {
            drawing.MoveTo(x, 68);
            drawing.ArcTo(x, 68, 7, 20, sweep);
            drawing.Fill({0, 0.5, 0, 0.5}, false);
            drawing.ArcTo(x, 50, 6, 20, sweep);
            drawing.Stroke({.paint = kBluePaint, .width = 3, .cap = Platform::eLineCap::kRound});
            x += 18;
        }
        // Shifted, then turned, then scaled; what was begun there stays there.
        drawing.Save();
        drawing.Shift(70, 10);
        drawing.Turn(30);
        drawing.Scale(10);
        AddRect(drawing, 0, 0, 1, 2);
        drawing.CurveTo(1, 0, 2, 1, 2, 3);
        drawing.Restore();
        drawing.LineTo(75, 35);
        drawing.Fill(kBluePaint, false);
        // Clipped by a triangle, until the Restore.
        drawing.Save();
        drawing.LineTo(85, 5);
        drawing.LineTo(115, 5);
        drawing.LineTo(100, 35);
        drawing.Clip();
        AddRect(drawing, 80, 10, 40, 30);
        drawing.Fill(kRedPaint, false);
        drawing.Clip(); // by nothing
        AddRect(drawing, 0, 0, 120, 80);
        drawing.Fill(kBluePaint, false);
        drawing.Restore();
        // The pen scales, and a closed piece goes on from its first point.
        drawing.Scale(2);
        drawing.MoveTo(20, 5);
        drawing.LineTo(30, 5);
        drawing.LineTo(30, 9);
        drawing.ClosePath();
        drawing.LineTo(20, 20);
        drawing.Stroke({.paint = kRedPaint, .width = 1, .join = Platform::eLineJoin::kBevel});
        drawing.Save(); // left open
    };
    const tPicture file = DrawInFile(draw);
    EXPECT_GT(file.Count(kRed), 500);
    for (const bool isFlipped : {false, true}) {
        EXPECT_EQ(DrawOnSurface(draw, isFlipped).Differences(file), 0) << isFlipped;
    }
}

TEST_F(CocoaDrawing, TextOnTheCoresSurfaceStandsUpright)
{
    const tTextLook look = {
        .font = [[mFont fontName] UTF8String], .size = 20, .paint = kRedPaint, .haloPaint = kBluePaint};
    const auto text = [](const tTextLook& with, bool isFlipped = false) {
        return DrawOnSurface([&](CDrawing& drawing) { drawing.DrawText("Lg", 10, 20, with); }, isFlipped);
    };
    const NSSize size = [UCocoaDrawing measureText:@"Lg" font:mFont];
    const tPicture upright = Draw([&] {
        [UCocoaDrawing drawText:@"Lg" withColor:[NSColor redColor] font:mFont atPoint:CPoint(10, 60 - size.height, 0)];
    });
    ASSERT_GT(upright.Count(kRed), 20);
    EXPECT_EQ(text(look).Differences(upright), 0);
    EXPECT_EQ(text(look, true).Differences(upright), 0);
    tTextLook missing = look;
    missing.font = "No Such Font";
    EXPECT_EQ(text(missing).Differences(upright), 0); // the system font in its place
}
