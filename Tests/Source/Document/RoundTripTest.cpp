#include "BuildingBlocks/CCompositeGeometry.h"
#include "TestLayout.h"
#include "UnitLength/URailConstants.h"
#include "support/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {
/// What aligning moves and two cuts to seven decimals leave uncertain, mm.
constexpr double kPlaceTolerance = 5e-7;

/// The documents of the test data and the samples.
std::vector<fs::path> Documents()
{
    std::vector<fs::path> paths;
    for (const fs::path& folder : {fs::path(TEST_DATA) / "documents", fs::path(SOURCE_FOLDER) / "Samples"}) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".velmora") {
                paths.push_back(entry.path());
            }
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

bool HasTurnedText(CLayout& layout)
{
    const auto isText = [](const CBasicGeometry* component) { return component->GetType() == kTextType; };
    return std::any_of(layout.GetElements().begin(), layout.GetElements().end(), [&isText](const auto* element) {
        const auto& components = element->GetComponents();
        return element->GetAngle() != 0.0 && std::any_of(components.begin(), components.end(), isText);
    });
}

/// A text record up to its zero, cut to its field.
std::string Cut(const std::string& data, size_t capacity)
{
    return data.substr(0, std::min(data.find('\0'), capacity - 1)) + '\0';
}

/// Holds a saved document against the one it was loaded from, record by record. Every difference but those that a load
/// and a save make by rule is a failure.
class CComparison {
public:
    CComparison(const CRecords& source, const CRecords& saved) : mSource(source.Pieces()), mSaved(saved.Pieces())
    {
        for (size_t i = 0; i < saved.CountOf(501); ++i) {
            mLayers.insert(saved.TextOf(501, i));
        }
    }

    /// @return how many records of the source no reader asks for
    size_t Run()
    {
        mVersion = IntOfBytes(std::string_view(mSource[0].data).substr(4));
        size_t at = 1; // behind the header
        size_t skipped = 0;
        for (size_t i = 1; i < mSaved.size() && !testing::Test::HasFailure(); ++i) {
            const CRecords::tPiece& saved = mSaved[i];
            SCOPED_TRACE("key " + std::to_string(saved.key) + ", record " + std::to_string(i));
            if (!IsInSource(saved.key)) {
                continue;
            }
            while (at < mSource.size() && mSource[at].key != saved.key) {
                ++at;
                ++skipped;
            }
            if (at == mSource.size()) {
                ADD_FAILURE() << "saved, but not in the source";
                break;
            }
            Compare(mSource[at++], saved);
        }
        return skipped + mSource.size() - at;
    }

private:
    /// Whether the versions of the source and of its current element have that record.
    bool IsInSource(int key) const
    {
        if (key == 426 || key == 427 || (key >= 500 && key <= 503)) {
            return mVersion >= 4;
        }
        if (key >= 428 && key <= 430) {
            return mVersion >= 5;
        }
        return key < 217 || key > 225 || mElementVersion == 4;
    }

    void Compare(const CRecords::tPiece& source, const CRecords::tPiece& saved)
    {
        static const std::map<int, size_t> kTexts = {{400, 128}, {402, 32},  {404, 4096}, {405, 1024},
                                                     {406, 128}, {407, 32},  {207, 32},   {208, 64},
                                                     {209, 32},  {210, 128}, {211, 8},    {327, 2048}};
        if (const auto text = kTexts.find(source.key); text != kTexts.end()) {
            EXPECT_EQ(saved.data, Cut(source.data, text->second));
            if (source.key == 207) {
                mNameIsNew = mNames.insert(saved.data).second;
            }
            return;
        }
        switch (source.key) {
        case CRecords::kRaw: // an element of any version becomes one of version 4
            mType = 0;
            mElementVersion = IntOfBytes(std::string_view(source.data).substr(4));
            EXPECT_EQ(saved.data, std::string("RCig\0\0\0\4", 8));
            break;
        case 401:
            EXPECT_EQ(saved.data, std::string("3F3F3F\0", 7));
            break;
        case 403: // the time of saving
        case 417: // the factor of the layout that was saved
            break;
        case 200:
        case 201:
            mMoved[source.key - 200] = DoubleOfBytes(saved.data) - DoubleOfBytes(source.data);
            break;
        case 301:
        case 302:
            EXPECT_NEAR(DoubleOfBytes(saved.data) + mMoved[source.key - 301], DoubleOfBytes(source.data),
                        kPlaceTolerance);
            break;
        case 204:
            EXPECT_EQ(saved.data, BytesOfColour({0, 0, 0}));
            break;
        case 213:
            if (mNameIsNew) { // the price of an article is that of its first element
                EXPECT_EQ(saved.data, source.data);
            }
            break;
        case 215:
            mScale = IntOfBytes(source.data);
            EXPECT_EQ(saved.data, source.data);
            break;
        case 217:
            EXPECT_EQ(saved.data,
                      mLayers.count(Cut(source.data, 64).c_str()) != 0 ? Cut(source.data, 64) : std::string(1, '\0'));
            break;
        case 501:
            EXPECT_TRUE(saved.data.starts_with(source.data.substr(0, std::min<size_t>(source.data.size() - 1, 63))));
            break;
        case 300: // a flexible track's is followed by that of its polygon
            mType = mType != kFlexTrackType ? IntOfBytes(source.data) : kFlexTrackType + 1;
            EXPECT_EQ(saved.data, source.data);
            break;
        case 305:
        case 306: {
            const bool track = mType == kStraightType || mType == kCurveType || mType > kFlexTrackType;
            EXPECT_EQ(saved.data, track ? source.data : std::string(1, '\0'));
            break;
        }
        case 308:
            EXPECT_EQ(saved.data, BytesOfDouble(URailConstants::GetDefaultRailWidth(mScale)));
            break;
        case 326:
            EXPECT_EQ(saved.data, SavedFontBlock());
            break;
        case 425: // every negative parent stands for none
            EXPECT_EQ(std::max(IntOfBytes(saved.data), -1), std::max(IntOfBytes(source.data), -1));
            break;
        default:
            EXPECT_EQ(saved.data, source.data);
        }
    }

