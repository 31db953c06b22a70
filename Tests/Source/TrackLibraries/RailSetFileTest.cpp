#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "Layers/CLayer.h"
#include "Layers/CLayerNameResolver.h"
#include "LibraryBuilder.h"
#include "TrackLibraries/CRailSet.h"
#include "support/Damage.h"
#include "support/ScratchFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <ctime>

using Platform::eReportLevel;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {
std::string Now()
{
    const time_t now = time(nullptr);
    tm local = {};
    localtime_r(&now, &local);
    char text[32];
    strftime(text, sizeof text, "%b %e. %Y, %T", &local);
    return text;
}

std::string LoadFailed(int left, const std::string& reason)
{
    return "int CRailSet::Load() - Failed to load element " + std::to_string(left) + ": " + reason;
}

std::vector<std::string> NamesOf(const CRailSet& library)
{
    std::vector<std::string> names;
    for (const CCompositeGeometry* element : library.GetGeometries()) {
        names.emplace_back(element->GetName());
    }
    return names;
}

/// A layout that is open meanwhile: knows every layer, and remembers whether it was asked.
class CEveryLayer : public CLayerNameResolver {
public:
    CEveryLayer() { CLayer::ConfigureLayerNameResolver(this); }
    ~CEveryLayer() override { CLayer::ConfigureLayerNameResolver(nullptr); }
    CLayer* GetLayer(const char* /*name*/) override
    {
        ++mAsked;
        return &mLayer;
    }

    int mAsked = 0;

private:
    CLayer mLayer{"Any"};
};
} // namespace

TEST(RailSetFile, SavesTenthsAndDates)
{
    const CLibraryFolder folder;
    CRailSet library(folder.PathOf("New"));
    tRailSetParameters& parameters = library.GetParameters();
    parameters.gauge = 16.5;
    parameters.trackbedWidth = 32.97; // rounded to a tenth
    parameters.railWidth = 1.2;
    library.SetCreationDate("an overlong date that is cut to its field");
    const std::string before = Now();
    ASSERT_TRUE(library.Save());
    const CRecords records = CRecords::OfDocument(folder.Read("New"));
    EXPECT_THAT((std::vector<int>{records.IntOf(104), records.IntOf(105), records.IntOf(106)}),
                ElementsAre(165, 330, 12));
    EXPECT_EQ(records.TextOf(114), "an overlong date that is cut to");
    EXPECT_THAT(records.TextOf(115), AnyOf(before, Now()));
    EXPECT_STREQ(parameters.modificationDate, records.TextOf(115).c_str());
}

TEST(RailSetFile, LoadsEverythingAndSavesItAgain)
{
    tLibrary source;
    source.scale = 12;
    source.contentType = 4;
    source.currency = -7;
    source.gauge = 165;
    source.railWidth = 12;
    source.manufacturer = "M\x8Aker";
    source.elements = {Article("100"), Article("101"), Article("102")};
    source.elements[0].library = "Another library";
    source.elements[0].prefix = "old";
    source.elements[0].layer = "A layer";
    source.elements[1].components = {Curve(AlignedTrack(), 360, 30), Text({}, "Text")};
    source.elements[2].version = 3;
    source.elements[2].price = 1234;

    const CLibraryFolder folder;
    CRailSet library(folder.Write("Lib", source));
    CReports reports;
    ASSERT_EQ(library.Load(), CRailSet::kLoaded);
    EXPECT_THAT(reports.mMessages, IsEmpty());
    EXPECT_EQ(library.GetFilename(), folder.PathOf("Lib"));
    EXPECT_EQ(library.GetModelScale(), 12);
    EXPECT_EQ(library.GetContentType(), ULibraryConstants::kContentDigital);
    EXPECT_EQ(library.GetParameters().currency, -7);
    EXPECT_EQ(library.GetParameters().gauge, 16.5);
    EXPECT_EQ(library.GetTrackbedWidth(), 33.0);
    EXPECT_EQ(library.GetRailWidth(), 1.2);
    EXPECT_STREQ(library.GetManufacturer(), "M\x8Aker");
    EXPECT_STREQ(library.GetParameters().modificationDate, "Jan  2. 2001, 00:00:00");
    EXPECT_THAT(NamesOf(library), ElementsAre("100", "101", "102"));

    // What a library imposes on its elements; a file keeps none of what they brought along.
    for (tElement& element : source.elements) {
        element.version = 4;
        element.library = "Lib";
        element.prefix = "Pre";
        element.currency = -7;
        element.scale = 12;
        element.layer = "";
        for (CRecords& component : element.components) {
            component.Replace(307, BytesOfDouble(33.0)).Replace(308, BytesOfDouble(1.2));
        }
    }
    source.elements[1].components[1].Replace(305, std::string(1, '\0')).Replace(306, std::string(1, '\0'));
    source.elements[1].components[1].Replace(326, SavedFontBlock());
    ASSERT_TRUE(library.Save());
    std::string saved = folder.Read("Lib");
    source.modificationDate = CRecords::OfDocument(saved).TextOf(115);
    EXPECT_NE(source.modificationDate, "Jan  2. 2001, 00:00:00");
    EXPECT_EQ(saved, Library(source).Bytes());
}

