// References, booleans, data, collections, UUIDs, URLs.
#include "Reference.h"

#include <gtest/gtest.h>

TEST(CFType, CountsReferencesAndTellsKinds)
{
    const tOwned<CFUUIDRef> uuid(CFUUIDCreateFromString(nullptr, CFSTR("6EBC27C4-899C-11D8-84AE-0003936726FC")));
    const CFIndex before = CFGetRetainCount(uuid.get());
    const tOwned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(array.get(), uuid.get());
    EXPECT_EQ(CFGetRetainCount(uuid.get()), before + 1);
    const int one = 1;
    const tOwned<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberIntType, &one));
    EXPECT_EQ(CFGetTypeID(number.get()), CFNumberGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID()); // which is a number to Foundation
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, number.get()));          // although Foundation finds YES equal to 1
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, nullptr));
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
    EXPECT_EQ(Utf8(CFDictionaryGetValue(dictionary.get(), CFSTR("a"))), "1");
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
    const std::string latin = "/tmp/Stra\xDF"
                              "e"; // no UTF-8
    EXPECT_EQ(Path(Url(latin).get()), latin);
    EXPECT_EQ(CFURLCopyLastPathComponent(Url(latin).get()), nullptr);
    EXPECT_EQ(Utf8(tOwned<CFStringRef>(CFURLCopyLastPathComponent(Url("/a/X.ext/").get())).get()), "X.ext");
    EXPECT_EQ(Path(tOwned<CFURLRef>(CFURLCreateCopyDeletingLastPathComponent(nullptr, Url("/a").get())).get()), "/");
    EXPECT_EQ(Url(""), nullptr);
    UInt8 small[4];
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(Url("/abc").get(), true, small, sizeof small));
    EXPECT_TRUE(CFURLGetFileSystemRepresentation(Url("/ab").get(), true, small, sizeof small));
}
