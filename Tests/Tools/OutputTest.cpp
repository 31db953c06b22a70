#include "output/CProgress.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

/// What a writer makes of records.
template <typename tMake>
static std::string Written(tMake make, const std::vector<std::pair<std::string, tAnswer>>& records)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    COutput output(ends[1]);
    const std::unique_ptr<CRecordWriter> writer = make(output);
    writer->Begin();
    for (const auto& [path, answer] : records) {
        writer->Write(path, answer);
    }
    writer->End();
    EXPECT_TRUE(output.Flush());
    close(ends[1]);
    std::string text(65536, '\0');
    const ssize_t count = read(ends[0], text.data(), text.size());
    close(ends[0]);
    text.resize(count > 0 ? static_cast<size_t>(count) : 0);
    return text;
}

static tAnswer MakeAttributes(std::vector<tAttribute> attributes)
{
    tAnswer answer;
    answer.ok = true;
    answer.attributes = std::move(attributes);
    return answer;
}

static tAnswer ElementFailure()
{
    tAnswer answer = MakeFailure(eFailure::kLoader, "element 2 is damaged");
    answer.failure.loaderCode = 4;
    answer.failure.element = 2;
    return answer;
}

TEST(Escapes, MakeTextsHarmless)
{
    const struct {
        std::string text;
        const char* forTerminal;
        const char* forXML;
    } cases[] = {
        {"plain \u00E4\u20AC\U0001F682", "plain \u00E4\u20AC\U0001F682", "plain \u00E4\u20AC\U0001F682"},
        {"a\nb\tc\rd", "a\\nb\\tc\\rd", "a\nb\tc&#13;d"},
        {std::string("\0\x1B[31m\x7F", 7), "\\x00\\x1B[31m\\x7F", "[31m\x7F"},
        {"\u0085\u009B|", "\\u{85}\\u{9B}|", "\u0085\u009B|"},
        {"\u061C\u200E\u200F\u2028\u2029\u202A\u202E\u2066\u2069",
         "\\u{61C}\\u{200E}\\u{200F}\\u{2028}\\u{2029}\\u{202A}\\u{202E}\\u{2066}\\u{2069}",
         "\u061C\u200E\u200F\u2028\u2029\u202A\u202E\u2066\u2069"},
        {"<&>\"'\uFFFE\uFFFF", "<&>\"'\uFFFE\uFFFF", "&lt;&amp;&gt;\"'"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Escapes::ForTerminal(c.text), c.forTerminal);
        EXPECT_EQ(Escapes::ForXML(c.text), c.forXML);
    }
    EXPECT_EQ(Escapes::ForTerminal("a\xFF"), "a\\xFF");
    EXPECT_EQ(Escapes::Base64("fo"), "Zm8=");
    EXPECT_EQ(Escapes::Base64("\xFF\xFE\xFD"), "//79");
    std::string bytes;
    for (const char* text : {"", "f", "fo", "\xFF\xFE\xFD"}) {
        EXPECT_TRUE(Escapes::FromBase64(Escapes::Base64(text), bytes));
        EXPECT_EQ(bytes, text);
    }
    for (const char* wrong : {"Z", "Zg", "Zg=", "Zh==", "Z===", "====", "Zm 8", "Zg==Zg=="}) {
        EXPECT_FALSE(Escapes::FromBase64(wrong, bytes)) << wrong;
    }
}

TEST(Writers, TextIsForPeople)
{
    const tAnswer answer = MakeAttributes({{"kMDItemAuthors", true, {"A", "B"}},
                                           {"kMDItemDescription", false, {"x\x1B[2J\ny"}},
                                           {"kMDItemLayerNames", true, {}},
                                           {"other\n", false, {"z"}}});
    testing::internal::CaptureStderr();
    EXPECT_EQ(Written(MakeTextWriter, {{"p\nq", answer}, {"failed\t", ElementFailure()}}),
              "p\\nq\n  Author:       A, B\n  Description:  x\\x1B[2J\\ny\n  Layers:\n  other\\n:      z\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "velmora: failed\\t: element 2 is damaged\n");
}

TEST(Writers, JSONIsALineForEveryInput)
{
    std::string everyControl;
    for (char c = 0; c < 0x20; ++c) {
        everyControl.push_back(c);
    }
    const tAnswer answer = MakeAttributes(
        {{"kMDItemAuthors", true, {"\u00C4"}}, {"kMDItemDescription", false, {everyControl + "\x7F\"\\\u2028"}}});
    const std::string text =
        Written(MakeJSONWriter,
                {{"a\nb", answer}, {"\xFFz", ElementFailure()}, {"t", MakeFailure(eFailure::kTimeout, "late")}});
    std::istringstream lines(text);
    std::vector<nlohmann::ordered_json> records;
    for (std::string line; std::getline(lines, line);) {
        records.push_back(nlohmann::ordered_json::parse(line));
    }
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0]["path"], "a\nb");
    EXPECT_EQ(records[0]["attributes"]["kMDItemDescription"], everyControl + "\x7F\"\\\u2028");
    EXPECT_EQ(records[1].dump(), R"({"path":")"
                                 "\uFFFD"
                                 R"(z","path_base64":"/3o=","ok":false,)"
                                 R"("error":{"code":4,"element":2,"message":"element 2 is damaged"}})");
    EXPECT_EQ(records[2].dump(), R"({"path":"t","ok":false,"error":{"code":"timeout","message":"late"}})");
}

TEST(Writers, PropertyListIsOneDocument)
{
    const tAnswer answer =
        MakeAttributes({{"kMDItemLayerNames", true, {"a<b\r", ""}}, {"empty", true, {}}, {"d", false, {"\1x"}}});
    std::string text = Written(MakePropertyListWriter,
                               {{"p", answer}, {"\2", ElementFailure()}, {"m", MakeFailure(eFailure::kMemory, "&")}});
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t'; }), text.end());
    EXPECT_EQ(text.substr(text.find("<array>")),
              "<array><dict><key>path</key><string>p</string><key>ok</key><true/><key>attributes</key>"
              "<dict><key>kMDItemLayerNames</key><array><string>a&lt;b&#13;</string><string></string></array>"
              "<key>empty</key><array/><key>d</key><string>x</string></dict></dict>"
              "<dict><key>path</key><string></string><key>path_base64</key><string>Ag==</string>"
              "<key>ok</key><false/><key>error</key><dict><key>code</key><integer>4</integer><key>element</key>"
              "<integer>2</integer><key>message</key><string>element 2 is damaged</string></dict></dict>"
              "<dict><key>path</key><string>m</string><key>ok</key><false/><key>error</key><dict><key>code</key>"
              "<string>memory</string><key>message</key><string>&amp;</string></dict></dict></array></plist>");
}

TEST(Progress, FitsTheTerminal)
{
    const tProgress known = {250, 3, 1000, "/home/me/\x1B[2J/Gr\u00FCn.velmora"};
    EXPECT_EQ(CProgress::FormatBar(known, 2, 200),
              "[#####...............] 250/1000 documents, 125/s, 0:06 left, 3 failed  /home/me/\\x1B[2J/Gr??n.velmora");
    EXPECT_EQ(CProgress::FormatBar(known, 2, 82).size(), 82U);
    EXPECT_EQ(CProgress::FormatBar(known, 2, 10), "[#####....");
    // A total that was counted before more documents came is none.
    EXPECT_EQ(CProgress::FormatBar({250, 0, 200, ""}, 5000, 80), "250 documents, 0/s");
}
