// References of every kind, booleans and numbers.
#import "Linux/CoreFoundation/Classes.h"
#import "Linux/CoreFoundation/Pool.h"

#include <cmath>
#include <limits>

enum eTypeID : CFTypeID {
    kTypeString = 1,
    kTypeBoolean,
    kTypeNumber,
    kTypeData,
    kTypeArray,
    kTypeDictionary,
    kTypeUUID,
    kTypeURL,
    kTypeBundle
};

// The class is no help and YES equals 1: the two boolean objects of Foundation are told from numbers by identity.
static bool IsBoolean(CFTypeRef object) { return object == kCFBooleanTrue || object == kCFBooleanFalse; }

CFTypeRef CFRetain(CFTypeRef object) { return [(id)object retain]; }

void CFRelease(CFTypeRef object) { [(id)object release]; }

CFIndex CFGetRetainCount(CFTypeRef object) { return static_cast<CFIndex>([(id)object retainCount]); }

Boolean CFEqual(CFTypeRef a, CFTypeRef b)
{
    if (a == b) {
        return true;
    }
    const Platform::CPool pool; // comparing collections enumerates them
    return a != nullptr && b != nullptr && !IsBoolean(a) && !IsBoolean(b) && [(id)a isEqual:(id)b];
}

CFHashCode CFHash(CFTypeRef object) { return [(id)object hash]; }

CFTypeID CFGetTypeID(CFTypeRef object)
{
    if (IsBoolean(object)) {
        return kTypeBoolean;
    }
    const struct {
        Class kind;
        eTypeID type;
    } kinds[] = {
        {[NSString class], kTypeString}, {[NSNumber class], kTypeNumber},         {[NSData class], kTypeData},
        {[NSArray class], kTypeArray},   {[NSDictionary class], kTypeDictionary}, {[PlatformUUID class], kTypeUUID},
        {[PlatformURL class], kTypeURL}, {[PlatformBundle class], kTypeBundle},
    };
    for (const auto& entry : kinds) {
        if ([(id)object isKindOfClass:entry.kind]) {
            return entry.type;
        }
    }
    return 0;
}

CFTypeID CFStringGetTypeID() { return kTypeString; }

CFTypeID CFBooleanGetTypeID() { return kTypeBoolean; }

CFTypeID CFNumberGetTypeID() { return kTypeNumber; }

CFTypeID CFDataGetTypeID() { return kTypeData; }

CFTypeID CFArrayGetTypeID() { return kTypeArray; }

CFTypeID CFDictionaryGetTypeID() { return kTypeDictionary; }

CFTypeID CFUUIDGetTypeID() { return kTypeUUID; }

CFTypeID CFURLGetTypeID() { return kTypeURL; }

CFTypeID CFBundleGetTypeID() { return kTypeBundle; }

CFBooleanRef PlatformBoolean(Boolean value)
{
    static const CFBooleanRef sYes = reinterpret_cast<CFBooleanRef>([[NSNumber alloc] initWithBool:YES]);
    static const CFBooleanRef sNo = reinterpret_cast<CFBooleanRef>([[NSNumber alloc] initWithBool:NO]);
    return value ? sYes : sNo;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) { return boolean == kCFBooleanTrue; }

template <typename T> static T Load(const void* value)
{
    T result;
    memcpy(&result, value, sizeof result);
    return result;
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value)
{
    const Platform::CPool pool; // even init autoreleases here
    NSNumber* number = [NSNumber alloc];
    switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
        number = [number initWithInt:Load<int8_t>(value)]; // a char number would print as a letter
        break;
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
        number = [number initWithShort:Load<int16_t>(value)];
        break;
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
        number = [number initWithInt:Load<int32_t>(value)];
        break;
    case kCFNumberSInt64Type:
    case kCFNumberLongType:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
        number = [number initWithLongLong:Load<int64_t>(value)];
        break;
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
        number = [number initWithFloat:Load<float>(value)];
        break;
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
        number = [number initWithDouble:Load<double>(value)];
        break;
    default:
        [number release];
        return nullptr;
    }
    return reinterpret_cast<CFNumberRef>(number);
}

Boolean CFNumberIsFloatType(CFNumberRef number)
{
    const char kind = *[reinterpret_cast<NSNumber*>(const_cast<__CFNumber*>(number)) objCType];
    return kind == 'f' || kind == 'd';
}

// Stores the nearest value of T. @return whether it is the number itself
template <typename T> static bool StoreWhole(NSNumber* number, bool isFloat, void* value)
{
    constexpr T kSmallest = std::numeric_limits<T>::min();
    constexpr T kLargest = std::numeric_limits<T>::max();
    T result = 0;
    bool exact = false;
    if (isFloat) {
        const double source = [number doubleValue];
        // Compared as doubles: the largest 64-bit integer rounds up to 2^63, which no longer fits.
        if (source >= static_cast<double>(kLargest)) {
            result = kLargest;
            exact = sizeof(T) < sizeof(double) && source == static_cast<double>(kLargest);
        } else if (source <= static_cast<double>(kSmallest)) {
            result = kSmallest;
            exact = source == static_cast<double>(kSmallest);
        } else if (!std::isnan(source)) {
            result = static_cast<T>(source);
            exact = static_cast<double>(result) == source;
        }
    } else if (*[number objCType] == 'Q' &&
               [number unsignedLongLongValue] > static_cast<unsigned long long>(kLargest)) {
        result = kLargest;
    } else {
        const long long source = [number longLongValue];
        exact = source >= kSmallest && source <= kLargest;
        result = exact ? static_cast<T>(source) : source < 0 ? kSmallest : kLargest;
    }
    memcpy(value, &result, sizeof result);
    return exact;
}

Boolean CFNumberGetValue(CFNumberRef reference, CFNumberType type, void* value)
{
    NSNumber* number = reinterpret_cast<NSNumber*>(const_cast<__CFNumber*>(reference));
    const bool isFloat = CFNumberIsFloatType(reference);
    switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
        return StoreWhole<int8_t>(number, isFloat, value);
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
        return StoreWhole<int16_t>(number, isFloat, value);
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
        return StoreWhole<int32_t>(number, isFloat, value);
    case kCFNumberSInt64Type:
    case kCFNumberLongType:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
        return StoreWhole<int64_t>(number, isFloat, value);
    case kCFNumberFloat32Type:
    case kCFNumberFloatType: {
        const float result = [number floatValue];
        memcpy(value, &result, sizeof result);
        return static_cast<double>(result) == [number doubleValue];
    }
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType: {
        const double result = [number doubleValue];
        memcpy(value, &result, sizeof result);
        return isFloat || std::abs(result) <= 0x1p53;
    }
    default:
        return false;
    }
}
