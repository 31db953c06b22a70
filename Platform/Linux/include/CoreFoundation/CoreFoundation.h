// The part of Core Foundation that the core, the importer and its hosts use, on top of GNUstep's Foundation.
//
// Names, values and ownership are those of the macOS framework ("Create" and "Copy" hand over a reference, "Get" does
// not), so that the same source line serves both systems. Every reference is an Objective-C object: strings, numbers,
// data, arrays and dictionaries are the NS classes and may be cast. Foundation.h includes this file by itself where it
// finds it, also from plain Objective-C; it therefore stays valid C and includes nothing of Foundation.
#ifndef VELMORA_COREFOUNDATION_H
#define VELMORA_COREFOUNDATION_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#define CF_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

// ---- Base types

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef int8_t SInt8;
typedef uint16_t UInt16;
typedef int16_t SInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef uint64_t UInt64;
typedef int64_t SInt64;
typedef UInt8 Byte;
typedef UInt16 UniChar; ///< one UTF-16 unit

typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef double CFTimeInterval;

typedef const void* CFTypeRef;
typedef const void* CFPropertyListRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFData* CFDataRef;
typedef const struct __CFArray* CFArrayRef;
typedef struct __CFArray* CFMutableArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;
typedef const struct __CFUUID* CFUUIDRef;
typedef const struct __CFURL* CFURLRef;
typedef struct __CFBundle* CFBundleRef;
typedef struct __CFBundle* CFPlugInRef;

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length)
{
    CFRange range;
    range.location = location;
    range.length = length;
    return range;
}

typedef CFIndex CFComparisonResult;
enum { kCFCompareLessThan = -1, kCFCompareEqualTo = 0, kCFCompareGreaterThan = 1 };
enum { kCFNotFound = -1 };

/// There is one allocator; the argument is taken and ignored everywhere.
#define kCFAllocatorDefault ((CFAllocatorRef)0)
#define kCFAllocatorSystemDefault ((CFAllocatorRef)0)

CF_EXPORT CFTypeRef CFRetain(CFTypeRef object);
CF_EXPORT void CFRelease(CFTypeRef object);
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef object);
CF_EXPORT Boolean CFEqual(CFTypeRef a, CFTypeRef b);
CF_EXPORT CFHashCode CFHash(CFTypeRef object);
/// One of the ...GetTypeID() values below; 0 for an object of any other kind.
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef object);

CF_EXPORT CFTypeID CFStringGetTypeID(void);
CF_EXPORT CFTypeID CFBooleanGetTypeID(void);
CF_EXPORT CFTypeID CFNumberGetTypeID(void);
CF_EXPORT CFTypeID CFDataGetTypeID(void);
CF_EXPORT CFTypeID CFArrayGetTypeID(void);
CF_EXPORT CFTypeID CFDictionaryGetTypeID(void);
CF_EXPORT CFTypeID CFUUIDGetTypeID(void);
CF_EXPORT CFTypeID CFURLGetTypeID(void);
CF_EXPORT CFTypeID CFBundleGetTypeID(void);

// ---- Strings

typedef UInt32 CFStringEncoding;
enum {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingUnicode = 0x0100 ///< UTF-16 in host order without byte order mark
};

typedef CFOptionFlags CFStringCompareFlags;
enum { kCFCompareCaseInsensitive = 1 };

CF_EXPORT CFStringRef __CFStringMakeConstantString(const char* ascii);

/// A constant string of an ASCII literal; never released, the same object for the same text everywhere.
#ifdef __cplusplus
#define CFSTR(literal)                                                                                                 \
    ([]() noexcept -> CFStringRef {                                                                                    \
        static const CFStringRef cached = __CFStringMakeConstantString("" literal "");                                 \
        return cached;                                                                                                 \
    }())
#else
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")
#endif

/// Null for text that is malformed in its encoding (bytes above 127 as ASCII, UTF-8 that is not shortest form or holds
/// surrogates), for a null pointer and for an unknown encoding.
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text, CFStringEncoding encoding);
/// As above for `count` bytes, zero bytes included. `external` lets Unicode begin with a byte order mark.
CF_EXPORT CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                              CFStringEncoding encoding, Boolean external);
CF_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters, CFIndex count);
CF_EXPORT CFStringRef CFStringCreateCopy(CFAllocatorRef allocator, CFStringRef string);
/// Length in UTF-16 units.
CF_EXPORT CFIndex CFStringGetLength(CFStringRef string);
/// The part of the range that lies inside the string is copied.
CF_EXPORT void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer);
CF_EXPORT UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index);
/// Converts into `buffer` and adds one zero byte, in every encoding. False, with the buffer as it was, when text and
/// zero do not fit into `size` bytes or a character has no form in the encoding
/// (an unpaired surrogate has none in UTF-8).
CF_EXPORT Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding);
/// Always null: no string lends its storage here, so callers always take their way through a buffer.
CF_EXPORT const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding);
/// Most bytes that `length` UTF-16 units can need, without the zero; kCFNotFound for an unknown encoding.
CF_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
/// Without options by UTF-16 units ("B" before "a").
CF_EXPORT CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFStringCompareFlags options);

