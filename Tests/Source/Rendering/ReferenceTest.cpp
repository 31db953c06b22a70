// The sample layouts, compared with pictures that somebody has looked at. With VELMORA_WRITE_PICTURES set the test
// writes them anew: look at them before they are committed.
#include "Pictures.h"
#include "support/Files.h"

namespace {
/// Pixels whose colour may differ by more than kSlight, of a thousand: what another version of the drawing library or
/// of the font does at edges.
constexpr int kMostDifferent = 8;
constexpr int kSlight = 48;

struct tReference {
    const char* picture;
    const char* layout;
    int width;
    int style; ///< 0: the layout's own
    bool isLabelled;
};

constexpr tReference kReferences[] = {
    {"oval", "oval", 640, 0, false},         {"oval-labels", "oval", 900, 0, true},
    {"oval-line", "oval", 320, 1, false},    {"oval-filled", "oval", 320, 2, false},
    {"oval-plan", "oval", 480, 103, false},  {"oval-bed", "oval", 320, 4, false},
    {"terminus", "terminus", 900, 0, false},
};

void Compare(const tReference& reference)
{
    CBoundLayout layout;
    ASSERT_EQ(layout.Load(std::string(SOURCE_FOLDER "/Samples/") + reference.layout + ".velmora"), 0);
    tPictureOptions options;
    options.width = options.height = reference.width;
    options.trackStyle = reference.style;
    options.hasLabels = options.hasGrid = reference.isLabelled;
    CLayoutRenderer renderer(layout, options);
    const std::string drawn = DrawPicture(renderer, Platform::ePictureFormat::kPNG);
    const std::string path = std::string(TEST_DATA "/pictures/") + reference.picture + ".png";
    if (getenv("VELMORA_WRITE_PICTURES") != nullptr) {
        WriteFile(path, drawn);
    }
    const CPixels now(drawn);
    const CPixels before(ReadFile(path));
    ASSERT_EQ(now.Width(), before.Width());
    ASSERT_EQ(now.Height(), before.Height());
    int different = 0;
    now.ForEach([&](int x, int y, const tPixel& one) {
        const tPixel other = before.At(x, y);
        const int most = std::max({std::abs(one.red - other.red), std::abs(one.green - other.green),
                                   std::abs(one.blue - other.blue), std::abs(one.alpha - other.alpha)});
        different += most > kSlight ? 1 : 0;
    });
    EXPECT_LE(different * 1000LL, static_cast<long long>(now.Width()) * now.Height() * kMostDifferent) << different;
}
} // namespace

TEST(ReferencePictures, OfTheSamplesStayAsTheyWere)
{
    RunInChild([] {
        if (!PinFonts()) {
            GTEST_SKIP() << "the fonts of fonts-dejavu-core are not installed";
        }
        for (const tReference& reference : kReferences) {
            SCOPED_TRACE(reference.picture);
            Compare(reference);
        }
    });
}
