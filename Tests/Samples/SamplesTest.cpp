// The samples: those that are checked in, and the program that makes them.
#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "CTaggedFile/BigEndian.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CLayout.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Utilities/CVLLayerNameResolver.h"
#include "Platform/MacRoman.h"
#include "Preferences/CVLPreferences.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/CRailsetFolder.h"
#include "TrackSystem.h"
#include "UnitLength/URailConstants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sys/wait.h>

using namespace testing;

namespace {
constexpr char kOval[] = "oval.velmora";
constexpr char kTerminus[] = "terminus.velmora";
constexpr char kEmpty[] = "empty.velmora";
constexpr char kTrackLibrary[] = "libraries/Halvensen H0 Profilgleis";
constexpr char kNarrowLibrary[] = "libraries/Törrig N Feingleis";
constexpr char kAccessoryLibrary[] = "libraries/Quirrin Bauten & Zubehör";
constexpr char kStock[] = "stock.xml";
/// How exactly stored tracks meet, mm.
constexpr double kMeeting = 1e-6;

/// A loaded sample.
class CSample {
public:
    explicit CSample(const std::string& path) : mResolver(&mLayout)
    {
        CLayer::ConfigureLayerNameResolver(&mResolver);
        mResult = mLayout.Load(path);
        for (CCompositeGeometry* element : mLayout.GetElements()) {
            element->DefineAllJoints();
        }
    }
    ~CSample() { CLayer::ConfigureLayerNameResolver(nullptr); }

