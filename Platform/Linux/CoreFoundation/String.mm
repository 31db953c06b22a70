#import "Linux/CoreFoundation/Classes.h"
#import "Linux/CoreFoundation/Pool.h"
#include "Platform/Composition.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>

/// A string of any UTF-16 units. Foundation's own take a leading byte order mark away and refuse unpaired surrogates.
@interface PlatformString : NSString {
    std::u16string* mUnits; // a pointer, since constructors of C++ members are not run
}
- (id)initWithUnits:(std::u16string_view)units;
@end

@implementation PlatformString

- (id)initWithUnits:(std::u16string_view)units
{
    self = [super init];
    if (self != nil) {
        mUnits = new std::u16string(units);
    }
    return self;
}

- (void)dealloc
{
    delete mUnits;
    [super dealloc];
}

- (NSUInteger)length
{
    return mUnits->size();
}

- (unichar)characterAtIndex:(NSUInteger)index
{
    return mUnits->at(index);
}

- (id)copyWithZone:(NSZone*)zone
{
    (void)zone;
    return [self retain];
}

@end

static NSString* AsObject(CFStringRef string) { return reinterpret_cast<NSString*>(const_cast<__CFString*>(string)); }

static CFStringRef CreateFromUnits(std::u16string_view units)
{
    const bool marked = !units.empty() && (units[0] == 0xFEFF || units[0] == 0xFFFE);
    NSString* string = nil;
    if (!marked) {
        string = [[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(units.data())
                                               length:units.size()];
    }
    if (string == nil) {
        string = [[PlatformString alloc] initWithUnits:units];
    }
    return reinterpret_cast<CFStringRef>(string);
}

static std::u16string UnitsOf(CFStringRef string)
{
    std::u16string units([AsObject(string) length], u'\0');
    [AsObject(string) getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
    return units;
}

static CFStringRef CreateDecoded(std::string_view bytes, CFStringEncoding encoding)
{
    std::u16string units;
    return Platform::DecodeText(bytes, encoding, units) ? CreateFromUnits(units) : nullptr;
}

std::string Platform::Utf8(CFStringRef string)
{
    std::string result;
    if (string == nullptr || !EncodeText(UnitsOf(string), kCFStringEncodingUTF8, result)) {
        result.clear();
    }
    return result;
}

CFStringRef Platform::CreateString(std::string_view utf8) { return CreateDecoded(utf8, kCFStringEncodingUTF8); }

std::string Platform::ComposeUtf8(const std::string& text)
{
    const CPool pool;
    const CFStringRef string = CreateString(text);
    if (string == nullptr) {
        return text;
    }
    NSString* const composed = [AsObject(string) precomposedStringWithCanonicalMapping];
    const std::string result = Utf8(reinterpret_cast<CFStringRef>(composed));
    CFRelease(string);
    return result.empty() ? text : result;
}

CFStringRef __CFStringMakeConstantString(const char* ascii)
{
    static std::mutex& sLock = *new std::mutex;
    static auto& sStrings = *new std::unordered_map<std::string, CFStringRef>; // literals live as long as the process
    const std::lock_guard<std::mutex> lock(sLock);
    CFStringRef& string = sStrings[ascii];
    if (string == nullptr) {
        string = Platform::CreateString(ascii);
    }
    return string;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding)
{
    return text != nullptr ? CreateDecoded(text, encoding) : nullptr;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count, CFStringEncoding encoding,
                                    Boolean external)
{
    if (bytes == nullptr || count < 0) {
        return nullptr;
    }
    std::u16string units;
    if (!Platform::DecodeText({reinterpret_cast<const char*>(bytes), static_cast<size_t>(count)}, encoding, units)) {
        return nullptr;
    }
    if (external && encoding == kCFStringEncodingUnicode && !units.empty()) {
        if (units[0] == 0xFFFE) { // the mark in the other byte order
            std::transform(units.begin(), units.end(), units.begin(), &CFSwapInt16);
        }
        if (units[0] == 0xFEFF) {
            units.erase(0, 1);
        }
    }
    return CreateFromUnits(units);
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters, CFIndex count)
{
    if (count < 0 || (characters == nullptr && count > 0)) {
        return nullptr;
    }
    return CreateFromUnits({reinterpret_cast<const char16_t*>(characters), static_cast<size_t>(count)});
}

CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef string)
{
    return reinterpret_cast<CFStringRef>([AsObject(string) copy]);
}

CFIndex CFStringGetLength(CFStringRef string) { return static_cast<CFIndex>([AsObject(string) length]); }

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer)
{
    const CFIndex length = CFStringGetLength(string);
    if (range.location < 0 || range.location >= length || range.length <= 0) {
        return;
    }
    const CFIndex count = std::min(range.length, length - range.location);
    [AsObject(string)
        getCharacters:reinterpret_cast<unichar*>(buffer)
                range:NSMakeRange(static_cast<NSUInteger>(range.location), static_cast<NSUInteger>(count))];
}

UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index)
{
    UniChar unit = 0;
    CFStringGetCharacters(string, CFRangeMake(index, 1), &unit);
    return unit;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding)
{
    std::string bytes;
    if (string == nullptr || size <= 0 || !Platform::EncodeText(UnitsOf(string), encoding, bytes) ||
        bytes.size() >= static_cast<size_t>(size)) {
        return false;
    }
    memcpy(buffer, bytes.c_str(), bytes.size() + 1);
    return true;
}

const char* CFStringGetCStringPtr(CFStringRef, CFStringEncoding) { return nullptr; }

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
{
    switch (encoding) {
    case kCFStringEncodingMacRoman:
    case kCFStringEncodingASCII:
        return length;
    case kCFStringEncodingUnicode:
        return 2 * length;
    case kCFStringEncodingUTF8:
        return 3 * length;
    default:
        return kCFNotFound;
    }
}

CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFStringCompareFlags options)
{
    if (options & kCFCompareCaseInsensitive) {
        const Platform::CPool pool;
        return [AsObject(a) compare:AsObject(b) options:NSCaseInsensitiveSearch | NSLiteralSearch];
    }
    const int order = UnitsOf(a).compare(UnitsOf(b));
    return order < 0 ? kCFCompareLessThan : order > 0 ? kCFCompareGreaterThan : kCFCompareEqualTo;
}
