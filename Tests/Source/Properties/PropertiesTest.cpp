// What has to hold for every input, tried on documents, on thousands of changes to them, and on all that failed before.
#include "Properties.h"

#include "CRecordMutator.h"
#include "support/DocumentBuilder.h"
#include "support/Files.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <vector>

namespace fs = std::filesystem;

namespace {
/// Longest document that is changed, bytes.
constexpr size_t kChanged = 12288;

struct tForm {
    const char* name; ///< of its folder in Tests/data/found
    std::string (*property)(std::string_view);
    std::vector<fs::path> documents; ///< folders and files
    int changes;                     ///< how many changed documents are tried
};

const tForm kForms[] = {
    {"layout", &Properties::Layout, {TEST_DATA "/documents", SOURCE_FOLDER "/Samples"}, 2000},
    {"drawing", &Properties::Drawing, {TEST_DATA "/documents", SOURCE_FOLDER "/Samples/oval.velmora"}, 500},
    {"library", &Properties::Library, {SOURCE_FOLDER "/Samples/libraries"}, 500},
    {"stock", &Properties::Stock, {SOURCE_FOLDER "/Samples/stock.xml"}, 500},
    {"clipboard", &Properties::Clipboard, {}, 0},
    {"preferences", &Properties::Preferences, {}, 0},
};

std::vector<std::string> Read(const std::vector<fs::path>& places)
{
    std::vector<std::string> documents;
    for (const fs::path& place : places) {
        if (!fs::is_directory(place)) {
            documents.push_back(ReadFile(place.string()));
            continue;
        }
        std::set<fs::path> sorted;
        for (const auto& entry : fs::directory_iterator(place)) {
            if (entry.is_regular_file() && entry.path().extension() != ".json") {
                sorted.insert(entry.path());
            }
        }
        for (const fs::path& path : sorted) {
            documents.push_back(ReadFile(path.string()));
        }
    }
    return documents;
}
} // namespace

TEST(Properties, HoldForDocumentsAndTheirChanges)
{
    for (const tForm& form : kForms) {
        SCOPED_TRACE(form.name);
        std::vector<std::string> small;
        for (const std::string& document : Read(form.documents)) {
            EXPECT_EQ(form.property(document), "");
            if (document.size() <= kChanged) {
                small.push_back(document);
            }
        }
        ASSERT_TRUE(form.changes == 0 || !small.empty());
        CRandom random(1);
        for (int i = 0; i < form.changes && !HasFailure(); ++i) {
            SCOPED_TRACE(i);
            const auto any = [&] { return small[static_cast<size_t>(random.Below(static_cast<int>(small.size())))]; };
            CRecordMutator mutator(static_cast<unsigned>(i));
            std::string changed = mutator.Mutate(any());
            if (i % 3 == 0) {
                changed = mutator.CrossOver(changed, any());
            }
            if (form.property == &Properties::Stock) { // which has no records
                changed.resize(random.Below(8) > 0 ? changed.size() : random() % (changed.size() + 1));
                for (size_t at = i % 4; at > 0 && !changed.empty(); --at) {
                    changed[random() % changed.size()] =
                        random.Bool() ? static_cast<char>(random()) : "<>&;/!'"[random.Below(7)];
                }
            }
            EXPECT_EQ(form.property(changed), "");
        }
    }
}

TEST(Properties, HoldForDocumentsOfEveryKind)
{
    for (uint64_t seed = 0; seed < 100 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        tLayout layout = RandomLayout(seed, static_cast<int>(seed % 23), seed % 3 == 0);
        layout.version = 3 + static_cast<int>(seed % 3);
        EXPECT_EQ(Properties::Layout(Layout(layout).Bytes()), "");
    }
}

TEST(Properties, HoldForWhatFailedBefore)
{
    for (const tForm& form : kForms) {
        const fs::path folder = fs::path(TEST_DATA) / "found" / form.name;
        for (const auto& entry : fs::exists(folder) ? fs::directory_iterator(folder) : fs::directory_iterator()) {
            SCOPED_TRACE(entry.path().string());
            EXPECT_EQ(form.property(ReadFile(entry.path().string())), "");
        }
    }
}