    const std::vector<CRecords::tPiece> mSource;
    const std::vector<CRecords::tPiece> mSaved;
    std::set<std::string> mLayers;
    std::set<std::string> mNames;
    bool mNameIsNew = false;
    double mMoved[2] = {};
    int mVersion = 0;
    int mElementVersion = 0;
    int mScale = 16;
    int mType = 0;
};

/// The document as it was saved, without what the time changes and, if `places` is false, without where elements and
/// components lie.
std::string Comparable(const CRecords& saved, bool places)
{
    CRecords result;
    for (const CRecords::tPiece& piece : saved.Pieces()) {
        const bool isPlace = piece.key == 200 || piece.key == 201 || piece.key == 301 || piece.key == 302;
        if (piece.key != 403 && (places || !isPlace)) {
            result.Record(piece.key == CRecords::kRaw ? 0 : piece.key, piece.data);
        }
    }
    return result.Bytes();
}

/// Saves what was loaded, loads that and saves it again: both saves are the same. Where texts stand in turned elements,
/// whose box does not follow their offset, each load shifts offsets and position against each other by the same amount.
void ExpectStableSaves(CTestLayout& layout)
{
    const CRecords first = layout.Saved();
    CTestLayout again;
    ASSERT_EQ(again.LoadRecords(first), CLayout::kLoaded);
    const CRecords second = again.Saved();
    const bool places = !HasTurnedText(layout);
    EXPECT_TRUE(Comparable(first, places) == Comparable(second, places));
    if (!places) {
        EXPECT_EQ(CComparison(first, second).Run(), 0U);
    }
}
} // namespace

TEST(RoundTrip, GeneratedDocumentsKeepEveryField)
{
    for (uint64_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        tLayout source = RandomLayout(seed, static_cast<int>(seed % 23), seed % 3 == 0);
        source.version = seed % 5 == 1 ? 3 : seed % 5 == 2 ? 4 : 5;
        for (size_t i = 0; i < source.elements.size(); i += seed % 4 + 2) {
            source.elements[i].version = 3;
        }
        if (source.version == 3) { // no section, so one layer that nobody can name
            for (tElement& element : source.elements) {
                element.layer.clear();
            }
        }
        CTestLayout layout;
        ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
        EXPECT_EQ(CComparison(Layout(source), layout.Saved()).Run(), 0U);
        ExpectStableSaves(layout);
        if (HasFailure()) {
            break;
        }
    }
}

TEST(RoundTrip, StoredDocumentsKeepEveryField)
{
    size_t compared = 0;
    size_t loaded = 0;
    for (const fs::path& path : Documents()) {
        SCOPED_TRACE(path.filename().string());
        const std::string bytes = ReadFile(path.string());
        CTestLayout layout;
        const int code = layout.LoadBytes(bytes);
        if (code != CLayout::kLoaded) { // which codes belong to which is tested through the plug-in
            continue;
        }
        ++loaded;
        ExpectStableSaves(layout);
        // Those that are whole, with records nobody asks for in between, are held against their first save as well.
        if (path.filename().string().starts_with("valid-") || path.parent_path().filename() == "Samples") {
            ++compared;
            CComparison(CRecords::OfDocument(bytes), layout.Saved()).Run();
        }
        if (HasFailure()) {
            break;
        }
    }
    EXPECT_GT(loaded, 30U);
    EXPECT_GT(compared, 10U);
}

TEST(RoundTrip, ZoomIsThatOfTheLayoutNotOfTheFile)
{
    CTestLayout layout;
    layout.SetZoomFactor(1.2345);
    tLayout source;
    source.zoom = 50;
    ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
    EXPECT_EQ(layout.GetZoomFactor(), 1.2345);
    EXPECT_EQ(layout.Saved().IntOf(417), 123);
}

TEST(RoundTrip, SavingAnswersWhetherTheFileIsThere)
{
    const CTestFolder folder;
    CTestLayout layout;
    EXPECT_FALSE(layout.Save(nullptr)); // no name yet
    const std::string missing = folder.PathOf("missing/file");
    EXPECT_FALSE(layout.Save(&missing));
    const std::string path = folder.PathOf("layout.velmora");
    EXPECT_TRUE(layout.Save(&path));
    EXPECT_EQ(layout.GetFilename(), path);
    CTestLayout again;
    EXPECT_EQ(again.Load(path), CLayout::kLoaded);
    again.SetAuthor("Third");
    EXPECT_TRUE(again.Save(nullptr)); // the file it was loaded from
    EXPECT_EQ(CRecords::OfDocument(ReadFile(path)).TextOf(400), "Third");
#if defined(__linux__)
    // So many elements that the device is found full before the end.
    const std::string full = "/dev/full";
    CTestLayout large;
    ASSERT_EQ(large.LoadRecords(Layout(RandomLayout(1, 400, false))), CLayout::kLoaded);
    EXPECT_FALSE(large.Save(&full));
#endif
}
