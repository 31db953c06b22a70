#include "Pictures.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Layers/CLayerManager.h"

#include <pugixml.hpp>

#include <cmath>

namespace {
constexpr double kGauge = 16.5;
constexpr double kBed = 40.0;

CCompositeGeometry* Add(CLayout& layout, CBasicGeometry* component, double x = 0.0, double y = 0.0)
{
    auto* element = new CCompositeGeometry;
    element->AppendBIG(component);
    element->SetPosition(x, y);
    element->SetMidRailFlag(0);
    component->SetRailWidth(1.0);
    layout.AddItem(element);
    return element;
}

CStraightBIG* Straight(double length, double angle = 0.0, double gauge = kGauge, double bed = kBed)
{
    auto* track = new CStraightBIG;
    track->SpecifyStraightGeometry(0, 0, length, angle, gauge, bed, true, true);
    return track;
}

CCurveBIG* Curve(double radius, double arc, double angle = 0.0)
{
    auto* track = new CCurveBIG;
    track->SpecifyCurveGeometry(0, 0, radius, arc, angle, kGauge, kBed, true, true);
    return track;
}

CFlexTrackBIG* Flex(const std::vector<CPoint>& points)
{
    auto* track = new CFlexTrackBIG;
    track->SpecifyFlexGeometry(0, 0, points, 0, kBed, 1e6);
    track->SetGauge(kGauge);
    return track;
}

CPolyBIG* Square(double size, unsigned short red, unsigned short green, unsigned short blue)
{
    auto* square = new CPolyBIG;
    square->SpecifyPolyGeometry(0, 0, {{0, 0, 0}, {size, 0, 0}, {size, size, 0}, {0, size, 0}}, 0, 1, 1);
    RGBColor color = {red, green, blue};
    square->SetFixedColor(color);
    return square;
}

CTextBIG* Text(const std::string& text, int size)
{
    auto* component = new CTextBIG;
    component->SpecifyTextGeometry(text.c_str(), "DejaVu Sans", size);
    return component;
}

/// A picture of a size given, of the layout alone.
tPictureOptions Options(int width, int height, int style = 0)
{
    tPictureOptions options;
    options.width = width;
    options.height = height;
    options.isTransparent = true;
    options.trackStyle = style;
    return options;
}
} // namespace

TEST(Rendering, RailsLieHalfAGaugeBesideTheCourse)
{
    CBoundLayout layout;
    CCompositeGeometry* straight = Add(layout, Straight(300, 30), 100, 50);
    CCompositeGeometry* curve = Add(layout, Curve(250, -75, 200), 600, 100);
    CCompositeGeometry* flex = Add(layout, Flex({{0, 0, 0}, {150, 60, 0}, {300, 0, 0}, {420, 90, 0}}), 250, 500);
    for (const int style : {1, 4, 5}) {
        SCOPED_TRACE(style);
        CLayoutRenderer renderer(layout, Options(2400, 2400, style));
        ASSERT_EQ(renderer.GetNumberOfElements(), 3u);
        const CPixels pixels(DrawPicture(renderer, Platform::ePictureFormat::kPNG));
        for (CCompositeGeometry* element : {straight, curve, flex}) {
            // From the outlines, which know nothing of drawing: at half the gauge they are where the rails are.
            for (const double distance : {0.01, kGauge / 2}) {
                std::vector<CPoint> line;
                element->GetBIGAtIndex(0)->DefineTrackItemOutline(element->GetAngle(), distance, line);
                for (size_t i = 0; i + 1 < line.size(); ++i) {
                    if (i + 1 == line.size() / 2) {
                        continue; // it runs across the track's end
                    }
                    const CPoint at = renderer.ToPicture((line[i] + line[i + 1]) * 0.5 + element->GetPosition());
                    const tPixel pixel = pixels.At(at.x, at.y);
                    if (distance > 1) {
                        EXPECT_TRUE(pixel.Brightness() < 115 && pixel.alpha == (style == 1 ? 0 : 255));
                    } else {
                        EXPECT_EQ(pixel.Brightness() > 100, style != 1); // on a bed, or on sleepers
                    }
                }
            }
        }
    }
}

