#include "KVUStr/KVUStr.h"
#include "Platform/Released.h"
#include "Reports.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

using testing::ExitedWithCode;

namespace {
using tStringHolder = Platform::tReleased<CFStringRef>;

tStringHolder Make(const std::string& utf8)
{
    return tStringHolder(CFStringCreateWithCString(kCFAllocatorDefault, utf8.c_str(), kCFStringEncodingUTF8));
}

struct tFileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
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
    KVUStr::strncpy(field, "x", 0);
    EXPECT_STREQ(field, "ab");
}

TEST(KVUStr, HexText)
{
    const struct {
        const char* text;
        const char* hex;
    } cases[] = {{"AB", "4142"}, {"", ""}, {"\n~", " A7E"}, {"\xE4", "FFFFFFE4"}};
    char out[64];
    for (const auto& c : cases) {
        KVUStr::HexChar_Encode(out, c.text, sizeof out);
        EXPECT_STREQ(out, c.hex);
    }
    KVUStr::HexChar_Encode(out, "ABC", 4);
    EXPECT_STREQ(out, "414") << "cut to its buffer";

    const struct {
        const char* hex;
        const char* text;
    } decoded[] = {{"414", "A"}, {" A7e", "\n~"}, {"E4", "\xE4"}, {"41zz42", "AB"}, {"410042", "AB"}, {"", ""}};
    for (const auto& c : decoded) {
        KVUStr::HexChar_Decode(c.hex, out, sizeof out);
        EXPECT_STREQ(out, c.text) << c.hex;
    }
    char inPlace[] = "414243";
    KVUStr::HexChar_Decode(inPlace, inPlace, 3);
    EXPECT_STREQ(inPlace, "AB");
}

TEST(KVUStr, Replacing)
{
    const struct {
        const char* text;
        const char* find;
        const char* replace;
        bool ignoreCase;
        const char* result;
        int count;
    } cases[] = {
        {"a", "a", "aa", false, "aa", 1}, // its own replacement is not searched again
        {"abcabc", "bc", "X", false, "aXaX", 2},   {"abcabc", "bc", "", false, "aa", 2},
        {"aabb", "ab", "", false, "ab", 1}, // what closes up behind the first one is left
        {"Abab", "AB", "x", true, "xx", 2},        {"Abab", "AB", "x", false, "Abab", 0},
        {"KEEPme", "ME", "Me", true, "KEEPMe", 1}, {"abc", "", "x", false, "abc", 0},
    };
    for (const auto& c : cases) {
        char text[32];
        strcpy(text, c.text);
        EXPECT_EQ(KVUStr::ReplaceStrings(text, c.find, c.replace, c.ignoreCase, sizeof text), c.count) << c.text;
        EXPECT_STREQ(text, c.result);
    }
    char small[4] = "aXa";
    EXPECT_EQ(KVUStr::ReplaceStrings(small, "X", "long", false, sizeof small), 1);
    EXPECT_STREQ(small, "alo");

    char path[] = "a:b:";
    KVUStr::ReplaceChars(path, ':', '/');
    EXPECT_STREQ(path, "a/b/");
    EXPECT_EQ(KVUStr::CountCharOccurance(path, '/'), 2);
}

TEST(KVUStr, CaseLettersAndWhitespaceAreThoseOfASCII)
{
    char text[] = "az\xE4[`{";
    KVUStr::strupr(text);
    EXPECT_STREQ(text, "AZ\xE4[`{");
    KVUStr::strlwr(text);
    EXPECT_STREQ(text, "az\xE4[`{");

    std::string words = "jOHN o'NEILL-sMITH,x.y\tz 1st";
    KVUStr::CorrectCase(words);
    EXPECT_EQ(words, "John O'Neill-Smith,X.Y\tZ 1st");

    std::string padded = " \t\r\n\v\f a ";
    KVUStr::ClearLeadingWhitespace(padded);
    EXPECT_EQ(padded, "a ");
    padded = " \xCA";
    KVUStr::ClearLeadingWhitespace(padded);
    EXPECT_EQ(padded, "\xCA") << "the no-break space of Mac OS Roman stays";

    EXPECT_TRUE(KVUStr::ContainsLetters("12z"));
    EXPECT_FALSE(KVUStr::ContainsLetters("12@[`{\xE4"));
    EXPECT_FALSE(KVUStr::ContainsLetters(""));
}

