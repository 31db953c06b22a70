#include "Pictures.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CRecordedDrawing.h"
#include "Elements/Rendering/CComponentRenderer.h"
#include "Layers/CLayerManager.h"

#include <pugixml.hpp>

#include <cmath>
#include <limits>
#include <memory>

namespace {
constexpr double kGauge = 16.5;
constexpr double kBed = 40.0;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

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

CFlexTrackBIG* Flex(const std::vector<CPoint>& points, double bed = kBed)
{
    auto* track = new CFlexTrackBIG;
    track->SpecifyFlexGeometry(0, 0, points, 0, bed, 1e6);
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
    CTestPlan plan;
    CCompositeGeometry* straight = Add(plan.layout, Straight(300, 30), 100, 50);
    CCompositeGeometry* curve = Add(plan.layout, Curve(250, -75, 200), 600, 100);
    CCompositeGeometry* flex = Add(plan.layout, Flex({{0, 0, 0}, {150, 60, 0}, {300, 0, 0}, {420, 90, 0}}), 250, 500);
    for (const int style : {1, 4, 5}) {
        SCOPED_TRACE(style);
        CLayoutRenderer renderer(plan.layout, Options(2400, 2400, style));
        ASSERT_EQ(renderer.GetNumberOfElements(), 3u);
        const CPixels pixels(DrawPicture(renderer, Platform::ePictureFormat::kPNG));
        for (CCompositeGeometry* element : {straight, curve, flex}) {
            // From the outlines, which know nothing of drawing: at half the gauge they are where the rails are.
            CBasicGeometry* component = element->GetBIGAtIndex(0);
            const auto checkLines = [&](double distance, auto check) {
                std::vector<CPoint> line;
                component->DefineTrackItemOutline(element->GetAngle(), distance, line);
                for (size_t i = 0; i + 1 < line.size(); ++i) {
                    if (i + 1 != line.size() / 2) { // which runs across the track's end
                        const CPoint middle = (line[i] + line[i + 1]) * 0.5 + element->GetPosition();
                        const CPoint at = renderer.ToPicture(middle);
                        check(pixels.At(at.x, at.y));
                    }
                }
            };
            checkLines(0.01, [&](const tPixel& middle) {
                if (style == 1) {
                    EXPECT_LT(middle.Brightness(), 40);
                } else {
                    EXPECT_GT(middle.Brightness(), style == 4 ? 200 : 100); // on a bed, or on sleepers
                }
            });
            checkLines(kGauge / 2, [&](const tPixel& rail) {
                EXPECT_LT(rail.Brightness(), 115);
                EXPECT_EQ(rail.alpha, style == 1 ? 0 : 255);
            });
        }
    }
}

TEST(Rendering, DrawsByLayerThenByZOrderAndLeavesHiddenLayersOut)
{
    CTestPlan plan;
    CLayerManager* layers = plan.layout.GetLayerList();
    CLayer* lower = layers->AddLayer("lower");
    CLayer* upper = layers->AddLayer("upper");
    CCompositeGeometry* blue = Add(plan.layout, Square(100, 0, 0, 0xFFFF));
    CCompositeGeometry* red = Add(plan.layout, Square(100, 0xFFFF, 0, 0));
    CCompositeGeometry* green = Add(plan.layout, Square(100, 0, 0xFFFF, 0));
    blue->SetLayer(upper);
    red->SetLayer(lower);
    green->SetLayer(lower);
    red->SetZOrder(1000000);
    const auto top = [&](const tPictureOptions& options) {
        CLayoutRenderer renderer(plan.layout, options);
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
    CTestPlan plan;
    CCompositeGeometry* track = Add(plan.layout, Straight(300));
    const auto draw = [&](int style) {
        plan.layout.SetTrackStyle(style);
        CLayoutRenderer renderer(plan.layout, Options(600, 100));
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
    // Options of one's own count, whatever the element is like.
    const auto picture = Platform::BeginPicture(Platform::ePictureFormat::kPNG, 320, 60);
    track->Render(*picture, CDrawingOptions(2, true), 1.0);
    std::string bytes;
    EXPECT_TRUE(picture->Finish(bytes));
    EXPECT_EQ(CPixels(bytes).At(150, 16).red, 191);
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
                CTestPlan plan;
                CTextBIG* text = Text("Hgj\xC4\nHgH", size);
                CCompositeGeometry* element = Add(plan.layout, text, 70, 70);
                element->GetLayoutItemAttributes().angle = angle;
                tPictureOptions options = Options(700, 700);
                options.isExact = true;
                CLayoutRenderer renderer(plan.layout, options);
                const CPixels pixels(DrawPicture(renderer, Platform::ePictureFormat::kPNG));
                DRect box = {};
                text->CalcBoundingBox(box, angle);
                const CPoint leftTop = renderer.ToPicture(CPoint(box.left + 70, box.top + 70, 0));
                const CPoint rightBottom = renderer.ToPicture(CPoint(box.right + 70, box.bottom + 70, 0));
                double inside = 0;
                for (int i = 0; i < pixels.Width() * pixels.Height(); ++i) {
                    const int x = i % pixels.Width();
                    const int y = i / pixels.Width();
                    if (pixels.At(x, y).alpha > 128) {
                        ++inside;
                        ASSERT_TRUE(x >= leftTop.x - 1 && x <= rightBottom.x && y >= leftTop.y - 1 &&
                                    y <= rightBottom.y)
                            << size << " " << angle;
                    }
                }
                EXPECT_GT(inside, 0.08 * (rightBottom.x - leftTop.x) * (rightBottom.y - leftTop.y));
            }
        }
    });
}

