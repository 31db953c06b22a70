#include "KVUStr/KVUStr.h"
#include "Platform/Released.h"
#include "Reports.h"
#include "support/Fatal.h"

#include <cstring>
#include <memory>
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

TEST(KVUStr, Replacing)
{
    const struct {
        const char* find;
        const char* replace;
        bool ignoreCase;
        const char* result;
        int count;
    } cases[] = {
        {"c", "cc", false, "aAbBcc", 1}, // its own replacement is not searched again
        {"Ab", "", false, "aBc", 1},     // what closes up behind the first one is left
        {"A", "xyz", true, "xyzxyzbBc", 2}, {"aa", "x", false, "aAbBc", 0},
        {"", "x", false, "aAbBc", 0},       {"b", "123456", false, "aA123456B", 1}, // cut to its buffer
    };
    for (const auto& c : cases) {
        char text[10] = "aAbBc";
        EXPECT_EQ(KVUStr::ReplaceStrings(text, c.find, c.replace, c.ignoreCase, sizeof text), c.count) << c.find;
        EXPECT_STREQ(text, c.result);
    }
    char path[] = "a:b:";
    KVUStr::ReplaceChars(path, ':', '/');
    EXPECT_EQ(KVUStr::CountCharOccurance(path, '/'), 2);
}

TEST(KVUStr, CaseLettersAndWhitespaceAreThoseOfASCII)
{
    char text[] = "az\xE4[`{";
    KVUStr::strupr(text);
    EXPECT_STREQ(text, "AZ\xE4[`{");
    KVUStr::strlwr(text);
    EXPECT_STREQ(text, "az\xE4[`{");
    std::string words = " \t\r\n\v\f\xCAjOHN o'NEILL-sMITH,x.y\tz 1st";
    KVUStr::ClearLeadingWhitespace(words);
    KVUStr::CorrectCase(words);
    EXPECT_EQ(words, "\xCAjohn O'Neill-Smith,X.Y\tZ 1st");
    EXPECT_TRUE(KVUStr::ContainsLetters("12z"));
    EXPECT_FALSE(KVUStr::ContainsLetters("12@[`{\xE4"));
}

TEST(KVUStr, Lines)
{
    // CR LF gives an empty line; a buffer of five takes four characters, and the fifth of a longer line is lost.
    char content[] = "one\r\ntwo\nabcd\nabcdefg\nend";
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fmemopen(content, strlen(content), "r"), &fclose);
    const CReports reports;
    testing::internal::CaptureStderr();
    char line[5];
    for (const char* expected : {"one", "", "two", "abcd", "abcd", "fg", "end", ""}) {
        EXPECT_EQ(KVUStr::fgetline(line, sizeof line, file.get()), line);
        EXPECT_STREQ(line, expected);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              " Function    :  static char *KVUStr::fgetline(char *, int, FILE *)\n Error Code  :  5\n"
              " Description :  Line too long\n\n");
    EXPECT_EQ(KVUStr::fgetline(line, sizeof line, nullptr), nullptr);
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
    EXPECT_EQ(KVUStr::CompareStrings("B", "a"), -1);
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
    ExpectFatal({{"static void KVUStr::CStr2UniChar\\(const char \\*, char \\*, int, int &\\)\n.*"
                  "Failed to create CFStringRef",
                  [&] { KVUStr::CStr2UniChar("\xC3", wide, sizeof wide, length); }}});
    HFSUniStr255 name;
    EXPECT_TRUE(KVUStr::CStr2HFSUniStr("\x8A", &name));
    EXPECT_EQ(name.length, 1);
    EXPECT_EQ(name.unicode[0], 0xE4);
    EXPECT_TRUE(KVUStr::CStr2HFSUniStr(std::string(254, 'x').c_str(), &name));
    EXPECT_FALSE(KVUStr::CStr2HFSUniStr(std::string(255, 'x').c_str(), &name));
}
