#include "Platform/MacRoman.h"

#include <gtest/gtest.h>
#include <memory>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

using namespace Platform;

TEST(MacRoman, AgreesWithAnIndependentConverterInBothDirections)
{
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open("macintosh", &error), &ucnv_close);
    ASSERT_TRUE(U_SUCCESS(error)) << u_errorName(error);

    int convertible = 0;
    for (int i = 0; i < 256; ++i) {
        SCOPED_TRACE(i);
        const char byte = static_cast<char>(i);
        UChar expected[4] = {};
        ASSERT_EQ(ucnv_toUChars(converter.get(), expected, 4, &byte, 1, &error), 1);
        EXPECT_EQ(MacRomanToUnicode(static_cast<unsigned char>(i)), expected[0]);

        char utf8[8] = {};
        int32_t length = 0;
        u_strToUTF8(utf8, sizeof utf8, &length, expected, 1, &error);
        EXPECT_EQ(MacRomanToUtf8(std::string(1, byte)), std::string(utf8, static_cast<size_t>(length)));
        std::string back;
        EXPECT_TRUE(Utf8ToMacRoman(MacRomanToUtf8(std::string(1, byte)), back));
        EXPECT_EQ(back, std::string(1, byte));
    }
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        unsigned char byte = 0x55;
        if (UnicodeToMacRoman(static_cast<char16_t>(unit), byte)) {
            ++convertible;
            EXPECT_EQ(MacRomanToUnicode(byte), unit);
        } else {
            EXPECT_EQ(byte, 0x55) << unit;
        }
    }
    EXPECT_EQ(convertible, 256);
    // The two that converters get wrong.
    EXPECT_EQ(MacRomanToUtf8("\xC6\xF0"), "\u2206\uF8FF");
}

TEST(MacRoman, RefusesMalformedAndForeignTexts)
{
    std::string result = "before";
    for (const char* text :
         {"a\xC3", "\xC0\x80", "\xE2\x28\xAC", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82\xAC\x80", // malformed
          "\u0394", "\u2126", "\U0001F682", "\U00010041", "a\u0301"}) {                                // not in the set
        EXPECT_FALSE(Utf8ToMacRoman(text, result)) << testing::PrintToString(text);
        EXPECT_EQ(result, "before");
    }
    using namespace std::string_literals;
    ASSERT_TRUE(Utf8ToMacRoman("Z\u00FCge \u20AC 5\0 \uFB01"s, result));
    EXPECT_EQ(result, "Z\x9Fge \xDB 5\0 \xDE"s);
}
