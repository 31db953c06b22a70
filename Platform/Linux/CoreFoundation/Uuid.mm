#import "Linux/CoreFoundation/Classes.h"

#include <array>
#include <map>
#include <mutex>

@implementation PlatformUUID

- (id)initWithBytes:(const CFUUIDBytes&)bytes
{
    self = [super init];
    if (self != nil) {
        mBytes = bytes;
    }
    return self;
}

- (const CFUUIDBytes&)bytes
{
    return mBytes;
}

- (BOOL)isEqual:(id)other
{
    return [other isKindOfClass:[PlatformUUID class]] &&
           memcmp(&mBytes, &[(PlatformUUID*)other bytes], sizeof mBytes) == 0;
}

- (NSUInteger)hash
{
    NSUInteger halves[2];
    memcpy(halves, &mBytes, sizeof halves);
    return halves[0] ^ halves[1];
}

- (id)copyWithZone:(NSZone*)zone
{
    (void)zone;
    return [self retain];
}

@end

static CFUUIDRef Create(const CFUUIDBytes& bytes)
{
    return reinterpret_cast<CFUUIDRef>([[PlatformUUID alloc] initWithBytes:bytes]);
}

static int DigitValue(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

static const char kPattern[] = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef, CFStringRef text)
{
    const std::string digits = Platform::Utf8(text);
    if (digits.size() != sizeof kPattern - 1) {
        return nullptr;
    }
    UInt8 bytes[sizeof(CFUUIDBytes)] = {};
    size_t count = 0; // of digits read
    for (size_t i = 0; i < digits.size(); ++i) {
        if (kPattern[i] == '-') {
            if (digits[i] != '-') {
                return nullptr;
            }
            continue;
        }
        const int value = DigitValue(digits[i]);
        if (value < 0) {
            return nullptr;
        }
        bytes[count / 2] = static_cast<UInt8>(bytes[count / 2] << 4 | value);
        ++count;
    }
    CFUUIDBytes result;
    memcpy(&result, bytes, sizeof result);
    return Create(result);
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes) { return Create(bytes); }

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15)
{
    using tKey = std::array<UInt8, sizeof(CFUUIDBytes)>;
    static std::mutex& sLock = *new std::mutex;
    static auto& sConstants = *new std::map<tKey, CFUUIDRef>;
    const tKey key = {byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                      byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
    const std::lock_guard<std::mutex> lock(sLock);
    CFUUIDRef& uuid = sConstants[key];
    if (uuid == nullptr) {
        CFUUIDBytes bytes;
        memcpy(&bytes, key.data(), sizeof bytes);
        uuid = Create(bytes);
    }
    return uuid;
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid)
{
    return [reinterpret_cast<PlatformUUID*>(const_cast<__CFUUID*>(uuid)) bytes];
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid)
{
    const CFUUIDBytes source = CFUUIDGetUUIDBytes(uuid);
    UInt8 bytes[sizeof source];
    memcpy(bytes, &source, sizeof bytes);
    std::string text = kPattern;
    size_t count = 0; // of digits written
    for (char& place : text) {
        if (place == 'X') {
            place = "0123456789ABCDEF"[count % 2 == 0 ? bytes[count / 2] >> 4 : bytes[count / 2] & 0xF];
            ++count;
        }
    }
    return Platform::CreateString(text);
}
