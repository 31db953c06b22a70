#include "Common/Reports.h"
#include "LibraryBuilder.h"
#include "TrackLibraries/CRailsetBuffer.h"
#include "TrackLibraries/CRailsetFolder.h"
#include "TrackLibraries/Utilities/ULibraryFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Platform::eReportLevel;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {
/// A registry of its own for each test; the one of the process never forgets.
class CRegistry : public CRailsetFolder {};

tLibrary LibraryOf(const std::string& manufacturer, std::vector<std::string> articles, int scale = 16, int type = 1)
{
    tLibrary library = {.scale = scale, .contentType = type, .manufacturer = manufacturer};
    for (const std::string& article : articles) {
        library.elements.push_back(Article(article));
    }
    return library;
}
} // namespace

TEST(RailsetFolder, SaysWhatItRegisters)
{
    const CLibraryFolder folder;
    const std::string first = folder.Write("1/Lib", LibraryOf("M", {"100"}, 11, 5));
    const std::string second = folder.Write("2/Lib", LibraryOf("M", {"200"}, 16, 3));
    const std::string third = folder.Write("3/Lib", LibraryOf("M", {}, 16, 1));
    const std::string bad = folder.Write("bad", "RSetX");
    const std::string damaged =
        folder.Write("damaged", Library({.elements = {Article("1")}}).Replace(100, Bytes32(9)).Bytes());
    CRegistry registry;
    CReports reports;
    registry.InitializeWithPaths({first, second, third, bad, first, damaged});
    const std::string opening = "int CRailSet::Load() - Failed to load element 7: Element expected, bad header found.";
    EXPECT_THAT(reports.mMessages,
                ElementsAre(Pair(eReportLevel::kInfo, "Initializing libraries (6 found)"),
                            Pair(eReportLevel::kDebug, "Adding library 'Lib', scale Z (Symbols)"),
                            Pair(eReportLevel::kInfo, "Library 'Lib' already exists. Creating unique name 'Lib*'."),
                            Pair(eReportLevel::kDebug, "Adding library 'Lib', scale H0 (Slot Car)"),
                            // The second entry bears the plain name, too, so there is no 'Lib*' to make unique.
                            Pair(eReportLevel::kInfo, "Library 'Lib' already exists. Creating unique name 'Lib*'."),
                            Pair(eReportLevel::kDebug, "Adding library 'Lib', scale H0 (Tracks)"),
                            Pair(eReportLevel::kWarning, "Error adding library " + bad),
                            Pair(eReportLevel::kWarning, "Duplicate library " + first + " ignored"),
                            Pair(eReportLevel::kWarning, opening),
                            Pair(eReportLevel::kWarning, "Error adding library " + damaged)));

    const tRSDiskEntry* const entry = registry.GetRailsetEntry("Lib");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->path, first);
    for (const char* unknown : {"Lib*", "lib", "bad"}) {
        EXPECT_FALSE(registry.ContainsRailset(unknown)) << unknown;
    }

    std::vector<const tRSDiskEntry*> entries = {entry};
    EXPECT_EQ(registry.GetRailsetEntries(entries, 11, 1), 0);
    EXPECT_THAT(entries, IsEmpty());
    EXPECT_EQ(registry.GetRailsetEntries(entries, 11, 5), 1);
    EXPECT_THAT(entries, ElementsAre(entry));
}

TEST(RailsetFolder, ArticlesAreLookedForAtTheirManufacturerFirst)
{
    const CLibraryFolder folder;
    CRegistry registry;
    registry.InitializeWithPaths({folder.Write("A", LibraryOf("One", {"100", "200"})),
                                  folder.Write("B", LibraryOf("Two", {"200", "300"})),
                                  folder.Write("C", LibraryOf("Two", {"300", "400"}))});
    const struct {
        const char* manufacturer;
        const char* article;
        const char* library; ///< empty for none
    } cases[] = {{"Two", "200", "B"}, {"Two", "300", "B"}, {"Two", "400", "C"},
                 {"Two", "100", "A"}, {"two", "200", "A"}, {"Two", "500", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.manufacturer) + " " + c.article);
        std::string name;
        EXPECT_EQ(registry.FindLibraryForElement(c.manufacturer, c.article, name), *c.library != 0);
        EXPECT_EQ(name, c.library);
    }
}

TEST(RailsetFolder, TheBufferLoadsALibraryOnce)
{
    const CLibraryFolder folder;
    CRailsetBuffer buffer;
    EXPECT_EQ(buffer.GetRailset("Buffered"), nullptr);
    const std::string path = folder.Write("Buffered", LibraryOf("M", {"100", "101", "102"}));
    CRailsetFolder::Instance()->InitializeWithPaths({path});

    CRailSet* const library = buffer.GetRailset("Buffered");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(library->GetSize(), 3u);
    const std::string bytes = folder.Read("Buffered");
    folder.Write("Buffered", bytes.substr(0, bytes.rfind("RCig") - 1));
    EXPECT_EQ(buffer.GetRailset("Buffered"), library);

    CRailsetBuffer another; // keeps what could be read of a damaged library
    ASSERT_NE(another.GetRailset("Buffered"), nullptr);
    EXPECT_EQ(another.GetRailset("Buffered")->GetSize(), 2u);
    another.CloseAllRailsets();
}

TEST(LibraryName, IsComposedAndInMacOSRoman)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/a/Gleispl\xC3\xA4ne", "Gleispl\x8Ane"},      {"/a/Gleispla\xCC\x88ne", "Gleispl\x8Ane"},
        {"A\xCC\x8A\xC2\xB7o\xCC\x88", "\x81\xE1\x9A"}, {"/a/\xE2\x84\xA6", "\xBD"},
        {"/a/Gleispl\x8Ane", "Gleispl\x8Ane"},          {"/a/\xD0\xB8\xCC\x86", "\xD0\xB9"},
        {"/a/a\xCC\x88 \xE4", "a\xCC\x88 \xE4"},
    };
    for (const auto& [path, name] : cases) {
        EXPECT_EQ(ULibraryFiles::GetLibraryName(path), name) << path;
    }
    const CLibraryFolder folder;
    CRegistry registry;
    registry.InitializeWithPaths({folder.Write("Gleispla\xCC\x88ne", LibraryOf("M", {"1"}))});
    EXPECT_TRUE(registry.ContainsRailset("Gleispl\x8Ane"));
}