TEST(Rendering, DrawsByLayerThenByZOrderAndLeavesHiddenLayersOut)
{
    CBoundLayout layout;
    CLayerManager* layers = layout.GetLayerList();
    CLayer* lower = layers->AddLayer("lower");
    CLayer* upper = layers->AddLayer("upper");
    CCompositeGeometry* blue = Add(layout, Square(100, 0, 0, 0xFFFF));
    CCompositeGeometry* red = Add(layout, Square(100, 0xFFFF, 0, 0));
    CCompositeGeometry* green = Add(layout, Square(100, 0, 0xFFFF, 0));
    blue->SetLayer(upper);
    red->SetLayer(lower);
    green->SetLayer(lower);
    red->SetZOrder(1000000);
    const auto top = [&](const tPictureOptions& options) {
        CLayoutRenderer renderer(layout, options);
        const tPixel pixel = CPixels(DrawPicture(renderer, Platform::ePictureFormat::kPNG)).At(50, 50);
        return pixel.alpha == 0 ? "nothing" : pixel.red > 200 ? "red" : pixel.green > 200 ? "green" : "blue";
    };
    tPictureOptions options = Options(100, 100);
    EXPECT_STREQ(top(options), "blue");
    upper->SetVisible(false);
    EXPECT_STREQ(top(options), "red");
    red->SetZOrder(-1);
    EXPECT_STREQ(top(options), "green");
    lower->SetVisible(false);
    EXPECT_STREQ(top(options), "nothing");
    green->SetLayer(nullptr);
    EXPECT_STREQ(top(options), "green") << "an element without a layer cannot be hidden";
    options.hasLayers = true;
    options.layers = {upper}; // named, so drawn although it is hidden
    EXPECT_STREQ(top(options), "blue");
}