TEST(RailSetFile, TheFileNameIsTheLibraryName)
{
    const std::string longName(200, 'n');
    const struct {
        const char* what;
        std::string file;
        std::string name;
    } cases[] = {
        {"as it is, with its ending", "Code 83.velmora-library", "Code 83.velmora-library"},
        {"UTF-8 in the folder, Mac OS Roman in documents", "Gleispl\xC3\xA4ne", "Gleispl\x8Ane"},
        {"outside Mac OS Roman", "\xD0\x96", "\xD0\x96"},
        {"longer than its field", longName, longName.substr(0, 127)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const CLibraryFolder folder;
        tLibrary source;
        source.elements = {Article("100")};
        CRailSet library(folder.Write(c.file, source));
        ASSERT_EQ(library.Load(), CRailSet::kLoaded);
        EXPECT_EQ(library.GetGeometryAtIndex(0)->GetRailSetName(), c.name);
        library.GetGeometryAtIndex(0)->SetRailSetName("Old name");
        ASSERT_TRUE(library.Save());
        EXPECT_EQ(CRecords::OfDocument(folder.Read(c.file)).TextOf(210), c.name);
    }
}

TEST(RailSetFile, RefusedFilesLeaveTheDefaults)
{
    const CLibraryFolder folder;
    tLibrary source;
    source.gauge = 90;
    source.elements = {Article("100")};
    const std::string good = Library(source).Bytes();
    const auto withVersion = [&source](unsigned version) {
        source.version = version;
        return Library(source).Bytes();
    };
    const struct {
        const char* what;
        std::string path;
        int result;
    } cases[] = {
        {"missing", folder.PathOf("missing"), CRailSet::kCannotOpen},
        {"a folder opens, but cannot be read", folder.PathOf(""), CRailSet::kNoLibrary},
        {"empty", folder.Write("a", ""), CRailSet::kNoLibrary},
        {"shorter than a header", folder.Write("b", good.substr(0, 7)), CRailSet::kNoLibrary},
        {"another magic", folder.Write("c", "RSeT" + good.substr(4)), CRailSet::kNoLibrary},
        {"version 3", folder.Write("e", withVersion(3)), CRailSet::kUnsupportedVersion},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CRailSet library(c.path);
        CReports reports;
        EXPECT_EQ(library.Load(), c.result);
        EXPECT_EQ(reports.mMessages.size(), c.result == CRailSet::kCannotOpen ? 1u : 0u);
        EXPECT_EQ(library.GetSize(), 0u);
        EXPECT_EQ(library.GetParameters().gauge, 16.5);
        EXPECT_STREQ(library.GetManufacturer(), "-");
    }
}

TEST(RailSetFile, KeepsTheElementsBeforeAFault)
{
    tLibrary source;
    source.elements = {Article("1"), Article("2")};
    const CRecords good = Library(source);
    const auto withCount = [&good](int64_t count) {
        return CRecords(good).Replace(100, Bytes32(static_cast<uint32_t>(count)));
    };
    const std::string noHeader = "Element expected, bad header found.";
    const std::string unknownType = "Failed to open file";
    const struct {
        const char* what;
        CRecords file;
        int result;
        size_t kept;
        std::vector<std::string> messages;
    } cases[] = {
        {"fewer promised than stored", withCount(1), 0, 1, {}},
        {"one missing at the end is no failure", withCount(3), 0, 2, {LoadFailed(0, noHeader)}},
        {"very many promised", withCount(INT_MAX), 1, 2, {LoadFailed(INT_MAX - 3, noHeader)}},
        {"negative", withCount(-1), 0, 0, {}},
        {"the last one damaged", CRecords(good).Replace(300, Bytes32(7), 1), 0, 1, {LoadFailed(0, unknownType)}},
        {"the one before it damaged", CRecords(good).Replace(300, Bytes32(7)), 1, 0, {LoadFailed(1, unknownType)}},
        {"count of two bytes", CRecords(good).Replace(100, Bytes16(2)), 0, 0, {}},
        {"count without data", CRecords(good).Replace(100, ""), 0, 0, {}},
        {"no count", CRecords(good).Remove(100), 0, 0, {}},
    };
    const CLibraryFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CRailSet library(folder.Write("Lib", c.file.Bytes()));
        CReports reports;
        EXPECT_EQ(library.Load(), c.result);
        EXPECT_EQ(library.GetSize(), c.kept);
        std::vector<std::string> warnings;
        for (const auto& [level, text] : reports.mMessages) {
            if (level == eReportLevel::kWarning) {
                warnings.push_back(text);
            }
        }
        EXPECT_EQ(warnings, c.messages);
    }
}

