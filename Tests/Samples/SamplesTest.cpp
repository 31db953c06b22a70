// The samples: those that are checked in, and the program that makes them.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CJoint.h"
#include "Preferences/CVLPreferences.h"
#include "Source/Document/TestLayout.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/CRailsetFolder.h"
#include "UnitLength/URailConstants.h"
#include "support/Files.h"

#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <sys/wait.h>

namespace {
constexpr char kTerminus[] = "terminus.velmora";
constexpr const char* kLayouts[] = {"oval.velmora", kTerminus, "empty.velmora"};
constexpr const char* kLibraries[] = {"libraries/Halvensen H0 Profilgleis", "libraries/Törrig N Feingleis",
                                      "libraries/Quirrin Bauten & Zubehör"};
constexpr char kStock[] = "stock.xml";
constexpr double kMeeting = 1e-6; ///< how exactly stored tracks meet, mm

std::string CheckedIn(const std::string& name)
{
    return SAMPLES_FOLDER "/" + name;
}

/// The records of a layout or a library but for the dates that saving changes.
std::string WithoutDates(const std::string& path)
{
    CRecords records = CRecords::OfDocument(ReadFile(path));
    for (const int key : {402, 403, 115}) {
        if (records.CountOf(key) > 0) {
            records.Remove(key);
        }
    }
    return records.Bytes();
}

/// Exit status of the program that makes the samples. Its leaks are not checked: Foundation keeps what it builds on
/// first use, which this process has warmed up but the program has not.
int MakeSamples(const std::string& arguments)
{
    const std::string command = "ASAN_OPTIONS=detect_leaks=0 \"" SAMPLES_PROGRAM "\" " + arguments + " 2>/dev/null";
    return WEXITSTATUS(std::system(command.c_str()));
}
} // namespace

TEST(Samples, TracksMeetOrStayClear)
{
    const double clearance = URailConstants::NEM102_GetMaxHeight(16);
    const struct {
        const char* name;
        size_t fewest;
        int freeEnds;
    } cases[] = {{"oval.velmora", 50, 0}, {kTerminus, 850, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CTestLayout layout;
        ASSERT_EQ(layout.Load(CheckedIn(c.name)), CLayout::kLoaded);
        EXPECT_GE(layout.GetElements().size(), c.fewest);
        std::vector<CJoint*> joints;
        std::vector<CJoint*> some;
        for (CCompositeGeometry* element : layout.GetElements()) {
            element->GetJoints(some, true, true);
            joints.insert(joints.end(), some.begin(), some.end());
        }
        int freeEnds = 0;
        for (const CJoint* joint : joints) {
            int met = 0;
            for (const CJoint* other : joints) {
                const double apart = std::fabs(joint->GetPosition().z - other->GetPosition().z);
                if (joint == other || joint->DistanceToJoint(*other) > 1.0 || apart > clearance) {
                    continue;
                }
                ++met;
                EXPECT_LE(joint->GetPosition().CalcDistance(other->GetPosition()), kMeeting);
                EXPECT_TRUE(joint->AppropriateAngleForConnection(*other)) << joint->GetOwner()->GetName();
            }
            EXPECT_LE(met, 1) << joint->GetOwner()->GetName();
            freeEnds += met == 0 ? 1 : 0;
        }
        EXPECT_EQ(freeEnds, c.freeEnds);
    }
}

TEST(Samples, LibrariesAndStockHoldWhatTheLayoutsUse)
{
    std::vector<std::string> paths;
    for (const char* name : kLibraries) {
        paths.push_back(CheckedIn(name));
    }
    CRailsetFolder::Instance()->InitializeWithPaths(paths);
    CTestLayout layout;
    ASSERT_EQ(layout.Load(CheckedIn(kTerminus)), CLayout::kLoaded);
    CStock stock;
    ASSERT_TRUE(stock.LoadFromFile(CheckedIn(kStock).c_str()));
    std::map<std::string, std::unique_ptr<CRailSet>> libraries;
    int owned = 0;
    for (CCompositeGeometry* element : layout.GetElements()) {
        if (!element->HasRailSetName()) {
            continue;
        }
        auto& library = libraries[element->GetRailSetName()];
        if (library == nullptr) {
            library.reset(CRailsetFolder::Instance()->GetRailset(element->GetRailSetName()));
            ASSERT_NE(library, nullptr) << element->GetRailSetName();
            ASSERT_EQ(library->Load(), CRailSet::kLoaded);
        }
        CCompositeGeometry* article = library->FindGeometry(element->GetName());
        ASSERT_NE(article, nullptr) << element->GetName();
        EXPECT_EQ(element->GetPrice(), article->GetPrice());
        EXPECT_NEAR(element->GetTrackLength(), article->GetTrackLength(), kMeeting);
        owned += stock.FindElement(element->GetRailSetName(), element->GetName()) != nullptr ? 1 : 0;
    }
    EXPECT_GT(owned, 100);
}

// Samples are made anew with: velmora-samples Samples
TEST(Samples, KeepTheirBytesHoweverTheyAreMadeOrSaved)
{
    // The program reads the preferences of this process's private folder: none of them may show.
    CVLPreferences preferences;
    preferences.mDefaultShowGrid = !preferences.mDefaultShowGrid;
    preferences.mDefaultZoom = preferences.mDefaultGridSpacing = preferences.mDefaultWidth = 77;
    preferences.mDefaultTrackStyle = 101;
    preferences.Save();
    const std::string made = MakeFolder("made");
    ASSERT_EQ(MakeSamples("\"" + made + "\""), 0);
    EXPECT_EQ(ReadFile(CheckedIn(kStock)), ReadFile(made + "/" + kStock));
    const auto expectSame = [](const char* name, const std::string& path) {
        EXPECT_TRUE(WithoutDates(CheckedIn(name)) == WithoutDates(path)) << path;
    };
    for (const char* name : kLayouts) {
        expectSame(name, made + "/" + name);
        CTestLayout layout;
        layout.SetZoomFactor(0.25); // that of the samples; a load leaves it alone
        ASSERT_EQ(layout.Load(CheckedIn(name)), CLayout::kLoaded);
        WriteFile(TestPath("copy.velmora"), layout.SavedBytes());
        expectSame(name, TestPath("copy.velmora"));
    }
    for (const char* name : kLibraries) {
        expectSame(name, made + "/" + name);
        CRailSet library(made + "/" + name);
        ASSERT_EQ(library.Load(), CRailSet::kLoaded);
        ASSERT_TRUE(library.Save());
        expectSame(name, made + "/" + name);
    }
    EXPECT_EQ(MakeSamples(""), 2);
    EXPECT_EQ(MakeSamples("\"" + made + "/missing\""), 1);
}
