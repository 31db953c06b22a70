// Strings: conversion in both directions, limits of buffers, comparison.
#include "Reference.h"

#include <gtest/gtest.h>

#include <set>

static tOwned<CFStringRef> Decode(const std::string& bytes, CFStringEncoding encoding)
{
    return tOwned<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault,
                                                       reinterpret_cast<const UInt8*>(bytes.data()),
                                                       static_cast<CFIndex>(bytes.size()), encoding, false));
}

static tOwned<CFStringRef> FromUnits(const std::u16string& units)
{
    return tOwned<CFStringRef>(CFStringCreateWithCharacters(
        kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()), static_cast<CFIndex>(units.size())));
}

static std::u16string Units(CFStringRef string)
{
    std::u16string units(static_cast<size_t>(CFStringGetLength(string)), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)), reinterpret_cast<UniChar*>(units.data()));
    return units;
}

TEST(CFString, MacRomanKeepsEveryByte)
{
    std::set<char16_t> seen;
    for (int value = 1; value < 256; ++value) {
        SCOPED_TRACE(value);
        const char text[] = {static_cast<char>(value), '\0'};
        const tOwned<CFStringRef> string(
            CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman));
        ASSERT_TRUE(string);
        const std::u16string units = Units(string.get());
        ASSERT_EQ(units.size(), 1u);
        seen.insert(units[0]);
        char back[2] = {};
        EXPECT_TRUE(CFStringGetCString(string.get(), back, sizeof back, kCFStringEncodingMacRoman));
        EXPECT_EQ(back[0], text[0]);
    }
    EXPECT_EQ(seen.size(), 255u);
    // Those where converters of other makes differ.
    EXPECT_EQ(Units(Decode("\xC6\xDB\xBD\xF0\x80\xFF", kCFStringEncodingMacRoman).get()),
              u"\u2206\u20AC\u03A9\uF8FF\u00C4\u02C7");
}

