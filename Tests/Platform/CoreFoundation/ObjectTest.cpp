// References, booleans, numbers, data, collections, UUIDs, URLs, byte order.
#include "Reference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <unistd.h>

template <typename T>
static tOwned<CFNumberRef> Number(CFNumberType type, T value)
{
    return tOwned<CFNumberRef>(CFNumberCreate(kCFAllocatorDefault, type, &value));
}

TEST(CFType, CountsReferencesAndTellsKinds)
{
    const tOwned<CFUUIDRef> uuid(CFUUIDCreateFromString(nullptr, CFSTR("6EBC27C4-899C-11D8-84AE-0003936726FC")));
    const CFIndex before = CFGetRetainCount(uuid.get());
    const tOwned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(array.get(), uuid.get());
    EXPECT_EQ(CFGetRetainCount(uuid.get()), before + 1);
    CFRetain(uuid.get());
    EXPECT_EQ(CFGetRetainCount(uuid.get()), before + 2);
    CFRelease(uuid.get());
    EXPECT_EQ(CFGetRetainCount(uuid.get()), before + 1);

    const int one = 1;
    const tOwned<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberIntType, &one));
    const tOwned<CFDataRef> data(CFDataCreate(nullptr, nullptr, 0));
    const tOwned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    const tOwned<CFURLRef> url = Url("/");
    const CFTypeID kinds[][2] = {
        {CFGetTypeID(CFSTR("x")), CFStringGetTypeID()},
        {CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID()},
        {CFGetTypeID(kCFBooleanFalse), CFBooleanGetTypeID()},
        {CFGetTypeID(number.get()), CFNumberGetTypeID()},
        {CFGetTypeID(data.get()), CFDataGetTypeID()},
        {CFGetTypeID(array.get()), CFArrayGetTypeID()},
        {CFGetTypeID(dictionary.get()), CFDictionaryGetTypeID()},
        {CFGetTypeID(uuid.get()), CFUUIDGetTypeID()},
        {CFGetTypeID(url.get()), CFURLGetTypeID()},
        {CFGetTypeID(CFBundleGetMainBundle()), CFBundleGetTypeID()},
    };
    for (const auto& kind : kinds) {
        EXPECT_EQ(kind[0], kind[1]);
    }
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, number.get())); // although Foundation finds YES equal to 1
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, nullptr));
}

TEST(CFNumber, ConvertsAndTellsLoss)
{
    constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
    const tOwned<CFNumberRef> minus = Number<signed char>(kCFNumberCharType, -5);
    const tOwned<CFNumberRef> large = Number<int64_t>(kCFNumberSInt64Type, kMost);
    const tOwned<CFNumberRef> half = Number(kCFNumberDoubleType, 2.5);
    const tOwned<CFNumberRef> whole = Number(kCFNumberFloatType, 300.0f);
    const tOwned<CFNumberRef> huge = Number(kCFNumberDoubleType, 9223372036854775808.0);
    const tOwned<CFNumberRef> nothing = Number(kCFNumberDoubleType, std::nan(""));
    const struct {
        const char* what;
        CFNumberRef number;
        CFNumberType type;
        bool exact;
        int64_t value;
    } cases[] = {
        {"negative character", minus.get(), kCFNumberSInt64Type, true, -5},
        {"largest", large.get(), kCFNumberCFIndexType, true, kMost},
        {"largest as 32 bits", large.get(), kCFNumberSInt32Type, false, std::numeric_limits<int32_t>::max()},
        {"fraction", half.get(), kCFNumberSInt64Type, false, 2},
        {"whole float", whole.get(), kCFNumberSInt64Type, true, 300},
        {"whole float as a byte", whole.get(), kCFNumberSInt8Type, false, 127},
        {"just too large a double", huge.get(), kCFNumberSInt64Type, false, kMost},
        {"not a number", nothing.get(), kCFNumberSInt64Type, false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        int64_t value = 0;
        EXPECT_EQ(CFNumberGetValue(c.number, c.type, &value), c.exact);
        if (c.type == kCFNumberSInt32Type) {
            value = static_cast<int32_t>(value);
        }
        EXPECT_EQ(value, c.value);
    }
    double value = 0;
    EXPECT_TRUE(CFNumberGetValue(half.get(), kCFNumberDoubleType, &value));
    EXPECT_EQ(value, 2.5);
    EXPECT_FALSE(CFNumberGetValue(large.get(), kCFNumberDoubleType, &value)); // 63 bits do not fit into 53
    EXPECT_TRUE(CFNumberIsFloatType(half.get()));
    EXPECT_FALSE(CFNumberIsFloatType(large.get()));
}

TEST(CFCollections, HoldValuesAndRefuseNulls)
{
    const tOwned<CFMutableDictionaryRef> dictionary(
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(dictionary.get(), CFSTR("a"), CFSTR("1"));
    CFDictionaryAddValue(dictionary.get(), CFSTR("a"), CFSTR("2"));
    CFDictionarySetValue(dictionary.get(), IUnknownUUID, CFSTR("by UUID"));
    CFDictionarySetValue(dictionary.get(), CFSTR("b"), nullptr);
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 2);
    EXPECT_EQ(Utf8(CFDictionaryGetValue(dictionary.get(), Text("a").get())), "1");
    EXPECT_EQ(Utf8(CFDictionaryGetValue(dictionary.get(), IUnknownUUID)), "by UUID");
    const void* keys[2] = {};
    const void* values[2] = {};
    CFDictionaryGetKeysAndValues(dictionary.get(), keys, values);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), keys[i]), values[i]);
    }
    const void* found = keys;
    EXPECT_FALSE(CFDictionaryGetValueIfPresent(dictionary.get(), CFSTR("c"), &found));
    EXPECT_EQ(found, keys);
    CFDictionaryRemoveValue(dictionary.get(), CFSTR("a"));
    EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), CFSTR("a")));

    const void* texts[] = {CFSTR("x"), CFSTR("y")};
    const tOwned<CFArrayRef> array(CFArrayCreate(nullptr, texts, 2, &kCFTypeArrayCallBacks));
    EXPECT_EQ(CFArrayGetCount(array.get()), 2);
    EXPECT_EQ(Utf8(CFArrayGetValueAtIndex(array.get(), 1)), "y");
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 2), nullptr);
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), -1), nullptr);

    const UInt8 bytes[] = {1, 0, 255};
    const tOwned<CFDataRef> data(CFDataCreate(nullptr, bytes, sizeof bytes));
    UInt8 copy[4] = {9, 9, 9, 9};
    CFDataGetBytes(data.get(), CFRangeMake(1, 10), copy);
    EXPECT_EQ(std::string(copy, copy + 4), std::string("\0\xFF\x09\x09", 4));
}