TEST(RailSetFile, MissingAndOverlongRecords)
{
    tLibrary source;
    source.elements = {Article("1")};
    const CLibraryFolder folder;
    const struct {
        const char* what;
        int key; ///< whose record is empty, so that the search for it ends at once
        double gauge, trackbedWidth, railWidth;
        int contentType;
    } widths[] = {
        {"no content type", 102, 16.5, 33.0, 0.9, 0},
        {"no gauge", 104, 0.0, 33.0, 0.9, 1},
        {"no trackbed: as the gauge", 105, 16.5, 16.5, 0.9, 1},
        {"no rails: as the trackbed", 106, 16.5, 33.0, 33.0, 1},
    };
    for (const auto& c : widths) {
        SCOPED_TRACE(c.what);
        CRailSet library(folder.Write("Lib", Library(source).Replace(c.key, "").Bytes()));
        EXPECT_EQ(library.Load(), CRailSet::kLoaded);
        EXPECT_EQ(library.GetSize(), 1u);
        EXPECT_EQ(library.GetParameters().gauge, c.gauge);
        EXPECT_EQ(library.GetTrackbedWidth(), c.trackbedWidth);
        EXPECT_EQ(library.GetRailWidth(), c.railWidth);
        EXPECT_EQ(library.GetContentType(), c.contentType);
    }

    CRecords overlong = Library(source);
    for (int key = 107; key <= 115; ++key) { // without a zero at their end
        overlong.Replace(key, std::string(65535, 'a'));
    }
    CRailSet library(folder.Write("Lib", overlong.Bytes()));
    EXPECT_EQ(library.Load(), CRailSet::kLoaded);
    EXPECT_EQ(library.GetSize(), 1u);
    EXPECT_EQ(library.GetManufacturer(), std::string(127, 'a'));
    EXPECT_EQ(library.GetParameters().prefix, std::string(7, 'a'));
}

TEST(RailSetFile, CutOrChangedAnywhereItLoadsWithACode)
{
    tLibrary source;
    source.elements = {Article("0"), Article("1"), Article("2")};
    source.elements[1].components = {Flexible(AlignedTrack(), {{0, 16.5}, {100, 20}}, 940), Text({}, "Text")};
    const std::string good = Library(source).Bytes();
    ForEachCut(good, [&](std::string_view part) {
        const CScratchFile file(part);
        CRailSet library(file.Path());
        const int result = library.Load();
        const int missing = part.size() >= 16 ? 3 - static_cast<int>(library.GetSize()) : 0;
        EXPECT_EQ(result, part.size() < 8 ? CRailSet::kNoLibrary
                          : missing > 1   ? CRailSet::kElementFailed
                                          : CRailSet::kLoaded);
        EXPECT_TRUE(part.size() > good.find("RCig") || library.GetSize() == 0);
    });
    ForEachReplacedByte(good, [&](std::string_view damaged) {
        const CScratchFile file(damaged);
        const int result = CRailSet(file.Path()).Load();
        const bool magic = damaged.starts_with("RSet");
        const bool version = damaged.substr(4, 4) == good.substr(4, 4);
        EXPECT_THAT(result, !magic ? AnyOf(3, 3) : !version ? AnyOf(4, 4) : AnyOf(0, 1));
    });
}

TEST(RailSetFile, LayersOfAnOpenLayoutAreNotAskedFor)
{
    tLibrary source;
    source.elements = {Article("0"), Article("1"), Article("2")};
    for (tElement& element : source.elements) {
        element.layer = "Any";
    }
    const std::string good = Library(source).Bytes();
    for (const size_t size : {good.size(), good.rfind("RCig"), good.find("RCig"), size_t{8}, size_t{0}}) {
        SCOPED_TRACE(size);
        const CScratchFile file(good.substr(0, size));
        CRailSet library(file.Path());
        CEveryLayer layers;
        library.Load();
        EXPECT_EQ(layers.mAsked, 0);
        EXPECT_EQ(CLayer::GetLayerNameResolver(), &layers);
        for (const CCompositeGeometry* element : library.GetGeometries()) {
            EXPECT_EQ(element->GetLayer(), nullptr);
        }
    }
    const CScratchFile file(good);
    CRailSet withoutResolver(file.Path());
    EXPECT_EQ(withoutResolver.Load(), CRailSet::kLoaded);
    EXPECT_EQ(CLayer::GetLayerNameResolver(), nullptr);
}

TEST(RailSetFile, ASaveThatFailsChangesNothing)
{
    CRailSet nowhere(TestPath("no/such/folder/Lib"));
    auto* element = new CCompositeGeometry;
    element->SetRailSetName("Old name");
    nowhere.Append(element);
    EXPECT_FALSE(nowhere.Save());
    EXPECT_STREQ(element->GetRailSetName(), "Old name");
    EXPECT_STREQ(nowhere.GetParameters().modificationDate, "-");
#if defined(__linux__)
    CRailSet full("/dev/full");
    full.Append(new CCompositeGeometry);
    EXPECT_FALSE(full.Save());
#endif
}
