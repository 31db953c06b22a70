// Every document of the test data through the core alone: its result code and the five texts that a search sees.
#include "Elements/Utilities/UElementStatistics.h"
#include "Platform/MacRoman.h"
#include "TestLayout.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;
using nlohmann::json;

TEST(DataDocuments, GiveTheirCodesAndTexts)
{
    size_t documents = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(TEST_DATA) / "documents")) {
        if (entry.path().extension() != ".velmora") {
            continue;
        }
        SCOPED_TRACE(entry.path().filename().string());
        ++documents;
        std::ifstream file(fs::path(entry.path()).replace_extension(".expected.json"));
        const json expected = json::parse(file, nullptr, false);
        ASSERT_FALSE(expected.is_discarded());
        CTestLayout layout;
        const int code = layout.Load(entry.path().string());
        EXPECT_EQ(code, expected.value("code", 0));
        if (code != CLayout::kLoaded) {
            continue;
        }
        json layers = json::array();
        for (const std::string& name : layout.LayerNames()) {
            layers.push_back(Platform::MacRomanToUtf8(name));
        }
        const std::string summary = UElementStatistics::GetContentSummaryAsString(layout.GetElements());
        const json texts = {{"kMDItemAuthors", {Platform::MacRomanToUtf8(layout.GetAuthor())}},
                            {"kMDItemDescription", Platform::MacRomanToUtf8(layout.GetDesc())},
                            {"kMDItemLayerNames", layers},
                            {"kMDItemTextContent", Platform::MacRomanToUtf8(summary)},
                            {"kMDItemVersion", Platform::MacRomanToUtf8(layout.GetRevision())}};
        EXPECT_EQ(texts, expected.at("attributes"));
    }
    EXPECT_GT(documents, 0U);
}
