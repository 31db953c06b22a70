// Data, arrays and dictionaries. What Foundation would raise for (null entries, indices outside) is sorted out before.
#import "Linux/CoreFoundation/Classes.h"
#import "Linux/CoreFoundation/Pool.h"

#include <algorithm>

const CFArrayCallBacks kCFTypeArrayCallBacks = {0};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {0};
const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks = {0};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0};

static NSData* AsObject(CFDataRef data) { return reinterpret_cast<NSData*>(const_cast<__CFData*>(data)); }

static NSArray* AsObject(CFArrayRef array) { return reinterpret_cast<NSArray*>(const_cast<__CFArray*>(array)); }

static NSMutableArray* AsObject(CFMutableArrayRef array) { return reinterpret_cast<NSMutableArray*>(array); }

static NSDictionary* AsObject(CFDictionaryRef dictionary)
{
    return reinterpret_cast<NSDictionary*>(const_cast<__CFDictionary*>(dictionary));
}

static NSMutableDictionary* AsObject(CFMutableDictionaryRef dictionary)
{
    return reinterpret_cast<NSMutableDictionary*>(dictionary);
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length)
{
    if (length < 0 || (bytes == nullptr && length > 0)) {
        return nullptr;
    }
    return reinterpret_cast<CFDataRef>([[NSData alloc] initWithBytes:bytes length:static_cast<NSUInteger>(length)]);
}

CFIndex CFDataGetLength(CFDataRef data) { return static_cast<CFIndex>([AsObject(data) length]); }

const UInt8* CFDataGetBytePtr(CFDataRef data) { return static_cast<const UInt8*>([AsObject(data) bytes]); }

void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer)
{
    const CFIndex length = CFDataGetLength(data);
    if (range.location < 0 || range.location >= length || range.length <= 0) {
        return;
    }
    memcpy(buffer, CFDataGetBytePtr(data) + range.location,
           static_cast<size_t>(std::min(range.length, length - range.location)));
}

static bool HasNull(const void** values, CFIndex count)
{
    return std::find(values, values + count, nullptr) != values + count;
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count, const CFArrayCallBacks*)
{
    if (count < 0 || HasNull(values, count)) {
        return nullptr;
    }
    return reinterpret_cast<CFArrayRef>([[NSArray alloc] initWithObjects:(const id*)values
                                                                   count:static_cast<NSUInteger>(count)]);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks*)
{
    return reinterpret_cast<CFMutableArrayRef>([[NSMutableArray alloc] init]);
}

CFIndex CFArrayGetCount(CFArrayRef array) { return static_cast<CFIndex>([AsObject(array) count]); }

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index)
{
    if (index < 0 || index >= CFArrayGetCount(array)) {
        return nullptr;
    }
    return [AsObject(array) objectAtIndex:static_cast<NSUInteger>(index)];
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value)
{
    if (value != nullptr) {
        [AsObject(array) addObject:(id)value];
    }
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks*, const CFDictionaryValueCallBacks*)
{
    if (count < 0 || HasNull(keys, count) || HasNull(values, count)) {
        return nullptr;
    }
    return reinterpret_cast<CFDictionaryRef>([[NSDictionary alloc] initWithObjects:(const id*)values
                                                                           forKeys:(const id*)keys
                                                                             count:static_cast<NSUInteger>(count)]);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex, const CFDictionaryKeyCallBacks*,
                                                 const CFDictionaryValueCallBacks*)
{
    return reinterpret_cast<CFMutableDictionaryRef>([[NSMutableDictionary alloc] init]);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) { return static_cast<CFIndex>([AsObject(dictionary) count]); }

Boolean CFDictionaryContainsKey(CFDictionaryRef dictionary, const void* key)
{
    return CFDictionaryGetValue(dictionary, key) != nullptr;
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key)
{
    return key != nullptr ? [AsObject(dictionary) objectForKey:(id)key] : nullptr;
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void* key, const void** value)
{
    const void* const found = CFDictionaryGetValue(dictionary, key);
    if (found != nullptr && value != nullptr) {
        *value = found;
    }
    return found != nullptr;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys, const void** values)
{
    const Platform::CPool pool;
    NSEnumerator* enumerator = [AsObject(dictionary) keyEnumerator];
    while (id key = [enumerator nextObject]) {
        if (keys != nullptr) {
            *keys++ = key;
        }
        if (values != nullptr) {
            *values++ = [AsObject(dictionary) objectForKey:key];
        }
    }
}

void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void* key, const void* value)
{
    if (!CFDictionaryContainsKey(dictionary, key)) {
        CFDictionarySetValue(dictionary, key, value);
    }
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value)
{
    if (key != nullptr && value != nullptr) {
        [AsObject(dictionary) setObject:(id)value forKey:(id)key];
    }
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key)
{
    if (key != nullptr) {
        [AsObject(dictionary) removeObjectForKey:(id)key];
    }
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary) { [AsObject(dictionary) removeAllObjects]; }
