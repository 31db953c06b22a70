// Documents made to give large pictures, or pictures that take long.
#include "Pictures.h"

#include "Elements/Rendering/CMeasuredDrawing.h"
#include "support/DocumentBuilder.h"

#include <cmath>
#include <functional>

namespace {
/// A layout of elements of one kind, at random places within a square.
tLayout Crowd(int elements, int components, double side, const std::function<CRecords(CRandom&)>& make)
{
    CRandom random(elements);
    tLayout layout;
    for (int i = 0; i < elements; ++i) {
        tElement element;
        element.x = std::floor(random.Between(0, side));
        element.y = std::floor(random.Between(0, side));
        element.angle = i % 360;
        for (int k = 0; k < components; ++k) {
            element.components.push_back(make(random));
        }
        layout.elements.push_back(element);
    }
    return layout;
}

std::vector<tXY> RandomPoints(CRandom& random, int count, double side)
{
    std::vector<tXY> points(static_cast<size_t>(count));
    for (tXY& point : points) {
        point = {std::floor(random.Between(0, side)), std::floor(random.Between(0, side))};
    }
    return points;
}

void DrawCrowds()
{
    const tCommon track = {.gauge = 16.5, .trackbedWidth = 40};
    const struct {
        const char* name;
        tLayout layout;
    } cases[] = {
        {"points all over", Crowd(1, 1, 1, [&](CRandom& r) { return Flexible(track, RandomPoints(r, 2500, 3000)); })},
        {"points in a heap", Crowd(1, 1, 1, [&](CRandom& r) { return Flexible(track, RandomPoints(r, 2500, 40)); })},
        {"many sleepers", Crowd(4000, 1, 100, [&](CRandom&) { return Straight(track, 900); })},
        {"full circles", Crowd(2, 600, 500, [&](CRandom& r) { return Curve(track, r.Below(1500), 359); })},
        {"areas over areas", Crowd(9, 9, 9, [&](CRandom& r) { return Polygon(track, RandomPoints(r, 500, 3000)); })},
        {"letters", Crowd(20, 1, 900, [&](CRandom& r) { return Text({}, std::string(5000, '@'), 10 + r.Below(90)); })},
    };
    for (const auto& hostile : cases) {
        SCOPED_TRACE(hostile.name);
        const std::string bytes = Layout(hostile.layout).Bytes();
        CBoundLayout layout;
        ASSERT_EQ(layout.Load(WriteTestFile("crowd.velmora", bytes)), 0);
        for (const int style : {1, 102, 105}) {
            tPictureOptions options;
            options.width = options.height = 1000;
            options.trackStyle = style;
            options.documentSize = bytes.size();
            CMeasuredDrawing measured(1.0, false);
            CLayoutRenderer(layout, options).Draw(measured);
            // What is drawn together may look a little dearer than alone.
            EXPECT_LE(measured.GetWork(), 1.25 * (1e9 + 200.0 * 1e6 + 50.0 * static_cast<double>(bytes.size())))
                << style;
            options.isScalable = true;
            CLayoutRenderer scalable(layout, options);
            EXPECT_LE(DrawPicture(scalable, Platform::ePictureFormat::kSVG).size(), 20 * bytes.size() + 1000000);
            EXPECT_LT(scalable.GetNumberOfLeftOut(), scalable.GetNumberOfElements());
        }
    }
}
} // namespace

TEST(PictureBudget, HoldsForEveryDocument)
{
    RunInChild(DrawCrowds); // the font libraries keep what they have opened
}
