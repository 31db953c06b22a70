// A checker must notice every damaged byte of the document's structure, where it is.
#include "Checks/CDocumentChecker.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CLayout.h"
#include "Layouts/Groups/UGroups.h"
#include "support/DocumentBuilder.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <map>
#include <set>

namespace {
using tBytes = std::vector<unsigned char>;

/// A place of the file: a header of 8 bytes or a record.
struct tPlace {
    size_t begin;
    size_t end;
    int key; ///< 0 for a header
};

tBytes BytesOf(const std::string& path)
{
    const std::string bytes = ReadFile(path);
    return {bytes.begin(), bytes.end()};
}

/// Splits a sound document into its headers and records.
std::vector<tPlace> Places(const tBytes& bytes)
{
    std::vector<tPlace> places = {{0, 8, 0}};
    while (places.back().end < bytes.size()) {
        const size_t at = places.back().end;
        if (std::equal(&bytes[at], &bytes[at] + 4, "RCig")) {
            places.push_back({at, at + 8, 0});
        } else {
            const size_t size = static_cast<size_t>(bytes[at + 2] << 8 | bytes[at + 3]);
            places.push_back({at, at + 4 + size, bytes[at] << 8 | bytes[at + 1]});
        }
    }
    return places;
}

/// A layout with every kind of component, several layers and nested groups.
tBytes MakeLayout()
{
    CLayout layout;
    layout.SetAuthor("Ada");
    layout.GetLayerList()->AddLayer("Track");
    CBasicGeometry* const components[] = {new CStraightBIG, new CCurveBIG,     new COvalBIG,
                                          new CTextBIG,     new CFlexTrackBIG, new CPolyBIG};
    for (CBasicGeometry* component : components) {
        auto* element = new CCompositeGeometry;
        if (component->GetType() == kPolyType || component->GetType() == kFlexTrackType) {
            static_cast<CPolyBIG*>(component)->SetPoints({{0, 0, 0}, {10, 0, 0}, {20, 7, 0}});
        }
        element->AppendBIG(component);
        if (layout.GetElements().empty()) {
            element->AppendBIG(new CStraightBIG);
        }
        element->SetLayer(layout.GetLayerList()->GetLayerAtIndex(1));
        layout.AddItem(element);
    }
    const std::vector<CCompositeGeometry*>& elements = layout.GetElements();
    UGroups::NewGroupFromElementVector(&layout, {elements[0], elements[1]});
    UGroups::NewGroupFromElementVector(&layout, {elements[1], elements[2]});
    const std::string path = TestPath("checked.velmora");
    EXPECT_TRUE(layout.Save(&path));
    return BytesOf(path);
}

bool IsCount(int key)
{
    static const std::set<int> kCounts = {423, 424, 500, 206, 318, 100};
    return kCounts.count(key) != 0;
}

std::string Describe(const std::vector<tFinding>& findings)
{
    std::string text;
    for (const tFinding& finding : findings) {
        text += std::to_string(finding.offset) + ": " + finding.text + "\n";
    }
    return text;
}

/// Flips the bytes of headers, keys, sizes and counts one by one.
/// @param most  so many records with the same key, as the later ones of a large document repeat the first
void ExpectEveryFlipFound(
    const tBytes& sound, std::initializer_list<int> flips, int most,
    std::vector<tFinding> (*check)(std::span<const unsigned char>) = &CDocumentChecker::CheckLayout)
{
    ASSERT_EQ(Describe(check(sound)), "");
    const std::vector<tPlace> places = Places(sound);
    std::map<int, int> seen;
    for (size_t i = 0; i < places.size(); ++i) {
        const tPlace& place = places[i];
        if (++seen[place.key] > most) {
            continue;
        }
        const size_t end = place.key == 0 || IsCount(place.key) ? place.end : place.begin + 4;
        const size_t reach = i + 1 < places.size() ? places[i + 1].end : place.end;
        for (size_t at = place.begin; at < end; ++at) {
            for (const int flip : flips) {
                tBytes damaged = sound;
                damaged[at] = static_cast<unsigned char>(damaged[at] ^ flip);
                const std::vector<tFinding> findings = check(damaged);
                const auto isDamage = [](const tFinding& one) { return one.kind == tFinding::eKind::kDamage; };
                const bool found = std::any_of(findings.begin(), findings.end(), isDamage) &&
                                   std::any_of(findings.begin(), findings.end(), [&](const tFinding& finding) {
                                       return finding.offset >= place.begin && finding.offset < reach;
                                   });
                ASSERT_TRUE(found) << "byte " << at << " ^ " << flip << " of the record " << place.key << " at "
                                   << place.begin << "\n"
                                   << Describe(findings);
            }
        }
    }
}
} // namespace

TEST(CDocumentChecker, FindsEveryFlippedByteOfTheStructureWhereItIs)
{
    ExpectEveryFlipFound(MakeLayout(), {0xFF, 0x01, 0x04, 0x07, 0x80}, INT_MAX);
    ExpectEveryFlipFound(BytesOf(SOURCE_FOLDER "/Samples/oval.velmora"), {0xFF}, 3);
    ExpectEveryFlipFound(BytesOf(SOURCE_FOLDER "/Samples/libraries/T\u00F6rrig N Feingleis"), {0xFF, 0x01}, 3,
                         &CDocumentChecker::CheckLibrary);
}