TEST(Rendering, UnknownTrackStylesAreSleepersAndOptionsOfElementsCount)
{
    CBoundLayout layout;
    CCompositeGeometry* track = Add(layout, Straight(300));
    const auto draw = [&](int style) {
        layout.SetTrackStyle(style);
        CLayoutRenderer renderer(layout, Options(600, 100));
        return DrawPicture(renderer, Platform::ePictureFormat::kPNG);
    };
    const std::string sleepers = draw(105);
    for (const int style : {5, 0, 6, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(draw(style), sleepers) << style;
    }
    for (const int style : {1, 2, 3, 4}) {
        const std::string drawn = draw(style);
        EXPECT_NE(drawn, sleepers) << style;
        EXPECT_EQ(draw(style + 100), drawn) << style;
    }
    track->GetLayoutItemAttributes().fillColor = {0xFFFF, 0, 0};
    EXPECT_GT(CPixels(draw(102)).At(300, 50).red, 220);
    track->SetFillMode(false);
    EXPECT_LT(CPixels(draw(102)).At(300, 50).red - CPixels(draw(102)).At(300, 50).blue, 30);
    track->Select();
    EXPECT_NE(draw(105), sleepers);
}

TEST(Rendering, TextsStayInTheirBoxes)
{
    RunInChild([] {
        if (!PinFonts()) {
            GTEST_SKIP() << "the fonts of fonts-dejavu-core are not installed";
        }
        for (const int size : {24, 400}) { // as glyphs and as areas
            for (const double angle : {0.0, 90.0}) {
                CBoundLayout layout;
                CTextBIG* text = Text("Hgj\xC4\nHgH", size);
                CCompositeGeometry* element = Add(layout, text, 70, 70);
                element->GetLayoutItemAttributes().angle = angle;
                tPictureOptions options = Options(700, 700);
                options.isExact = true;
                CLayoutRenderer renderer(layout, options);
                const CPixels pixels(DrawPicture(renderer, Platform::ePictureFormat::kPNG));
                DRect box = {};
                text->CalcBoundingBox(box, angle);
                const CPoint leftTop = renderer.ToPicture(CPoint(box.left + 70, box.top + 70, 0));
                const CPoint rightBottom = renderer.ToPicture(CPoint(box.right + 70, box.bottom + 70, 0));
                int inside = 0;
                int outside = 0;
                pixels.ForEach([&](int x, int y, const tPixel& pixel) {
                    const bool isInside =
                        x >= leftTop.x - 1 && x <= rightBottom.x && y >= leftTop.y - 1 && y <= rightBottom.y;
                    (isInside ? inside : outside) += pixel.alpha > 128 ? 1 : 0;
                });
                EXPECT_EQ(outside, 0) << size << " " << angle;
                EXPECT_GT(inside, 0.08 * (rightBottom.x - leftTop.x) * (rightBottom.y - leftTop.y));
            }
        }
    });
}

TEST(Rendering, AnyTextIsSoundInAPictureThatIsText)
{
    RunInChild([] { // the font libraries keep what they have opened
        std::string longText(64000, 'W');
        for (size_t i = 0; i + 7 <= longText.size(); i += 7) {
            longText.replace(i, 5, "</g>&");
            longText[i + 6] = static_cast<char>(i % 255 + 1);
        }
        CBoundLayout layout;
        Add(layout, Straight(100), 10, 60)->SetName("W<&>\"\1\xFF");
        Add(layout, Text(longText, 12));
        Add(layout, Text("tall", 2147483647));
        tPictureOptions options = Options(300, 300);
        options.hasLabels = true;
        CLayoutRenderer renderer(layout, options);
        const std::string svg = DrawPicture(renderer, Platform::ePictureFormat::kSVG);
        EXPECT_TRUE(pugi::xml_document().load_buffer(svg.data(), svg.size()));
        EXPECT_LT(svg.size(), 12000000u);
    });
}

TEST(Rendering, TheFrameHoldsLinesOfAnyThickness)
{
    for (const int style : {1, 102, 103, 105}) {
        for (const int thickness : {1, 9, 80, 900}) {
            auto* line = new CPolyBIG;
            line->SpecifyPolyGeometry(0, 0, {{0, 0, 0}, {300, 0, 0}, {300, 40, 0}}, 0, 1, 1);
            line->SetPolyCloseFlag(false);
            auto* circle = new COvalBIG;
            circle->SpecifyOvalGeometry(0, 0, 50, 1);
            for (CBasicGeometry* component : std::initializer_list<CBasicGeometry*>{line, circle, Square(100, 1, 2, 3),
                                                                                    Straight(400, 20, thickness, 0)}) {
                component->SetLineThickness(thickness);
                CBoundLayout layout;
                Add(layout, component);
                CLayoutRenderer renderer(layout, Options(120, 120, style));
                const CPixels pixels(DrawPicture(renderer, Platform::ePictureFormat::kPNG));
                int drawn = 0;
                int atEdge = 0;
                pixels.ForEach([&](int x, int y, const tPixel& pixel) {
                    drawn += pixel.alpha > 0 ? 1 : 0;
                    const bool inner = x > 0 && y > 0 && x < pixels.Width() - 1 && y < pixels.Height() - 1;
                    atEdge += pixel.alpha > 0 && !inner ? 1 : 0;
                });
                EXPECT_EQ(atEdge, 0) << style << " " << component->GetType() << " " << thickness;
                EXPECT_GT(drawn, 20);
            }
        }
    }
}

TEST(Rendering, StraysDoNotMakeTheLayoutADot)
{
    CBoundLayout layout;
    for (int i = 0; i < 40; ++i) {
        Add(layout, Straight(100), 100 * (i % 10), 60 * (i / 10));
    }
    CLayoutRenderer alone(layout, Options(500, 500));
    Add(layout, Straight(100), 900000, 0);
    Add(layout, Square(10, 1, 1, 1), 0, -1e9);
    CLayoutRenderer withStrays(layout, Options(500, 500));
    EXPECT_EQ(withStrays.GetNumberOfStrays(), 2u);
    EXPECT_EQ(withStrays.GetNumberOfElements(), 40u);
    EXPECT_DOUBLE_EQ(withStrays.GetScale(), alone.GetScale());
    EXPECT_EQ(alone.GetNumberOfStrays(), 0u);
}