TEST(CFString, RefusesMalformedText)
{
    const struct {
        const char* what;
        std::string bytes;
        CFStringEncoding encoding;
        bool valid;
    } cases[] = {
        {"two, three and four bytes", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x9A\x82", kCFStringEncodingUTF8, true},
        {"the last character", "\xF4\x8F\xBF\xBF", kCFStringEncodingUTF8, true},
        {"beyond the last character", "\xF4\x90\x80\x80", kCFStringEncodingUTF8, false},
        {"over-long slash", "\xC0\xAF", kCFStringEncodingUTF8, false},
        {"surrogate in UTF-8", "\xED\xA0\x80", kCFStringEncodingUTF8, false},
        {"cut character", "abc\xE2\x82", kCFStringEncodingUTF8, false},
        {"continuation alone", "\x80", kCFStringEncodingUTF8, false},
        {"ASCII", "plain", kCFStringEncodingASCII, true},
        {"high byte as ASCII", "pl\xE4in", kCFStringEncodingASCII, false},
        {"half a unit", "abc", kCFStringEncodingUnicode, false},
        {"empty", "", kCFStringEncodingUTF8, true},
        {"an encoding that is not known", "abc", 0x0201, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const tOwned<CFStringRef> string = Decode(c.bytes, c.encoding);
        ASSERT_EQ(string != nullptr, c.valid);
        if (c.valid) {
            char back[32];
            ASSERT_TRUE(CFStringGetCString(string.get(), back, sizeof back, c.encoding));
            EXPECT_EQ(back, c.bytes);
        }
    }
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(Units(Text("\U0001F682").get()), u"\U0001F682");
}

TEST(CFString, FillsABufferOnlyWhenAllOfItFits)
{
    const std::string text(1023, 'x');
    const tOwned<CFStringRef> fits = Text(text);
    const tOwned<CFStringRef> tooLong = Text(text + "y");
    const tOwned<CFStringRef> accents = FromUnits(std::u16string(511, u'\u00E4') + u"a");
    const tOwned<CFStringRef> unpaired = FromUnits({u'a', 0xD800});
    const tOwned<CFStringRef> reversed = FromUnits({0xDC00, 0xD800});
    const tOwned<CFStringRef> name = FromUnits(std::u16string(254, u'n'));
    const tOwned<CFStringRef> longName = FromUnits(std::u16string(255, u'n'));
    const tOwned<CFStringRef> han = FromUnits(u"\u4E2D");
    const struct {
        const char* what;
        CFStringRef string;
        CFIndex size;
        CFStringEncoding encoding;
        bool fits;
    } cases[] = {
        {"1,023 and the zero", fits.get(), 1024, kCFStringEncodingMacRoman, true},
        {"1,024 and no zero", tooLong.get(), 1024, kCFStringEncodingMacRoman, false},
        {"bytes count, not characters", accents.get(), 1023, kCFStringEncodingUTF8, false},
        {"bytes fit exactly", accents.get(), 1024, kCFStringEncodingUTF8, true},
        {"unpaired surrogate", unpaired.get(), 1024, kCFStringEncodingUTF8, false},
        {"surrogates in the wrong order", reversed.get(), 1024, kCFStringEncodingUTF8, false},
        {"unpaired surrogate as UTF-16", unpaired.get(), 1024, kCFStringEncodingUnicode, true},
        {"254 units in 510 bytes", name.get(), 510, kCFStringEncodingUnicode, true},
        {"255 units in 510 bytes", longName.get(), 510, kCFStringEncodingUnicode, false},
        {"not in Mac OS Roman", han.get(), 1024, kCFStringEncodingMacRoman, false},
        {"not in ASCII", accents.get(), 1024, kCFStringEncodingASCII, false},
        {"no room at all", fits.get(), 0, kCFStringEncodingUTF8, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        char buffer[1025];
        memset(buffer, 0x7F, sizeof buffer);
        EXPECT_EQ(CFStringGetCString(c.string, buffer, c.size, c.encoding), c.fits);
        EXPECT_EQ(buffer[c.size], 0x7F);
        if (!c.fits) {
            EXPECT_EQ(buffer[0], 0x7F);
        }
        EXPECT_EQ(CFStringGetCStringPtr(c.string, c.encoding), nullptr);
    }
    EXPECT_GE(CFStringGetMaximumSizeForEncoding(512, kCFStringEncodingUTF8), 1023);

    char units[6] = {1, 1, 1, 1, 1, 1};
    ASSERT_TRUE(CFStringGetCString(Text("\xC3\xA4z").get(), units, sizeof units, kCFStringEncodingUnicode));
    EXPECT_EQ(std::string(units, 6), std::string("\xE4\0z\0\0\1", 6)); // host order, one zero byte
    UniChar part[3] = {7, 7, 7};
    CFStringGetCharacters(Text("abc").get(), CFRangeMake(2, 3), part); // only one lies inside
    EXPECT_EQ(std::u16string(part, part + 3), (std::u16string{u'c', 7, 7}));
}

TEST(CFString, ComparesByUnits)
{
    const struct {
        const char *a, *b;
        CFStringCompareFlags options;
        CFComparisonResult result;
    } cases[] = {
        {"B", "a", 0, kCFCompareLessThan},
        {"\xC3\xA4", "z", 0, kCFCompareGreaterThan},
        {"abc", "abc", 0, kCFCompareEqualTo},
        {"ab", "abc", 0, kCFCompareLessThan},
        {"", "", 0, kCFCompareEqualTo},
        {"Track", "tRACK", kCFCompareCaseInsensitive, kCFCompareEqualTo},
        {"B", "a", kCFCompareCaseInsensitive, kCFCompareGreaterThan},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CFStringCompare(Text(c.a).get(), Text(c.b).get(), c.options), c.result) << c.a << " " << c.b;
    }
    EXPECT_EQ(CFSTR("one"), CFSTR("one"));
    EXPECT_TRUE(CFEqual(CFSTR("one"), Text("one").get()));
    EXPECT_FALSE(CFEqual(CFSTR("one"), CFSTR("two")));
}

TEST(CFString, ReadsAByteOrderMarkOnlyInExternalText)
{
    const UInt8 swapped[] = {0xFE, 0xFF, 0x00, 'a'};
    const tOwned<CFStringRef> external(
        CFStringCreateWithBytes(kCFAllocatorDefault, swapped, sizeof swapped, kCFStringEncodingUnicode, true));
    EXPECT_EQ(Utf8(external.get()), "a");
    const UInt8 host[] = {0xFF, 0xFE, 'a', 0x00};
    const tOwned<CFStringRef> internal(
        CFStringCreateWithBytes(kCFAllocatorDefault, host, sizeof host, kCFStringEncodingUnicode, false));
    EXPECT_EQ(Units(internal.get()), u"\uFEFFa");
}
