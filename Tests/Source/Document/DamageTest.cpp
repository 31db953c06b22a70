// Documents cut short: wherever, a load ends with one of its codes and leaves a sound layout behind.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "TestLayout.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace {
struct tOutcome {
    int code;
    size_t elements;
};

tOutcome LoadDamaged(const CScratchFile& file)
{
    CTestLayout layout;
    const int code = layout.Load(file.Path());
    EXPECT_TRUE(IsForest(layout.GetGroups()));
    for (const CCompositeGeometry* element : layout.GetElements()) { // as the importer touches them
        EXPECT_LE(strnlen(element->GetName(), 32), 31U);
    }
    return {code, layout.GetElements().size()};
}

/// A whole document in a file and where its elements begin and end.
class CWhole {
public:
    explicit CWhole(const std::string& bytes) : mBytes(bytes), mFile(bytes)
    {
        const CRecords records = CRecords::OfDocument(bytes);
        size_t at = 0;
        for (const CRecords::tPiece& piece : records.Pieces()) {
            if (at > 0 && (piece.key == CRecords::kRaw || (piece.key == 424 && !mBegins.empty()))) {
                mBegins.push_back(at); // the last one is the end
            }
            at += piece.Bytes().size();
        }
        const tOutcome outcome = LoadDamaged(mFile);
        EXPECT_EQ(outcome.code, CLayout::kLoaded);
        EXPECT_EQ(outcome.elements, mBegins.empty() ? 0 : mBegins.size() - 1);
    }

    /// Loads the first bytes: no fewer elements than are whole in them and no more than begin there.
    void ExpectCutLoads(size_t size)
    {
        SCOPED_TRACE("cut at " + std::to_string(size));
        mFile.Set(std::string_view(mBytes).substr(0, size));
        const tOutcome outcome = LoadDamaged(mFile);
        if (size < 8) {
            EXPECT_EQ(outcome.code, CLayout::kNoLayout);
            return;
        }
        EXPECT_TRUE(outcome.code == CLayout::kLoaded || outcome.code == CLayout::kElementFailed) << outcome.code;
        const auto begun = std::upper_bound(mBegins.begin(), mBegins.end(), size) - mBegins.begin();
        const size_t whole = begun > 0 ? static_cast<size_t>(begun) - 1 : 0;
        EXPECT_GE(outcome.elements, whole);
        EXPECT_LE(outcome.elements, whole + 1);
        // The promised elements are there only if the last of them has begun.
        if (whole + 2 < mBegins.size() && begun > 0) {
            EXPECT_EQ(outcome.code, CLayout::kElementFailed);
        }
    }

    /// At every byte of a small document, at fixed random ones of a large one.
    void ExpectCutsLoad(int most)
    {
        CRandom random(2000);
        const int last = static_cast<int>(mBytes.size()) - 1;
        for (int i = 0; i < std::min(most, last + 1) && !testing::Test::HasFailure(); ++i) {
            ExpectCutLoads(static_cast<size_t>(most > last ? i : random.Below(last)));
        }
    }

private:
    std::string mBytes;
    CScratchFile mFile;
    std::vector<size_t> mBegins;
};
} // namespace

TEST(Damage, CutAnywhere)
{
    std::vector<std::pair<std::string, int>> documents; // with the number of cuts
    documents.emplace_back(Layout(RandomLayout(60, 25, true)).Bytes(), INT_MAX);
    documents.emplace_back(Layout(RandomLayout(900, 900, true)).Bytes(), 200);
    for (const auto& entry : fs::directory_iterator(fs::path(SOURCE_FOLDER) / "Samples")) {
        if (entry.path().extension() == ".velmora") {
            documents.emplace_back(ReadFile(entry.path().string()), 1500);
        }
    }
    EXPECT_GT(documents.size(), 2U);
    for (size_t i = 0; i < documents.size(); ++i) {
        SCOPED_TRACE("document " + std::to_string(i));
        CWhole(documents[i].first).ExpectCutsLoad(documents[i].second);
    }
}
