#include "BuildingBlocks/CCompositeGeometry.h"
#include "TrackLibraries/CRailSet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {
struct tArticle {
    const char* name;
    const char* description;
};

/// A library of articles without components.
class CArticles : public CRailSet {
public:
    CArticles(std::initializer_list<tArticle> articles) : CRailSet("Library")
    {
        for (const tArticle& article : articles) {
            Append(new CCompositeGeometry);
            GetGeometries().back()->SetName(article.name);
            GetGeometries().back()->SetDescription(article.description);
        }
    }
    std::vector<std::string> Descriptions() const
    {
        std::vector<std::string> descriptions;
        for (const CCompositeGeometry* element : GetGeometries()) {
            descriptions.emplace_back(element->GetDescription());
        }
        return descriptions;
    }
};
} // namespace

TEST(RailSetList, FindsTheLastOfANameAndHandsItOut)
{
    CArticles library{{"A", "1"}, {"B", "2"}, {"A", "3"}};
    const std::unique_ptr<CCompositeGeometry> last(library.GetGeometryAtIndex(2));
    EXPECT_EQ(library.FindGeometry("A"), last.get());
    EXPECT_EQ(library.FindGeometry("a"), nullptr);
    EXPECT_EQ(library.GetGeometryAtIndex(3), nullptr);
    EXPECT_TRUE(library.Remove(last.get()));
    EXPECT_FALSE(library.Remove(last.get()));
    EXPECT_EQ(library.FindGeometry("A"), library.GetGeometryAtIndex(0));
    EXPECT_THAT(library.Descriptions(), ElementsAre("1", "2"));
}

TEST(RailSetList, DescriptionsFollowAnotherLibrary)
{
    const struct {
        std::initializer_list<tArticle> library;
        std::initializer_list<tArticle> other;
        int changes;
        std::vector<std::string> result;
        int namesakes;
    } cases[] = {
        {{{"A", "x"}, {"A", "x"}, {"B", "y"}}, {{"A", "n"}, {"C", "n"}}, 1, {"x", "n", "y"}, 1},
        {{{"A", "x"}, {"A", "n"}}, {{"A", "n"}}, 1, {"n", "n"}, 1}, // one that agrees is passed over
        {{{"A", "x"}, {"A", "y"}}, {{"A", "n"}, {"A", "n"}}, 2, {"n", "n"}, 2},
    };
    for (const auto& c : cases) {
        CArticles library(c.library);
        CArticles other(c.other);
        const std::vector<std::string> before = library.Descriptions();
        EXPECT_EQ(library.SynchronizeDescriptions(&other, true), c.changes);
        EXPECT_EQ(library.Descriptions(), before);
        EXPECT_EQ(library.SynchronizeDescriptions(&other, false), c.changes);
        EXPECT_EQ(library.Descriptions(), c.result);
        EXPECT_EQ(library.GetNumberOfSyncableElements(&other), c.namesakes);
    }
}
