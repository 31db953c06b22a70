#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "Layers/CLayer.h"
#include "Layers/CLayerManager.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "LibraryBuilder.h"
#include "TrackLibraries/CRailSet.h"
#include "support/ScratchFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

using Platform::eReportLevel;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
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
    ASSERT_TRUE(library.Save());
    const CRecords records = CRecords::OfDocument(folder.Read("New"));
    EXPECT_THAT((std::vector<int>{records.IntOf(104), records.IntOf(105), records.IntOf(106)}),
                ElementsAre(165, 330, 12));
    EXPECT_EQ(records.TextOf(114), "an overlong date that is cut to");
    EXPECT_THAT(records.TextOf(115),
                testing::MatchesRegex("[A-Z][a-z]{2} [ 123][0-9]\\. [0-9]{4}, [0-9]{2}(:[0-9]{2}){2}"));
    EXPECT_STREQ(parameters.modificationDate, records.TextOf(115).c_str());
}

TEST(RailSetFile, LoadsEverythingAndSavesItAgain)
{
    tLibrary source = {.scale = 12, .contentType = 4, .currency = -7, .railWidth = 12, .manufacturer = "M\x8A"};
    source.elements = {Article("100"), Article("101"), Article("102")};
    source.elements[0].library = "Another library";
    source.elements[0].prefix = "old";
    source.elements[0].layer = "A layer";
    source.elements[1].components = {Curve(AlignedTrack(), 360, 30), Text({}, "Text")};
    source.elements[2].version = 3;
    source.elements[2].price = 1234;

    const CLibraryFolder folder;
    const char kName[] = "Gleispl\xC3\xA4ne";
    CRailSet library(folder.Write(kName, source));
    CReports reports;
    ASSERT_EQ(library.Load(), CRailSet::kLoaded);
    EXPECT_THAT(reports.mMessages, IsEmpty());
    EXPECT_EQ(library.GetFilename(), folder.PathOf(kName));
    EXPECT_EQ(library.GetContentType(), ULibraryConstants::kContentDigital);
    EXPECT_EQ(library.GetParameters().gauge, 16.5);
    EXPECT_STREQ(library.GetManufacturer(), "M\x8A");
    EXPECT_THAT(NamesOf(library), ElementsAre("100", "101", "102"));

    // What a library imposes on its elements; a file keeps none of what they brought along.
    for (tElement& element : source.elements) {
        element.version = 4;
        element.library = "Gleispl\x8Ane"; // in Mac OS Roman
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
    std::string saved = folder.Read(kName);
    source.modificationDate = CRecords::OfDocument(saved).TextOf(115);
    EXPECT_NE(source.modificationDate, "Jan  2. 2001, 00:00:00");
    EXPECT_EQ(saved, Library(source).Bytes());
}

TEST(RailSetFile, RefusedFilesLeaveTheDefaults)
{
    const CLibraryFolder folder;
    tLibrary source = {.version = 3, .gauge = 90, .elements = {Article("100")}};
    const std::string newer = Library(source).Bytes();
    source.version = 2;
    const std::string good = Library(source).Bytes();
    const std::pair<std::string, int> cases[] = {
        {folder.PathOf("missing"), CRailSet::kCannotOpen},
        {folder.PathOf(""), CRailSet::kNoLibrary}, // a folder opens, but cannot be read
        {folder.Write("short", good.substr(0, 7)), CRailSet::kNoLibrary},
        {folder.Write("another magic", "RSeT" + good.substr(4)), CRailSet::kNoLibrary},
        {folder.Write("newer", newer), CRailSet::kUnsupportedVersion},
    };
    for (const auto& [path, result] : cases) {
        SCOPED_TRACE(path);
        CRailSet library(path);
        CReports reports;
        EXPECT_EQ(library.Load(), result);
        EXPECT_EQ(reports.mMessages.size(), result == CRailSet::kCannotOpen ? 1u : 0u);
        EXPECT_EQ(library.GetSize(), 0u);
        EXPECT_EQ(library.GetParameters().gauge, 16.5);
    }
}

TEST(RailSetFile, KeepsTheElementsBeforeAFault)
{
    const CRecords good = Library({.elements = {Article("1"), Article("2")}});
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
        {"count without data", CRecords(good).Replace(100, ""), 0, 0, {}},
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

TEST(RailSetFile, WhatMissingRecordsLeave)
{
    const tLibrary source = {.elements = {Article("1")}};
    const CLibraryFolder folder;
    const struct {
        int key; ///< whose record is empty, so that the search for it ends at once
        double gauge, trackbedWidth, railWidth;
        int contentType;
    } widths[] = {
        {102, 16.5, 33.0, 0.9, 0},
        {104, 0.0, 33.0, 0.9, 1},
        {105, 16.5, 16.5, 0.9, 1},  // the trackbed as the gauge
        {106, 16.5, 33.0, 33.0, 1}, // the rails as the trackbed
    };
    for (const auto& c : widths) {
        SCOPED_TRACE(c.key);
        CRailSet library(folder.Write("Lib", Library(source).Replace(c.key, "").Bytes()));
        EXPECT_EQ(library.Load(), CRailSet::kLoaded);
        EXPECT_EQ(library.GetSize(), 1u);
        const tRailSetParameters& parameters = library.GetParameters();
        EXPECT_THAT((std::vector<double>{parameters.gauge, library.GetTrackbedWidth(), library.GetRailWidth()}),
                    ElementsAre(c.gauge, c.trackbedWidth, c.railWidth));
        EXPECT_EQ(library.GetContentType(), c.contentType);
    }
}

TEST(RailSetFile, LayersOfAnOpenLayoutAreNotAskedFor)
{
    CBoundLayout open;
    const char* const layer = open.GetLayerList()->GetLayerAtIndex(0)->GetName();
    tLibrary source = {.elements = {Article("0"), Article("1")}};
    source.elements[0].layer = source.elements[1].layer = layer;
    const std::string good = Library(source).Bytes();
    for (const size_t size : {good.size(), good.rfind("RCig"), size_t{0}}) {
        SCOPED_TRACE(size);
        const CScratchFile file(good.substr(0, size));
        CRailSet library(file.Path());
        library.Load();
        for (const CCompositeGeometry* element : library.GetGeometries()) {
            EXPECT_EQ(element->GetLayer(), nullptr);
        }
        EXPECT_NE(CLayer::GetLayerByName(layer), nullptr); // asked for again
    }
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
}