TEST(TrackCourse, LinesBesideACurveKeepTheirDistance)
{
    constexpr double kRadius = 400.0;
    std::vector<CPoint> points;
    for (int i = 0; i <= 8; ++i) {
        const double angle = i * 20 * kRadiansPerDegree;
        points.emplace_back(kRadius * std::sin(angle), -kRadius * std::cos(angle), 0);
    }
    const std::unique_ptr<CFlexTrackBIG> track(Flex(points));
    const CTrackCourse course = CComponentRenderer::Find(kFlexTrackType)->MakeCourse(*track, {{0, 0}, 0});
    EXPECT_NEAR(course.GetLength(), track->GetTrackLength(), 1e-3 * track->GetTrackLength());
    for (const double distance : {0.0, kGauge / 2, -kGauge / 2, 150.0, -150.0}) {
        CRecordedDrawing drawing;
        course.AddTo(drawing, distance);
        ASSERT_GT(drawing.GetPoints().size(), 8u);
        for (const tVector2D& point : drawing.GetPoints()) {
            // Points on the lines, of Bezier pieces also between their ends.
            EXPECT_NEAR(std::hypot(point.x, point.y), kRadius - distance, 0.02);
        }
    }
    // A hairpin, tighter than the rails are apart: no rail comes nearer to the course than it should.
    const std::unique_ptr<CFlexTrackBIG> hairpin(Flex({{0, 0, 0}, {200, 0, 0}, {205, 4, 0}, {200, 8, 0}, {0, 60, 0}}));
    const CTrackCourse bent = CComponentRenderer::Find(kFlexTrackType)->MakeCourse(*hairpin, {{0, 0}, 0});
    CRecordedDrawing middle;
    CRecordedDrawing inner;
    bent.AddTo(middle, 0.0);
    bent.AddTo(inner, kGauge / 2);
    ASSERT_FALSE(inner.GetPoints().empty());
    for (const tVector2D& rail : inner.GetPoints()) {
        double nearest = kInfinity;
        for (const tVector2D& point : middle.GetPoints()) {
            nearest = std::min(nearest, std::hypot(rail.x - point.x, rail.y - point.y));
        }
        EXPECT_GT(nearest, kGauge / 2 - 0.3);
    }
}

static void DrawHostileLayouts()
{
    const std::vector<CPoint> oneSpot(10000, CPoint(5, 5, 0));
    std::string longText(64000, 'W');
    for (size_t i = 0; i + 7 <= longText.size(); i += 7) {
        longText.replace(i, 5, "</g>&");
        longText[i + 6] = static_cast<char>(i % 255 + 1);
    }
    struct tCase {
        const char* name;
        CBasicGeometry* component;
        double x;
    };
    // Owned by the layouts they are put into.
    const tCase cases[] = {
        {"infinitely long", Straight(kInfinity), 0},
        {"no length", Straight(0), 0},
        {"backwards", Straight(-50), 0},
        {"no angle", Straight(50, kNoNumber), 0},
        {"huge gauge", Straight(50, 0, 1e300), 0},
        {"no bed", Straight(50, 0, 0, 0), 0},
        {"far", Straight(50), 1e300},
        {"nowhere", Straight(50), kNoNumber},
        {"no radius", Curve(0, 30), 0},
        {"radius of minus the gauge", Curve(-kGauge, 30), 0},
        {"huge radius", Curve(1e300, 1e-299), 0},
        {"large radius", Curve(9e6, 1e-3), 0},
        {"no arc", Curve(100, 0), 0},
        {"many turns", Curve(100, -1e15), 0},
        {"one spot", Flex(oneSpot), 0},
        {"there and back", Flex({{0, 0, 0}, {100, 0, 0}, {0, 0, 0}, {100, 0, 0}}), 0},
        {"a spike", Flex({{0, 0, 0}, {1e12, 1, 0}, {2, 2, 0}}), 0},
        {"points without number", Flex({{0, 0, 0}, {kNoNumber, 5, 0}, {9, kInfinity, 0}, {40, 9, 0}}), 0},
        {"polygon without number", Square(kNoNumber, 1, 1, 1), 0},
        {"text of 64 kB", Text(longText, 12), 0},
        {"tallest text", Text("tall", 2147483647), 0},
    };
    for (const tCase& hostile : cases) {
        SCOPED_TRACE(hostile.name);
        CTestPlan plan;
        Add(plan.layout, Straight(100), 10, 10);
        Add(plan.layout, Straight(100), 10, 60)->SetName("W<&>\"\1\xFF");
        Add(plan.layout, hostile.component, hostile.x)->SetName("x");
        for (const int style : {1, 102, 103, 4, 5}) {
            tPictureOptions options;
            options.width = options.height = 300;
            options.hasLabels = options.hasGrid = true;
            options.trackStyle = style;
            CLayoutRenderer renderer(plan.layout, options);
            EXPECT_GE(renderer.GetScale(), 300 / 20000.0) << "the sound elements are a dot";
            CRecordedDrawing recorded;
            renderer.Draw(recorded);
            EXPECT_TRUE(recorded.IsFinite());
            EXPECT_LE(renderer.GetWidth(), 300);
            EXPECT_LE(renderer.GetHeight(), 300);
            const std::string svg = DrawPicture(renderer, Platform::ePictureFormat::kSVG);
            EXPECT_TRUE(pugi::xml_document().load_buffer(svg.data(), svg.size()));
            EXPECT_EQ(svg.find("nan"), std::string::npos);
            EXPECT_EQ(svg.find("inf"), std::string::npos);
            EXPECT_LT(svg.size(), 12000000u);
        }
    }
}