TEST(CFUUID, ReadsAndWritesItsText)
{
    const char* const text = "8B08C4BF-415B-11D8-B3F9-0003936726FC";
    const tOwned<CFUUIDRef> upper(CFUUIDCreateFromString(nullptr, Text(text).get()));
    const tOwned<CFUUIDRef> lower(CFUUIDCreateFromString(nullptr, Text("8b08c4bf-415b-11d8-b3f9-0003936726fc").get()));
    ASSERT_TRUE(upper && lower);
    EXPECT_TRUE(CFEqual(upper.get(), lower.get()));
    EXPECT_EQ(CFHash(upper.get()), CFHash(lower.get()));
    EXPECT_EQ(Utf8(tOwned<CFStringRef>(CFUUIDCreateString(nullptr, lower.get())).get()), text);
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(upper.get());
    EXPECT_EQ(bytes.byte0, 0x8B);
    EXPECT_EQ(bytes.byte15, 0xFC);
    EXPECT_TRUE(CFEqual(tOwned<CFUUIDRef>(CFUUIDCreateFromUUIDBytes(nullptr, bytes)).get(), upper.get()));
    EXPECT_EQ(IUnknownUUID, IUnknownUUID);
    EXPECT_FALSE(CFEqual(IUnknownUUID, upper.get()));
    for (const char* wrong :
         {"", "8B08C4BF", "8B08C4BF-415B-11D8-B3F9-0003936726F", "8B08C4BF-415B-11D8-B3F90-003936726FC",
          "8B08C4BF-415B-11D8-B3F9-0003936726FG", "{8B08C4BF-415B-11D8-B3F9-0003936726FC}"}) {
        EXPECT_EQ(CFUUIDCreateFromString(nullptr, Text(wrong).get()), nullptr) << wrong;
    }
}

TEST(CFURL, HoldsPathsAsBytes)
{
    EXPECT_EQ(Path(Url("/a/b/").get()), "/a/b");
    EXPECT_EQ(Path(Url("/").get()), "/");
    const std::string latin = "/tmp/Stra\xDF"
                              "e"; // no UTF-8
    EXPECT_EQ(Path(Url(latin).get()), latin);
    EXPECT_EQ(CFURLCopyLastPathComponent(Url(latin).get()), nullptr);
    EXPECT_EQ(Utf8(tOwned<CFStringRef>(CFURLCopyLastPathComponent(Url("/a/X.ext/").get())).get()), "X.ext");
    EXPECT_EQ(Path(tOwned<CFURLRef>(CFURLCreateCopyDeletingLastPathComponent(nullptr, Url("/a/b").get())).get()), "/a");
    EXPECT_EQ(Path(tOwned<CFURLRef>(CFURLCreateCopyDeletingLastPathComponent(nullptr, Url("/a").get())).get()), "/");
    char folder[4096];
    ASSERT_NE(getcwd(folder, sizeof folder), nullptr);
    EXPECT_EQ(Path(Url("x").get()), std::string(folder) + "/x");
    EXPECT_EQ(Url(""), nullptr);
    UInt8 small[4];
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(Url("/abc").get(), true, small, sizeof small));
    EXPECT_TRUE(CFURLGetFileSystemRepresentation(Url("/ab").get(), true, small, sizeof small));
}

TEST(CFByteOrder, SwappedFloatsAreBigEndian)
{
    const CFSwappedFloat32 swapped = CFConvertFloatHostToSwapped(1.0f); // 0x3F800000
    EXPECT_EQ(memcmp(&swapped, "\x3F\x80\0\0", 4), 0);
    EXPECT_EQ(CFConvertFloatSwappedToHost(swapped), 1.0f);
    const CFSwappedFloat64 wide = CFConvertDoubleHostToSwapped(-2.0); // 0xC0...
    EXPECT_EQ(memcmp(&wide, "\xC0\0\0\0\0\0\0\0", 8), 0);
    EXPECT_EQ(CFConvertDoubleSwappedToHost(wide), -2.0);
    const UInt16 length = CFSwapInt16HostToBig(0x1234);
    EXPECT_EQ(memcmp(&length, "\x12\x34", 2), 0);
}