    CLayout& Get() { return mLayout; }
    int GetResult() const { return mResult; }
    /// Allowed joints of all tracks.
    std::vector<CJoint*> Joints()
    {
        std::vector<CJoint*> all;
        std::vector<CJoint*> some;
        for (CCompositeGeometry* element : mLayout.GetElements()) {
            element->GetJoints(some, true, false);
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }
    std::vector<CCompositeGeometry*> Named(const std::string& name)
    {
        std::vector<CCompositeGeometry*> found;
        for (CCompositeGeometry* element : mLayout.GetElements()) {
            if (element->GetName() == name) {
                found.push_back(element);
            }
        }
        return found;
    }

private:
    CLayout mLayout;
    CVLLayerNameResolver mResolver;
    int mResult;
};

std::string CheckedIn(const std::string& name)
{
    return SAMPLES_FOLDER "/" + name;
}

std::string TestFolder(const std::string& name)
{
    const std::string folder = std::string(std::getenv("TEST_FOLDER")) + "/" + name;
    std::filesystem::create_directories(folder);
    return folder;
}

/// Exit status of the program that makes the samples. Its leaks are not checked: Foundation keeps what it builds on
/// first use, which this process has warmed up but the program has not.
int RunProgram(const std::string& arguments)
{
    const std::string command = "ASAN_OPTIONS=detect_leaks=0 \"" SAMPLES_PROGRAM "\" " + arguments + " 2>/dev/null";
    return WEXITSTATUS(std::system(command.c_str()));
}

std::string Bytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A file without the records of its dates: keys 402 and 403 of a layout, 115 of a library, whose other date is fixed.
std::string WithoutDates(const std::string& path)
{
    constexpr size_t kHeader = 8;
    constexpr size_t kRecordHead = 4;
    std::string bytes = Bytes(path);
    const bool isLibrary = bytes.rfind("RSet", 0) == 0;
    const unsigned first = isLibrary ? 115 : 402;
    const unsigned last = isLibrary ? 115 : 403;
    size_t at = kHeader;
    while (at + kRecordHead <= bytes.size()) {
        const auto* record = reinterpret_cast<const unsigned char*>(bytes.data() + at);
        const unsigned key = static_cast<unsigned>(record[0] << 8 | record[1]);
        const unsigned size = static_cast<unsigned>(record[2] << 8 | record[3]);
        if (key > last) {
            break;
        }
        if (key >= first) {
            bytes.erase(at, kRecordHead + size);
        } else {
            at += kRecordHead + size;
        }
    }
    return bytes;
}

std::string Where(const CJoint* joint)
{
    const CPoint& place = joint->GetPosition();
    return std::string(joint->GetOwner()->GetName()) + " at " + std::to_string(place.x) + ", " +
           std::to_string(place.y) + ", " + std::to_string(place.z);
}

/// Depth of a group's tree: 1 without member groups.
int Depth(const CGroup* group)
{
    int deepest = 0;
    for (const CGroup* member : group->GetMemberGroupsVec()) {
        deepest = std::max(deepest, Depth(member));
    }
    return deepest + 1;
}
} // namespace

TEST(Samples, HoldWhatTheyAreMeantTo)
{
    const struct {
        const char* name;
        size_t fewest;
        size_t most;
        int layers;
        size_t libraries;
    } cases[] = {{kOval, 50, 70, 4, 2}, {kTerminus, 850, 950, 12, 2}, {kEmpty, 0, 0, 1, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CSample sample(CheckedIn(c.name));
        ASSERT_EQ(sample.GetResult(), CLayout::kLoaded);
        CLayout& layout = sample.Get();
        EXPECT_THAT(layout.GetElements().size(), AllOf(Ge(c.fewest), Le(c.most)));
        EXPECT_EQ(layout.GetLayerList()->GetNumberOfLayers(), c.layers);
        EXPECT_STRNE(layout.GetAuthor(), "<TEST USER>");
        EXPECT_STRNE(layout.GetDesc(), "");
        EXPECT_STRNE(layout.GetRevision(), "");

        std::set<std::string> libraries;
        for (CCompositeGeometry* element : layout.GetElements()) {
            SCOPED_TRACE(Platform::MacRomanToUtf8(element->GetDescription()));
            EXPECT_NE(element->GetLayer(), nullptr);
            if (element->HasRailSetName()) {
                libraries.insert(element->GetRailSetName());
                EXPECT_GT(element->GetPrice(), 0);
                EXPECT_STRNE(element->GetName(), "-");
                EXPECT_STRNE(element->GetManufacturer(), "-");
                DRect box = {};
                element->CalcBoundingBox(box);
                const CPoint& place = element->GetPosition();
                EXPECT_TRUE(layout.PointIsWithinWSBounds({place.x + box.left, place.y + box.top, 0.0}));
                EXPECT_TRUE(layout.PointIsWithinWSBounds({place.x + box.right, place.y + box.bottom, 0.0}));
            }
        }
        EXPECT_EQ(libraries.size(), c.libraries);
    }

    CSample terminus(CheckedIn(kTerminus));
    const std::string summary =
        Platform::MacRomanToUtf8(UElementStatistics::GetContentSummaryAsString(terminus.Get().GetElements()));
    EXPECT_THAT(summary, AllOf(StartsWith("Halvensen H0 Profilgleis 36"), HasSubstr("Dünkelsbrück Hbf, "),
                               HasSubstr("Café Théâtre, "), HasSubstr("Ångström & Søn, Uhren, ")));
    int hidden = 0;
    int locked = 0;
    for (int i = 0; i < terminus.Get().GetLayerList()->GetNumberOfLayers(); ++i) {
        CLayer* layer = terminus.Get().GetLayerList()->GetLayerAtIndex(i);
        hidden += layer->GetIsVisible() ? 0 : 1;
        locked += layer->GetLocked() ? 1 : 0;
        UElementVectorOperations::tElements members;
        UElementVectorOperations::GetAllElementsForLayer(terminus.Get().GetElements(), layer, members);
        EXPECT_FALSE(members.empty()) << Platform::MacRomanToUtf8(layer->GetName());
    }
    EXPECT_GT(hidden, 0);
    EXPECT_GT(locked, 0);
}

TEST(Samples, TracksMeetExactly)
{
    const double clearance = URailConstants::NEM102_GetMaxHeight(16);
    const struct {
        const char* name;
        size_t freeEnds;
    } cases[] = {{kOval, 0}, {kTerminus, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CSample sample(CheckedIn(c.name));
        const std::vector<CJoint*> joints = sample.Joints();
        ASSERT_FALSE(joints.empty());
        std::vector<std::string> freeEnds;
        for (const CJoint* joint : joints) {
            int met = 0;
            for (const CJoint* other : joints) {
                if (joint == other || joint->DistanceToJoint(*other) > 1.0) {
                    continue;
                }
                const double apart = std::fabs(joint->GetPosition().z - other->GetPosition().z);
                if (apart < 1.0) {
                    ++met;
                    EXPECT_LE(joint->GetPosition().CalcDistance(other->GetPosition()), kMeeting) << Where(joint);
                    EXPECT_TRUE(joint->AppropriateAngleForConnection(*other)) << Where(joint);
                } else {
                    EXPECT_GT(apart, clearance) << Where(joint) << " under " << Where(other);
                }
            }
            EXPECT_LE(met, 1) << Where(joint);
            if (met == 0) {
                freeEnds.push_back(Where(joint));
            }
        }
        EXPECT_THAT(freeEnds, SizeIs(c.freeEnds));
    }
}

TEST(Samples, BranchesOfTurnoutsBeginAtTheToe)
{
    CSample sample(CheckedIn(kTerminus));
    const struct {
        const char* name;
        int toeOfCurve; ///< a curve to the left is the piece from its other end
    } cases[] = {{"3601", 1}, {"3602", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<CCompositeGeometry*> turnouts = sample.Named(c.name);
        ASSERT_FALSE(turnouts.empty());
        for (CCompositeGeometry* turnout : turnouts) {
            ASSERT_EQ(turnout->GetNumberOfTrackBIGs(), 3);
            const CJoint* toe = turnout->GetBIGAtIndex(0)->GetJoint(0);
            const CJoint* curve = turnout->GetBIGAtIndex(1)->GetJoint(c.toeOfCurve);
            EXPECT_LE(toe->DistanceToJoint(*curve), kMeeting);
            std::vector<CJoint*> joints;
            turnout->GetJoints(joints, true, false);
            EXPECT_EQ(joints.size(), 3u);
        }
    }
}

TEST(Samples, HelixClimbsEvenly)
{
    constexpr double kRadiansPerDegree = 0.017453292519943295;
    constexpr double kSlope = 0.03;
    constexpr int kCurves = 54; // four turns and a half
    CSample sample(CheckedIn(kTerminus));
    double climbed = 0.0;
    int curves = 0;
    for (const char* name : {"3330", "3430"}) {
        for (CCompositeGeometry* element : sample.Named(name)) {
            if (!element->GetGrade().IsGraded()) {
                continue;
            }
            ++curves;
            const auto* curve = static_cast<const CCurveBIG*>(element->GetBIGAtIndex(0));
            CBasicGeometry* track = element->GetBIGAtIndex(0);
            const double rise = std::fabs(track->GetJoint(1)->GetPosition().z - track->GetJoint(0)->GetPosition().z);
            // The outer track climbs as high as the inner one beside it, over a longer way.
            EXPECT_NEAR(rise, kSlope * TrackSystem::kRadius3 * curve->GetItemArcAngle() * kRadiansPerDegree, kMeeting);
            climbed += rise;
        }
    }
    EXPECT_EQ(curves, 2 * kCurves);
    // Where the helix is left, its eases up and down included.
    const double summit = climbed / 2.0 + 2.0 * (kSlope / 2.0) * 2.0 * TrackSystem::kUnit;
    double highest = 0.0;
    for (const CJoint* joint : sample.Joints()) {
        highest = std::max(highest, joint->GetPosition().z);
        EXPECT_GE(joint->GetPosition().z, -kMeeting);
    }
    EXPECT_NEAR(highest, summit, 1e-4);
}

TEST(Samples, GroupsFormTheIntendedTree)
{
    CSample sample(CheckedIn(kTerminus));
    CLayout& layout = sample.Get();
    std::vector<const CGroup*> roots;
    for (const CGroup* group : layout.GetGroups()) {
        if (group->GetParentGroup() == nullptr) {
            roots.push_back(group);
        }
    }
    // Helix, depot, station, town, village.
    EXPECT_EQ(roots.size(), 5u);
    const auto rootOf = [&](const char* name) -> const CGroup* {
        const std::vector<CCompositeGeometry*> elements = sample.Named(name);
        return elements.empty() ? nullptr : layout.GetGroupsManager()->GetRootGroup(elements.front());
    };
    const CGroup* depot = rootOf("3800");
    const CGroup* station = rootOf("Q 1100");
    const CGroup* town = rootOf("Q 2010");
    const CGroup* village = rootOf("Q 2100");
    for (const CGroup* group : {depot, station, town, village}) {
        ASSERT_NE(group, nullptr);
    }
    EXPECT_EQ(std::set<const CGroup*>({depot, station, town, village}).size(), 4u);
    EXPECT_EQ(rootOf("Q 1050"), depot); // the shed stands at the turntable
    EXPECT_EQ(Depth(depot), 1);
    EXPECT_EQ(Depth(village), 1);
    EXPECT_EQ(Depth(station), 2);
    EXPECT_THAT(station->GetMemberGroupsVec(), SizeIs(4)); // three platforms and the building
    EXPECT_EQ(Depth(town), 3);
    EXPECT_THAT(town->GetMemberItemsVec(), IsEmpty());
    EXPECT_THAT(town->GetMemberGroupsVec(), SizeIs(4));
    for (const CGroup* block : town->GetMemberGroupsVec()) {
        EXPECT_THAT(block->GetMemberItemsVec(), IsEmpty());
        EXPECT_THAT(block->GetMemberGroupsVec(), SizeIs(Ge(8u)));
        for (const CGroup* house : block->GetMemberGroupsVec()) {
            EXPECT_THAT(house->GetMemberItemsVec(), SizeIs(AllOf(Ge(2u), Le(3u))));
        }
    }
}

TEST(Samples, LibrariesHoldTheArticlesOfTheLayouts)
{
    const struct {
        const char* name;
        size_t articles;
        int scale;
        tRailSetContentType type;
    } cases[] = {{kTrackLibrary, 80, URailConstants::kScaleH0, ULibraryConstants::kContentTracks},
                 {kNarrowLibrary, 20, URailConstants::kScaleN, ULibraryConstants::kContentTracks},
                 {kAccessoryLibrary, 17, URailConstants::kScaleH0, ULibraryConstants::kContentAccessories}};
    std::map<std::string, std::unique_ptr<CRailSet>> libraries;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto library = std::make_unique<CRailSet>(CheckedIn(c.name));
        ASSERT_EQ(library->Load(), CRailSet::kLoaded);
        EXPECT_EQ(library->GetSize(), c.articles);
        EXPECT_EQ(library->GetModelScale(), c.scale);
        EXPECT_EQ(library->GetContentType(), c.type);
        EXPECT_EQ(library->GetParameters().currency, 129);
        std::set<std::string> numbers;
        std::set<std::string> descriptions;
        for (CCompositeGeometry* article : library->GetGeometries()) {
            SCOPED_TRACE(article->GetName());
            EXPECT_TRUE(numbers.insert(article->GetName()).second);
            EXPECT_TRUE(descriptions.insert(article->GetDescription()).second);
            EXPECT_GT(article->GetPrice(), 0);
            EXPECT_STREQ(article->GetManufacturer(), library->GetManufacturer());
            std::vector<CJoint*> joints;
            article->GetJoints(joints, true, true);
            EXPECT_EQ(joints.empty(), c.type != ULibraryConstants::kContentTracks);
        }
        libraries.emplace(library->GetGeometryAtIndex(0)->GetRailSetName(), std::move(library));
    }

    for (const char* name : {kOval, kTerminus}) {
        SCOPED_TRACE(name);
        CSample sample(CheckedIn(name));
        for (CCompositeGeometry* element : sample.Get().GetElements()) {
            if (!element->HasRailSetName()) {
                continue;
            }
            SCOPED_TRACE(element->GetName());
            const auto library = libraries.find(element->GetRailSetName());
            ASSERT_NE(library, libraries.end());
            CCompositeGeometry* article = library->second->FindGeometry(element->GetName());
            ASSERT_NE(article, nullptr);
            EXPECT_STREQ(element->GetDescription(), article->GetDescription());
            EXPECT_STREQ(element->GetManufacturer(), article->GetManufacturer());
            EXPECT_EQ(element->GetPrice(), article->GetPrice());
            EXPECT_EQ(element->GetCurrency(), article->GetCurrency());
            EXPECT_EQ(element->GetNumberOfComponents(), article->GetNumberOfComponents());
            EXPECT_NEAR(element->GetTrackLength(), article->GetTrackLength(), kMeeting);
        }
    }
}

TEST(Samples, BranchesOfTurnoutsGetHalfWayToTheNextTrack)
{
    const struct {
        const char* library;
        double spacing;
        std::map<std::string, std::vector<double>> sides; ///< of each branch; y grows downwards
    } cases[] = {
        {kTrackLibrary,
         62.0,
         {{"3601", {-1.0}}, {"3602", {1.0}}, {"3611", {-1.0}}, {"3612", {1.0}}, {"3630", {1.0, -1.0}}}},
        {kNarrowLibrary, 30.0, {{"301", {-1.0}}, {"302", {1.0}}, {"320", {1.0, -1.0}}}},
    };
    for (const auto& c : cases) {
        CRailSet library(CheckedIn(c.library));
        ASSERT_EQ(library.Load(), CRailSet::kLoaded);
        for (const auto& [number, sides] : c.sides) {
            SCOPED_TRACE(number);
            CCompositeGeometry* turnout = library.FindGeometry(number);
            ASSERT_NE(turnout, nullptr);
            std::vector<CJoint*> joints;
            turnout->GetJoints(joints, true, true);
            ASSERT_EQ(joints.size(), 2 + sides.size());
            const double axis = joints[0]->GetPosition().y;
            EXPECT_NEAR(joints[1]->GetPosition().y, axis, kMeeting);
            for (size_t i = 0; i < sides.size(); ++i) {
                EXPECT_NEAR(joints[2 + i]->GetPosition().y, axis + sides[i] * c.spacing / 2.0, kMeeting);
            }
        }
    }
}

TEST(Samples, StockKnowsItsArticles)
{
    CRailsetFolder::Instance()->InitializeWithPaths({CheckedIn(kTrackLibrary)});
    const std::string path = CheckedIn(kStock);
    int entries = 0;
    int pieces = 0;
    ASSERT_EQ(CStock::ForEachEntry(path.c_str(),
                                   [&](const std::string&, const std::string&, int count) {
                                       ++entries;
                                       pieces += count;
                                       EXPECT_GT(count, 0);
                                   }),
              CStock::eFileState::kWhole);
    EXPECT_GT(entries, 10);
    CStock stock;
    ASSERT_TRUE(stock.LoadFromFile(path.c_str()));
    EXPECT_EQ(stock.GetSumOfElementTypes(), entries);
    EXPECT_EQ(stock.GetSumOfAllElements(), pieces);

    // Part of what the terminus takes, not all of it.
    CSample terminus(CheckedIn(kTerminus));
    int owned = 0;
    int missing = 0;
    for (CCompositeGeometry* element : terminus.Get().GetElements()) {
        CCountedCIG* entry = stock.FindElement(element->GetRailSetName(), element->GetName());
        if (entry != nullptr && entry->GetCount() > 0) {
            entry->DecCount(1);
            ++owned;
        } else if (element->GetNumberOfTrackBIGs() > 0) {
            ++missing;
        }
    }
    EXPECT_GT(owned, 100);
    EXPECT_GT(missing, 50);
}

TEST(Samples, KeepTheirBytesWhenLoadedAndSaved)
{
    const std::string copy = TestFolder("saved") + "/copy.velmora";
    for (const char* name : {kOval, kTerminus, kEmpty}) {
        SCOPED_TRACE(name);
        CSample sample(CheckedIn(name));
        ASSERT_EQ(sample.GetResult(), CLayout::kLoaded);
        ASSERT_TRUE(sample.Get().Save(&copy));
        EXPECT_TRUE(WithoutDates(CheckedIn(name)) == WithoutDates(copy));
    }
    for (const char* name : {kTrackLibrary, kNarrowLibrary, kAccessoryLibrary}) {
        SCOPED_TRACE(name);
        const std::string saved = TestFolder("saved/libraries") + "/../" + name;
        std::filesystem::copy_file(CheckedIn(name), saved, std::filesystem::copy_options::overwrite_existing);
        CRailSet library(saved);
        ASSERT_EQ(library.Load(), CRailSet::kLoaded);
        ASSERT_TRUE(library.Save());
        EXPECT_TRUE(WithoutDates(CheckedIn(name)) == WithoutDates(saved));
    }
}

TEST(Samples, AreMadeTheSameForEveryUser)
{
    // The program reads the preferences of this process's private folder: none of them may show.
    CVLPreferences preferences;
    preferences.mDefaultShowGrid = !preferences.mDefaultShowGrid;
    preferences.mDefaultShowElementNames = !preferences.mDefaultShowElementNames;
    preferences.mDefaultOutlineNames = !preferences.mDefaultOutlineNames;
    preferences.mDefaultShowPrefix = !preferences.mDefaultShowPrefix;
    preferences.m3DTerrain = !preferences.m3DTerrain;
    preferences.m3DOnlyTracks = !preferences.m3DOnlyTracks;
    preferences.mDefaultZoom = 77;
    preferences.mDefaultColorScheme = 3;
    preferences.mDefaultTrackStyle = 101;
    preferences.mDefaultGridSpacing = 7;
    preferences.mDefaultWidth = 1;
    preferences.mDefaultHeight = 2;
    const std::string plain = TestFolder("plain");
    const std::string changed = TestFolder("changed");
    ASSERT_EQ(RunProgram("\"" + plain + "\""), 0);
    preferences.Save();
    ASSERT_EQ(CVLPreferences().mDefaultGridSpacing, 7);
    ASSERT_EQ(RunProgram("\"" + changed + "\""), 0);
    for (const char* name : {kOval, kTerminus, kEmpty, kTrackLibrary, kNarrowLibrary, kAccessoryLibrary}) {
        SCOPED_TRACE(name);
        // Made anew with: velmora-samples Samples
        EXPECT_TRUE(WithoutDates(CheckedIn(name)) == WithoutDates(plain + "/" + name));
        EXPECT_TRUE(WithoutDates(CheckedIn(name)) == WithoutDates(changed + "/" + name));
    }
    EXPECT_EQ(Bytes(CheckedIn(kStock)), Bytes(plain + "/" + kStock));
    EXPECT_EQ(RunProgram(""), 2);
    EXPECT_EQ(RunProgram("\"" + plain + "/missing\""), 1);
}