TEST(Rendering, HostileLayoutsGivePicturesWithFiniteNumbers)
{
    RunInChild(DrawHostileLayouts); // the font libraries keep what they have opened
}

TEST(Rendering, TheFrameHoldsLinesOfAnyThickness)
{
    const auto thick = [](CBasicGeometry* component, int thickness) {
        component->SetLineThickness(thickness);
        return component;
    };
    const auto line = [] {
        auto* open = new CPolyBIG;
        open->SpecifyPolyGeometry(0, 0, {{0, 0, 0}, {300, 0, 0}, {300, 40, 0}}, 0, 1, 1);
        open->SetPolyCloseFlag(false);
        return open;
    };
    const auto circle = [] {
        auto* oval = new COvalBIG;
        oval->SpecifyOvalGeometry(0, 0, 50, 1);
        return oval;
    };
    for (const int style : {1, 102, 103, 105}) {
        for (const int thickness : {1, 9, 80, 900}) {
            for (CBasicGeometry* component :
                 {thick(line(), thickness), thick(circle(), thickness), thick(Square(100, 1, 2, 3), thickness),
                  static_cast<CBasicGeometry*>(Straight(400, 20, thickness, 0))}) {
                CTestPlan plan;
                Add(plan.layout, component);
                CLayoutRenderer renderer(plan.layout, Options(120, 120, style));
                const CPixels pixels(DrawPicture(renderer, Platform::ePictureFormat::kPNG));
                int drawn = 0;
                for (int i = 0; i < pixels.Width() * pixels.Height(); ++i) {
                    const int x = i % pixels.Width();
                    const int y = i / pixels.Width();
                    drawn += pixels.At(x, y).alpha > 0 ? 1 : 0;
                    if (x == 0 || y == 0 || x == pixels.Width() - 1 || y == pixels.Height() - 1) {
                        ASSERT_EQ(pixels.At(x, y).alpha, 0) << style << " " << component->GetType() << " " << thickness;
                    }
                }
                EXPECT_GT(drawn, 20);
            }
        }
    }
}

TEST(Rendering, StraysDoNotMakeTheLayoutADot)
{
    CTestPlan plan;
    for (int i = 0; i < 40; ++i) {
        Add(plan.layout, Straight(100), 100 * (i % 10), 60 * (i / 10));
    }
    CLayoutRenderer alone(plan.layout, Options(500, 500));
    Add(plan.layout, Straight(100), 900000, 0);
    Add(plan.layout, Square(10, 1, 1, 1), 0, -1e9);
    CLayoutRenderer withStrays(plan.layout, Options(500, 500));
    EXPECT_EQ(withStrays.GetNumberOfStrays(), 2u);
    EXPECT_EQ(withStrays.GetNumberOfElements(), 40u);
    EXPECT_DOUBLE_EQ(withStrays.GetScale(), alone.GetScale());
    EXPECT_EQ(alone.GetNumberOfStrays(), 0u);
}

TEST(Pictures, AreRefusedBeyondTheirLimits)
{
    using Platform::BeginPicture;
    using Platform::ePictureFormat;
    for (const auto format : {ePictureFormat::kPNG, ePictureFormat::kSVG, ePictureFormat::kPDF}) {
        EXPECT_EQ(BeginPicture(format, 0, 10), nullptr);
        EXPECT_EQ(BeginPicture(format, 16000, 16000), nullptr);
        EXPECT_NE(BeginPicture(format, Platform::kMostPictureSide, 1), nullptr);
    }
    // Nothing at all is a picture, too.
    CTestPlan plan;
    plan.layout.SetWidthHeight(0, -5);
    CLayoutRenderer renderer(plan.layout, tPictureOptions());
    EXPECT_FALSE(DrawPicture(renderer, ePictureFormat::kPNG).empty());
}
