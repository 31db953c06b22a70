#include "KVUStr/KVUStr.h"
#include "Platform/Released.h"
#include "Reports.h"
#include "support/Fatal.h"
#include "support/Streams.h"

#include <cstring>
#include <string>

namespace {
Platform::tReleased<CFStringRef> Make(const std::string& utf8)
{
    return Platform::tReleased<CFStringRef>(
        CFStringCreateWithCString(kCFAllocatorDefault, utf8.c_str(), kCFStringEncodingUTF8));
}
} // namespace

TEST(KVUStr, CopyIsCutTerminatedAndPadded)
{
    char field[66];
    memset(field, '#', sizeof field);
    KVUStr::strncpy(field, std::string(100, 'a').c_str(), 64);
    EXPECT_EQ(field, std::string(63, 'a'));
    EXPECT_EQ(field[64], '#');
    KVUStr::strncpy(field, "ab", 64);
    EXPECT_EQ(std::string(field, 65), "ab" + std::string(62, '\0') + "#");
}

TEST(KVUStr, HexText)
{
    char out[64];
    KVUStr::HexChar_Encode(out, "AB\n~\xE4", sizeof out);
    EXPECT_STREQ(out, "4142 A7EFFFFFFE4");
    KVUStr::HexChar_Encode(out, "ABC", 4);
    EXPECT_STREQ(out, "414") << "cut to its buffer";
    KVUStr::HexChar_Decode(" A7eE441zz4200437", out, sizeof out);
    EXPECT_STREQ(out, "\n~\xE4"
                      "ABC");
}

TEST(KVUStr, ReplacingKeepsWithinTheBuffer)
{
    const struct {
        const char* find;
        const char* replace;
        bool ignoreCase;
        const char* result;
    } cases[] = {{"c", "cc", false, "aAbBcc"}, // its own replacement is not searched again
                 {"A", "xyz", true, "xyzxyzbBc"},
                 {"", "x", false, "aAbBc"},
                 {"b", "123456", false, "aA123456B"}}; // cut
    for (const auto& c : cases) {
        char text[10] = "aAbBc";
        KVUStr::ReplaceStrings(text, c.find, c.replace, c.ignoreCase, sizeof text);
        EXPECT_STREQ(text, c.result);
    }
}

TEST(KVUStr, LinesAreCutToTheirBuffer)
{
    // CR LF gives an empty line; a buffer of five takes four characters, and the fifth of a longer line is lost.
    const tStream file = StreamOf("one\r\ntwo\nabcd\nabcdefg\nend");
    const CReports reports;
    char line[5];
    for (const char* expected : {"one", "", "two", "abcd", "abcd", "fg", "end", ""}) {
        EXPECT_EQ(KVUStr::fgetline(line, sizeof line, file.get()), line);
        EXPECT_STREQ(line, expected);
    }
}

TEST(KVUStr, TextsOfCoreFoundationStrings)
{
    const auto roman = [](const std::string& utf8) {
        const char* const text = KVUStr::GetCStrFromCFStr(Make(utf8).get(), kCFStringEncodingMacRoman);
        return std::string(text != nullptr ? text : "null");
    };
    EXPECT_EQ(roman("Gleispl\xC3\xA4ne"), "Gleispl\x8Ane");
    EXPECT_EQ(roman("\xE4\xB8\xAD"), "null");
    EXPECT_EQ(roman(std::string(1023, 'x')), std::string(1023, 'x'));
    EXPECT_EQ(roman(std::string(1024, 'x')), "null");
    EXPECT_EQ(KVUStr::GetCStrFromCFStr(nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(KVUStr::CompareStrings("\xC3\xA4", "\x8A"), 0) << "UTF-8 and Mac OS Roman of the same letter";
    EXPECT_EQ(KVUStr::CompareStrings("\xC3\xA4", "z"), 1);
}

TEST(KVUStr, WideTexts)
{
    alignas(2) char wide[8];
    int length = -1;
    KVUStr::CStr2UniChar("a\xC3\xA4", wide, sizeof wide, length);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(memcmp(wide, u"a\u00E4", 5), 0);
    KVUStr::CStr2UniChar("abcd", wide, sizeof wide, length);
    EXPECT_EQ(length, 0) << "eight bytes and the zero do not fit";
    ExpectFatal(
        {{"CStr2UniChar.*\n.*\n.*CFStringRef", [&] { KVUStr::CStr2UniChar("\xC3", wide, sizeof wide, length); }}});
    HFSUniStr255 name;
    EXPECT_TRUE(KVUStr::CStr2HFSUniStr("\x8A", &name));
    EXPECT_EQ(name.length, 1);
    EXPECT_EQ(name.unicode[0], 0xE4);
    EXPECT_TRUE(KVUStr::CStr2HFSUniStr(std::string(254, 'x').c_str(), &name));
    EXPECT_FALSE(KVUStr::CStr2HFSUniStr(std::string(255, 'x').c_str(), &name));
}