TEST(CDocumentChecker, NamesOffsetElementAndRecordWhereADocumentIsCut)
{
    const tBytes sound = MakeLayout();
    const std::vector<tPlace> places = Places(sound);
    for (size_t cut = 0; cut < sound.size(); ++cut) {
        const std::vector<tFinding> findings = CDocumentChecker::CheckLayout(std::span(sound).first(cut));
        ASSERT_FALSE(findings.empty()) << cut;
        // The last finding stands at the place that is cut, or at the end where whole places are missing.
        const tFinding& last = findings.back();
        const auto place = std::find_if(places.begin(), places.end(), [cut](const tPlace& p) { return p.end > cut; });
        const bool countAtEnd = last.key == 424 && cut == place->begin;
        ASSERT_TRUE(last.offset == place->begin || countAtEnd) << cut << "\n" << Describe(findings);
        const auto element = std::count_if(places.begin() + 1, place + 1, [](const tPlace& p) { return p.key == 0; });
        const bool behindElements = place->key == 424 || place->key == 425;
        if (!behindElements && element > 0) {
            ASSERT_EQ(last.element, element) << cut << "\n" << Describe(findings);
        }
        if (place->key != 0 && !countAtEnd) {
            ASSERT_EQ(last.key, place->key) << cut << "\n" << Describe(findings);
        }
    }
}

TEST(CDocumentChecker, SaysWhatReadersPassOver)
{
    const tBytes sound = MakeLayout();
    const std::vector<tPlace> places = Places(sound);
    const auto placeOf = [&](int key) {
        return std::find_if(places.begin(), places.end(), [key](const tPlace& place) { return place.key == key; });
    };
    const auto check = [](const tBytes& bytes) { return Describe(CDocumentChecker::CheckLayout(bytes)); };

    tBytes trailing = sound;
    trailing.insert(trailing.end(), 3, 0);
    EXPECT_EQ(check(trailing), std::to_string(sound.size()) + ": 3 bytes behind the end of the layout\n");

    tBytes unknown = sound; // a record of a newer program between two known ones
    const unsigned char record[] = {0x7F, 0x00, 0x00, 0x01, 0x55};
    const size_t at = placeOf(404)->begin;
    unknown.insert(unknown.begin() + static_cast<long>(at), std::begin(record), std::end(record));
    unknown.insert(unknown.end(), std::begin(record), std::end(record)); // and another behind the end
    const std::vector<tFinding> notes = CDocumentChecker::CheckLayout(unknown);
    EXPECT_EQ(
        Describe(notes),
        std::to_string(at) + ": record 404 (description) was expected, key 32512 was found; readers pass over it\n" +
            std::to_string(unknown.size() - 5) + ": 5 bytes behind the end of the layout; readers pass over them\n");
    EXPECT_TRUE(std::all_of(notes.begin(), notes.end(),
                            [](const tFinding& note) { return note.kind == tFinding::eKind::kOddity; }));

    tBytes renamed = sound; // the second layer takes the first one's name; elements then name a layer that is gone
    const auto layer = std::find_if(placeOf(501) + 1, places.end(), [](const tPlace& p) { return p.key == 501; });
    std::copy_n("Grass", 5, renamed.begin() + static_cast<long>(layer->begin) + 4);
    const std::vector<tFinding> oddities = CDocumentChecker::CheckLayout(renamed);
    ASSERT_EQ(oddities.size(), 6u);
    for (const tFinding& finding : oddities) {
        EXPECT_EQ(finding.kind, tFinding::eKind::kOddity);
        EXPECT_EQ(finding.key, 217);
    }
    EXPECT_EQ(oddities[2].element, 3);

    const auto checkWith = [&](int key, const std::string& replacement) { // with another record in that one's place
        tBytes changed = sound;
        const tPlace place = *placeOf(key);
        changed.erase(changed.begin() + static_cast<long>(place.begin), changed.begin() + static_cast<long>(place.end));
        changed.insert(changed.begin() + static_cast<long>(place.begin), replacement.begin(), replacement.end());
        return check(changed);
    };
    EXPECT_NE(checkWith(407, CRecords().Text(407, std::string(32, 'x')).Bytes()).find("readers keep 31"),
              std::string::npos);
    EXPECT_EQ(checkWith(407, CRecords().Text(407, std::string(31, 'x')).Bytes()), "");
    EXPECT_NE(checkWith(200, CRecords().Record(200, Bytes32(0) + Bytes32(10000000)).Bytes()).find("no number"),
              std::string::npos);

    tBytes badIndex = sound;
    badIndex[placeOf(425)->begin + 3 * 8 + 7] = 99; // the first group's first element
    EXPECT_EQ(check(badIndex), std::to_string(placeOf(425)->begin + 3 * 8) + ": no element has the index 99\n");

    tBytes manyGroups = sound;
    manyGroups[placeOf(425)->begin + 7] = 99;
    EXPECT_EQ(check(manyGroups),
              std::to_string(placeOf(425)->begin) + ": record 425 promises 99 groups, 2 are there\n");

    EXPECT_EQ(CDocumentChecker::GetKind(sound), CDocumentChecker::eDocument::kLayout);
    EXPECT_EQ(CDocumentChecker::GetKind(tBytes{'R', 'S', 'e', 't'}), CDocumentChecker::eDocument::kLibrary);
    EXPECT_EQ(CDocumentChecker::GetKind(tBytes{'R', 'S'}), CDocumentChecker::eDocument::kUnknown);
}
