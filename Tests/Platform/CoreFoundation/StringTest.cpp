// Strings: conversion in both directions, limits of buffers, comparison.
#include "Reference.h"

#include <gtest/gtest.h>

static tOwned<CFStringRef> Decode(const std::string& bytes, CFStringEncoding encoding, bool external = false)
{
    return tOwned<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault,
                                                       reinterpret_cast<const UInt8*>(bytes.data()),
                                                       static_cast<CFIndex>(bytes.size()), encoding, external));
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

TEST(CFString, ConvertsWholeTextsOrNone)
{
    const struct {
        std::string bytes;
        CFStringEncoding encoding;
        const char16_t* units; ///< null where it is malformed
    } cases[] = {
        {"\xC6\xDB\xBD\xF0\x80\xFF", kCFStringEncodingMacRoman, u"\u2206\u20AC\u03A9\uF8FF\u00C4\u02C7"},
        {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x9A\x82", kCFStringEncodingUTF8, u"\u00E4\u20AC\U0001F682"},
        {"\xF4\x90\x80\x80", kCFStringEncodingUTF8, nullptr}, // beyond the last character
        {"\xED\xA0\x80", kCFStringEncodingUTF8, nullptr},     // a surrogate
        {"abc\xE2\x82", kCFStringEncodingUTF8, nullptr},
        {"pl\xE4in", kCFStringEncodingASCII, nullptr},
        {"abc", kCFStringEncodingUnicode, nullptr}, // half a unit
        {"abc", 0x0201, nullptr},                   // an encoding that is not known
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        const tOwned<CFStringRef> string = Decode(c.bytes, c.encoding);
        ASSERT_EQ(string != nullptr, c.units != nullptr);
        if (string != nullptr) {
            EXPECT_EQ(Units(string.get()), c.units);
            char back[32];
            ASSERT_TRUE(CFStringGetCString(string.get(), back, sizeof back, c.encoding));
            EXPECT_EQ(back, c.bytes);
        }
    }
    EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorDefault, nullptr, kCFStringEncodingUTF8), nullptr);
    // A byte order mark counts in external text only.
    EXPECT_EQ(Units(Decode({'\xFE', '\xFF', '\0', 'a'}, kCFStringEncodingUnicode, true).get()), u"a");
    EXPECT_EQ(Units(Decode({'\xFF', '\xFE', 'a', '\0'}, kCFStringEncodingUnicode).get()), u"\uFEFFa");
}

TEST(CFString, FillsABufferOnlyWhenAllOfItFits)
{
    const std::u16string accents = std::u16string(511, u'\u00E4') + u"a";
    const struct {
        const char* what;
        std::u16string units;
        CFIndex size;
        CFStringEncoding encoding;
        bool fits;
    } cases[] = {
        {"1,023 and the zero", std::u16string(1023, u'x'), 1024, kCFStringEncodingMacRoman, true},
        {"1,024 and no zero", std::u16string(1024, u'x'), 1024, kCFStringEncodingMacRoman, false},
        {"bytes count, not characters", accents, 1023, kCFStringEncodingUTF8, false},
        {"surrogates in the wrong order", {0xDC00, 0xD800}, 1024, kCFStringEncodingUTF8, false},
        {"unpaired surrogate as UTF-16", {u'a', 0xD800}, 1024, kCFStringEncodingUnicode, true},
        {"255 units in 510 bytes", std::u16string(255, u'n'), 510, kCFStringEncodingUnicode, false},
        {"not in Mac OS Roman", u"\u4E2D", 1024, kCFStringEncodingMacRoman, false},
        {"no room at all", u"x", 0, kCFStringEncodingUTF8, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        char buffer[1025];
        memset(buffer, 0x7F, sizeof buffer);
        EXPECT_EQ(CFStringGetCString(FromUnits(c.units).get(), buffer, c.size, c.encoding), c.fits);
        EXPECT_EQ(buffer[c.size], 0x7F);
        EXPECT_EQ(buffer[0] == 0x7F, !c.fits);
    }
}