// ---- Booleans, numbers, data

/// The two boolean objects; a function, so that no static initialiser has to send a message.
CF_EXPORT CFBooleanRef PlatformBoolean(Boolean value);
#define kCFBooleanTrue PlatformBoolean(1)
#define kCFBooleanFalse PlatformBoolean(0)
CF_EXPORT Boolean CFBooleanGetValue(CFBooleanRef boolean);

typedef CFIndex CFNumberType;
enum {
    kCFNumberSInt8Type = 1,
    kCFNumberSInt16Type = 2,
    kCFNumberSInt32Type = 3,
    kCFNumberSInt64Type = 4,
    kCFNumberFloat32Type = 5,
    kCFNumberFloat64Type = 6,
    kCFNumberCharType = 7,
    kCFNumberShortType = 8,
    kCFNumberIntType = 9,
    kCFNumberLongType = 10,
    kCFNumberLongLongType = 11,
    kCFNumberFloatType = 12,
    kCFNumberDoubleType = 13,
    kCFNumberCFIndexType = 14
};

CF_EXPORT CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
/// Converts into `value`; false when something was lost (fraction, range), the nearest value is stored even then.
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
CF_EXPORT Boolean CFNumberIsFloatType(CFNumberRef number);

CF_EXPORT CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CF_EXPORT CFIndex CFDataGetLength(CFDataRef data);
CF_EXPORT const UInt8* CFDataGetBytePtr(CFDataRef data);
/// The part of the range that lies inside the data is copied.
CF_EXPORT void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer);

// ---- Collections. Values are retained, dictionary keys are copied;
// other callbacks than the standard ones are not served.

typedef struct {
    CFIndex version;
} CFArrayCallBacks;
typedef struct {
    CFIndex version;
} CFDictionaryKeyCallBacks;
typedef struct {
    CFIndex version;
} CFDictionaryValueCallBacks;
CF_EXPORT extern const CFArrayCallBacks kCFTypeArrayCallBacks;
CF_EXPORT extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
CF_EXPORT extern const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks;
CF_EXPORT extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CF_EXPORT CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                                   const CFArrayCallBacks* callbacks);
CF_EXPORT CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFArrayCallBacks* callbacks);
CF_EXPORT CFIndex CFArrayGetCount(CFArrayRef array);
/// Null for an index outside the array.
CF_EXPORT const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
CF_EXPORT void CFArrayAppendValue(CFMutableArrayRef array, const void* value);

CF_EXPORT CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                             CFIndex count, const CFDictionaryKeyCallBacks* keyCallbacks,
                                             const CFDictionaryValueCallBacks* valueCallbacks);
CF_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                           const CFDictionaryKeyCallBacks* keyCallbacks,
                                                           const CFDictionaryValueCallBacks* valueCallbacks);
CF_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);
CF_EXPORT Boolean CFDictionaryContainsKey(CFDictionaryRef dictionary, const void* key);
CF_EXPORT const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
/// `value` is only set when the key is there; it may be null.
CF_EXPORT Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void* key, const void** value);
/// Fills CFDictionaryGetCount() entries of each array that is not null, in one and the same order.
CF_EXPORT void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys, const void** values);
/// Does nothing for a key that is there already.
CF_EXPORT void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);
CF_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);
CF_EXPORT void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key);
CF_EXPORT void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary);

// ---- UUIDs

typedef struct {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
} CFUUIDBytes;

/// "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" in either case; null for anything else.
CF_EXPORT CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef allocator, CFStringRef text);
CF_EXPORT CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef allocator, CFUUIDBytes bytes);
/// Never released; the same object for the same bytes.
CF_EXPORT CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                                   UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7,
                                                   UInt8 byte8, UInt8 byte9, UInt8 byte10, UInt8 byte11, UInt8 byte12,
                                                   UInt8 byte13, UInt8 byte14, UInt8 byte15);
CF_EXPORT CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);
/// In capital letters.
CF_EXPORT CFStringRef CFUUIDCreateString(CFAllocatorRef allocator, CFUUIDRef uuid);