TEST(KVUStr, Lines)
{
    // CR LF gives an empty line; a buffer of five takes four characters, and the fifth of a longer line is lost.
    char content[] = "one\r\ntwo\nabcd\nabcdefg\nabcde\nend";
    const std::unique_ptr<FILE, tFileCloser> file(fmemopen(content, strlen(content), "r"));
    CReports reports;
    testing::internal::CaptureStderr();
    char line[5];
    for (const char* expected : {"one", "", "two", "abcd", "abcd", "fg", "abcd", "", "end", ""}) {
        EXPECT_EQ(KVUStr::fgetline(line, sizeof line, file.get()), line);
        EXPECT_STREQ(line, expected);
    }
    EXPECT_NE(feof(file.get()), 0);
    const std::string message =
        " Function    :  static char *KVUStr::fgetline(char *, int, FILE *)\n Error Code  :  5\n"
        " Description :  Line too long\n\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message + message);
    EXPECT_EQ(reports.mAlerts.size(), 2u);
    EXPECT_EQ(KVUStr::fgetline(line, sizeof line, nullptr), nullptr);
    EXPECT_EQ(KVUStr::fgetline(line, 0, file.get()), nullptr);
}

TEST(KVUStr, TextsOfCoreFoundationStrings)
{
    EXPECT_EQ(KVUStr::GetCStrFromCFStr(nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_STREQ(KVUStr::GetCStrFromCFStr(Make("Gleispl\xC3\xA4ne").get(), kCFStringEncodingMacRoman), "Gleispl\x8Ane");
    EXPECT_EQ(KVUStr::GetCStrFromCFStr(Make("\xE4\xB8\xAD").get(), kCFStringEncodingMacRoman), nullptr);
    EXPECT_STREQ(KVUStr::GetCStrFromCFStr(Make(std::string(1023, 'x')).get(), kCFStringEncodingMacRoman),
                 std::string(1023, 'x').c_str());
    EXPECT_EQ(KVUStr::GetCStrFromCFStr(Make(std::string(1024, 'x')).get(), kCFStringEncodingMacRoman), nullptr);
}

TEST(KVUStr, WideTexts)
{
    alignas(2) char wide[8];
    int length = -1;
    KVUStr::CStr2UniChar("a\xC3\xA4", wide, sizeof wide, length);
    EXPECT_EQ(length, 2);
    const char16_t expected[] = {u'a', u'\u00E4'};
    EXPECT_EQ(memcmp(wide, expected, sizeof expected), 0);
    EXPECT_EQ(wide[4], '\0');
    KVUStr::CStr2UniChar("abcd", wide, sizeof wide, length);
    EXPECT_EQ(length, 0) << "eight bytes and the zero do not fit";
    EXPECT_STREQ(wide, "");
    EXPECT_EXIT(KVUStr::CStr2UniChar("\xC3", wide, sizeof wide, length), ExitedWithCode(0),
                "static void KVUStr::CStr2UniChar\\(const char \\*, char \\*, int, int &\\)\n.*"
                "Failed to create CFStringRef");

    HFSUniStr255 name;
    EXPECT_TRUE(KVUStr::CStr2HFSUniStr("\x8A", &name));
    EXPECT_EQ(name.length, 1);
    EXPECT_EQ(name.unicode[0], 0xE4);
    EXPECT_TRUE(KVUStr::CStr2HFSUniStr(std::string(254, 'x').c_str(), &name));
    EXPECT_FALSE(KVUStr::CStr2HFSUniStr(std::string(255, 'x').c_str(), &name));
    EXPECT_EQ(name.length, 0);
}

TEST(KVUStr, Comparing)
{
    EXPECT_EQ(KVUStr::CompareStrings("B", "a"), -1);
    EXPECT_EQ(KVUStr::CompareStrings("\xC3\xA4", "\x8A"), 0) << "UTF-8 and Mac OS Roman of the same letter";
    EXPECT_EQ(KVUStr::CompareStrings("\xC3\xA4", "z"), 1);
}
