// Every document of the test data through the plug-in: exactly the attributes that belong to it, or nothing at all.
#include "CPlugInHost.h"
#include "support/Files.h"

#include <algorithm>

namespace fs = std::filesystem;
using nlohmann::json;

TEST(Documents, GiveExactlyTheirAttributes)
{
    const CPlugInHost host;
    std::vector<fs::path> documents;
    for (const auto& entry : fs::directory_iterator(fs::path(TEST_DATA) / "documents")) {
        if (entry.path().extension() == ".velmora") {
            documents.push_back(entry.path());
        }
    }
    ASSERT_FALSE(documents.empty());
    std::sort(documents.begin(), documents.end());
    const json old = {{"kMDItemVersion", "an older import"}};
    for (const fs::path& document : documents) {
        SCOPED_TRACE(document.filename().string());
        const json expected =
            json::parse(ReadFile(fs::path(document).replace_extension(".expected.json")), nullptr, false);
        ASSERT_FALSE(expected.is_discarded());
        const bool imported = expected.at("ok").get<bool>();
        json attributes = old;
        EXPECT_EQ(host.Import(document.string(), attributes), imported);
        EXPECT_EQ(attributes, imported ? expected.at("attributes") : old);
    }
}