// ---- URLs: always of a file or folder, held as the bytes of its path, whatever their encoding

/// A path that is not absolute is taken from the current folder. Null for an empty path.
CF_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path, CFIndex length,
                                                           Boolean isDirectory);
/// The path and a zero byte; without a separator at the end. False when `size` is too small.
CF_EXPORT Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolve, UInt8* buffer, CFIndex size);
/// Null where the name is not UTF-8.
CF_EXPORT CFStringRef CFURLCopyLastPathComponent(CFURLRef url);
CF_EXPORT CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url);

// ---- Bundles

CF_EXPORT extern const CFStringRef kCFBundleExecutableKey;
CF_EXPORT extern const CFStringRef kCFBundleIdentifierKey;
CF_EXPORT extern const CFStringRef kCFBundleNameKey;
CF_EXPORT extern const CFStringRef kCFBundleVersionKey;

/// The bundle of the running program: X.ext for X.ext/Contents/Linux/program; every other program is the bundle
/// "Velmora" (com.velmora.Velmora) beside itself, so that host, worker and tests share logs, data and preferences.
/// Not released.
CF_EXPORT CFBundleRef CFBundleGetMainBundle(void);
/// The bundle of a folder that holds a readable Contents/Info.plist, else null. Every call makes a new object;
/// those of one folder are equal.
CF_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url);
CF_EXPORT CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
CF_EXPORT CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
CF_EXPORT CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle);
CF_EXPORT CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key);
/// Contents/Resources/[subfolder/]name[.type]; null where there is no such file. Type and subfolder may be null.
CF_EXPORT CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                           CFStringRef subfolder);
/// Bundles carry no string tables here: the value, or the key where that is null or empty.
CF_EXPORT CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                                  CFStringRef table);
#define CFCopyLocalizedString(key, comment)                                                                            \
    CFBundleCopyLocalizedString(CFBundleGetMainBundle(), (key), (key), (CFStringRef)0)
/// Loads Contents/Linux/<CFBundleExecutable>, once; it stays loaded until the process ends.
CF_EXPORT Boolean CFBundleLoadExecutable(CFBundleRef bundle);
/// Address of an exported function, loading the executable first; null when either fails.
CF_EXPORT void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name);

// ---- Plug-ins

/// The bundle as CFBundleCreate makes it, its factories (CFPlugInFactories, CFPlugInTypes) made known.
/// No code is loaded.
CF_EXPORT CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url);
CF_EXPORT CFBundleRef CFPlugInGetBundle(CFPlugInRef plugIn);
/// UUIDs of a plug-in's factories for a type, in the order of its property list; empty when there are none. The caller
/// releases the array.
CF_EXPORT CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef type, CFPlugInRef plugIn);
/// Loads the factory's bundle and calls its function. Null for an unknown factory, for a type that its property list
/// does not name, for code that cannot be loaded, and where the function itself refuses.
CF_EXPORT void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factory, CFUUIDRef type);
CF_EXPORT void CFPlugInAddInstanceForFactory(CFUUIDRef factory);
CF_EXPORT void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory);
/// Living instances of a factory; not part of Core Foundation on macOS.
CF_EXPORT CFIndex PlatformPlugInInstanceCount(CFUUIDRef factory);

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void* LPVOID;
typedef CFUUIDBytes REFIID;
#define STDMETHODCALLTYPE
#define S_OK ((HRESULT)0)
#define E_NOINTERFACE ((HRESULT)0x80000004)

/// First entries of every interface table.
#define IUNKNOWN_C_GUTS                                                                                                \
    void* _reserved;                                                                                                   \
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(void* instance, REFIID interfaceID, LPVOID* result);                    \
    ULONG(STDMETHODCALLTYPE* AddRef)(void* instance);                                                                  \
    ULONG(STDMETHODCALLTYPE* Release)(void* instance)

#define IUnknownUUID                                                                                                   \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorSystemDefault, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0,    \
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

// ---- Preferences: one XML property list per application,
// ${XDG_CONFIG_HOME:-$HOME/.config}/velmora/<application>.plist, read once. Where neither variable is an absolute path
// values live in memory only. A file that cannot be understood counts as empty and is kept: the next synchronisation
// that has something to write renames it first.

CF_EXPORT extern const CFStringRef kCFPreferencesCurrentApplication;

