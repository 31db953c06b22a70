// References, booleans, numbers, data, collections, UUIDs, URLs.
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
    const tOwned<CFNumberRef> number = Number(kCFNumberIntType, 1);
    EXPECT_EQ(CFGetTypeID(number.get()), CFNumberGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID()); // which is a number to Foundation
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, number.get()));          // although Foundation finds YES equal to 1
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, nullptr));
}

TEST(CFNumber, ConvertsAndTellsLoss)
{
    constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
    const struct {
        const char* what;
        tOwned<CFNumberRef> number;
        CFNumberType type;
        bool exact;
        int64_t value;
    } cases[] = {
        {"negative character", Number<signed char>(kCFNumberCharType, -5), kCFNumberSInt64Type, true, -5},
        {"largest as 32 bits", Number<int64_t>(kCFNumberSInt64Type, kMost), kCFNumberSInt32Type, false, INT32_MAX},
        {"fraction", Number(kCFNumberDoubleType, 2.5), kCFNumberSInt64Type, false, 2},
        {"whole float as a byte", Number(kCFNumberFloatType, 300.0f), kCFNumberSInt8Type, false, 127},
        {"too large a double", Number(kCFNumberDoubleType, 0x1p63), kCFNumberSInt64Type, false, kMost},
        {"not a number", Number(kCFNumberDoubleType, std::nan("")), kCFNumberSInt64Type, false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        int64_t value = 0;
        EXPECT_EQ(CFNumberGetValue(c.number.get(), c.type, &value), c.exact);
        if (c.type == kCFNumberSInt32Type) {
            value = static_cast<int32_t>(value);
        }
        EXPECT_EQ(value, c.value);
    }
    double value = 0;
    EXPECT_TRUE(CFNumberGetValue(Number(kCFNumberDoubleType, 2.5).get(), kCFNumberDoubleType, &value));
    EXPECT_EQ(value, 2.5);
    EXPECT_FALSE(CFNumberGetValue(Number<int64_t>(kCFNumberSInt64Type, kMost).get(), kCFNumberDoubleType,
                                  &value)); // 63 bits do not fit into 53
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
    const void* texts[] = {CFSTR("x"), CFSTR("y")};
    const tOwned<CFArrayRef> array(CFArrayCreate(nullptr, texts, 2, &kCFTypeArrayCallBacks));
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
    EXPECT_EQ(Utf8(tOwned<CFStringRef>(CFUUIDCreateString(nullptr, lower.get())).get()), text);
    for (const char* wrong : {"", "8B08C4BF-415B-11D8-B3F90-003936726FC", "8B08C4BF-415B-11D8-B3F9-0003936726FG"}) {
        EXPECT_EQ(CFUUIDCreateFromString(nullptr, Text(wrong).get()), nullptr) << wrong;
    }
}

TEST(CFURL, HoldsPathsAsBytes)
{
    EXPECT_EQ(Path(Url("/a/b/").get()), "/a/b");
    const std::string latin = "/tmp/Stra\xDF"
                              "e"; // no UTF-8
    EXPECT_EQ(Path(Url(latin).get()), latin);
    EXPECT_EQ(CFURLCopyLastPathComponent(Url(latin).get()), nullptr);
    EXPECT_EQ(Utf8(tOwned<CFStringRef>(CFURLCopyLastPathComponent(Url("/a/X.ext/").get())).get()), "X.ext");
    EXPECT_EQ(Path(tOwned<CFURLRef>(CFURLCreateCopyDeletingLastPathComponent(nullptr, Url("/a").get())).get()), "/");
    char folder[4096];
    ASSERT_NE(getcwd(folder, sizeof folder), nullptr);
    EXPECT_EQ(Path(Url("x").get()), std::string(folder) + "/x");
    EXPECT_EQ(Url(""), nullptr);
    UInt8 small[4];
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(Url("/abc").get(), true, small, sizeof small));
    EXPECT_TRUE(CFURLGetFileSystemRepresentation(Url("/ab").get(), true, small, sizeof small));
}