/// `valid` (may be null) tells whether the key is there and holds a boolean or a whole number. A text never counts.
CF_EXPORT Boolean CFPreferencesGetAppBooleanValue(CFStringRef key, CFStringRef application, Boolean* valid);
/// `valid` (may be null) tells whether the key is there and holds a whole number. A text or a boolean never counts.
CF_EXPORT CFIndex CFPreferencesGetAppIntegerValue(CFStringRef key, CFStringRef application, Boolean* valid);
CF_EXPORT CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application);
/// A null value removes the key.
CF_EXPORT void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application);
/// Writes what was set since the last time, whole or not at all. False when it could not be stored.
CF_EXPORT Boolean CFPreferencesAppSynchronize(CFStringRef application);

// ---- Alerts

enum {
    kCFUserNotificationStopAlertLevel = 0,
    kCFUserNotificationNoteAlertLevel = 1,
    kCFUserNotificationCautionAlertLevel = 2,
    kCFUserNotificationPlainAlertLevel = 3
};
enum { kCFUserNotificationDefaultResponse = 0 };

/// Nobody can answer here: writes title and text as one line to standard error, or hands them to the handler of
/// Platform/Alert.h, and answers at once with the default response. Always 0.
CF_EXPORT SInt32 CFUserNotificationDisplayAlert(CFTimeInterval timeout, CFOptionFlags flags, CFURLRef icon,
                                                CFURLRef sound, CFURLRef localization, CFStringRef title,
                                                CFStringRef text, CFStringRef defaultButton,
                                                CFStringRef alternateButton, CFStringRef otherButton,
                                                CFOptionFlags* response);

// ---- Byte order: "swapped" is big-endian, the order of files

static inline uint16_t CFSwapInt16(uint16_t value)
{
    return __builtin_bswap16(value);
}
static inline uint32_t CFSwapInt32(uint32_t value)
{
    return __builtin_bswap32(value);
}
static inline uint64_t CFSwapInt64(uint64_t value)
{
    return __builtin_bswap64(value);
}
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
static inline uint16_t CFSwapInt16BigToHost(uint16_t value)
{
    return value;
}
static inline uint32_t CFSwapInt32BigToHost(uint32_t value)
{
    return value;
}
static inline uint64_t CFSwapInt64BigToHost(uint64_t value)
{
    return value;
}
#else
static inline uint16_t CFSwapInt16BigToHost(uint16_t value)
{
    return CFSwapInt16(value);
}
static inline uint32_t CFSwapInt32BigToHost(uint32_t value)
{
    return CFSwapInt32(value);
}
static inline uint64_t CFSwapInt64BigToHost(uint64_t value)
{
    return CFSwapInt64(value);
}
#endif
static inline uint16_t CFSwapInt16HostToBig(uint16_t value)
{
    return CFSwapInt16BigToHost(value);
}
static inline uint32_t CFSwapInt32HostToBig(uint32_t value)
{
    return CFSwapInt32BigToHost(value);
}
static inline uint64_t CFSwapInt64HostToBig(uint64_t value)
{
    return CFSwapInt64BigToHost(value);
}

typedef struct {
    uint32_t v;
} CFSwappedFloat32;
typedef struct {
    uint64_t v;
} CFSwappedFloat64;

static inline CFSwappedFloat32 CFConvertFloat32HostToSwapped(float value)
{
    CFSwappedFloat32 result;
    memcpy(&result.v, &value, sizeof result.v);
    result.v = CFSwapInt32HostToBig(result.v);
    return result;
}
static inline float CFConvertFloat32SwappedToHost(CFSwappedFloat32 value)
{
    const uint32_t bits = CFSwapInt32BigToHost(value.v);
    float result;
    memcpy(&result, &bits, sizeof result);
    return result;
}
static inline CFSwappedFloat64 CFConvertFloat64HostToSwapped(double value)
{
    CFSwappedFloat64 result;
    memcpy(&result.v, &value, sizeof result.v);
    result.v = CFSwapInt64HostToBig(result.v);
    return result;
}
static inline double CFConvertFloat64SwappedToHost(CFSwappedFloat64 value)
{
    const uint64_t bits = CFSwapInt64BigToHost(value.v);
    double result;
    memcpy(&result, &bits, sizeof result);
    return result;
}
static inline CFSwappedFloat32 CFConvertFloatHostToSwapped(float value)
{
    return CFConvertFloat32HostToSwapped(value);
}
static inline float CFConvertFloatSwappedToHost(CFSwappedFloat32 value)
{
    return CFConvertFloat32SwappedToHost(value);
}
static inline CFSwappedFloat64 CFConvertDoubleHostToSwapped(double value)
{
    return CFConvertFloat64HostToSwapped(value);
}
static inline double CFConvertDoubleSwappedToHost(CFSwappedFloat64 value)
{
    return CFConvertFloat64SwappedToHost(value);
}

#ifdef __cplusplus
}
#endif

#endif
