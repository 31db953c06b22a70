#include "KVUPrefsValue/KVUPrefsValue.h"

#include "KVUStr/KVUStr.h"
#include "Platform/Released.h"

#include <algorithm>
#include <limits>
#include <string>

namespace {
/// A stored value; null for a key that is missing.
Platform::tReleased<CFTypeRef> Stored(CFStringRef key, CFStringRef application)
{
    return Platform::tReleased<CFTypeRef>(CFPreferencesCopyAppValue(key, application));
}

/// Copies as many bytes as fit of a value. @return false when it is no data
bool CopyData(CFTypeRef value, void* data, CFIndex capacity)
{
    if (value == nullptr || CFGetTypeID(value) != CFDataGetTypeID()) {
        return false;
    }
    const CFDataRef bytes = static_cast<CFDataRef>(value);
    CFDataGetBytes(bytes, CFRangeMake(0, std::min(CFDataGetLength(bytes), capacity)), static_cast<UInt8*>(data));
    return true;
}

/// Stores a value that was created for it.
void StoreAndRelease(CFStringRef key, CFStringRef application, CFTypeRef value)
{
    if (value == nullptr) {
        return;
    }
    CFPreferencesSetAppValue(key, value, application);
    CFRelease(value);
}
} // namespace

bool KVUPrefsValue::ReadValue(CFStringRef key, CFStringRef application, bool& value)
{
    Boolean valid = 0;
    const Boolean stored = CFPreferencesGetAppBooleanValue(key, application, &valid);
    if (!valid) {
        return false;
    }
    value = stored != 0;
    return true;
}

bool KVUPrefsValue::ReadValue(CFStringRef key, CFStringRef application, int& value)
{
    Boolean valid = 0;
    const CFIndex stored = CFPreferencesGetAppIntegerValue(key, application, &valid);
    using tLimits = std::numeric_limits<int>;
    if (!valid || stored < tLimits::min() || stored > tLimits::max()) {
        return false;
    }
    value = static_cast<int>(stored);
    return true;
}

bool KVUPrefsValue::ReadValue(CFStringRef key, CFStringRef application, char& value)
{
    int stored = 0;
    if (!ReadValue(key, application, stored)) {
        return false;
    }
    value = static_cast<char>(stored);
    return true;
}

bool KVUPrefsValue::ReadValue(CFStringRef key, CFStringRef application, char* text, size_t capacity)
{
    const auto stored = Stored(key, application);
    std::string converted; // not through the buffer of GetCStrFromCFStr: a text longer than that is cut like any other
    if (!stored || CFGetTypeID(stored.get()) != CFStringGetTypeID() ||
        !KVUStr::GetText(static_cast<CFStringRef>(stored.get()), kCFStringEncodingMacRoman, converted)) {
        return false;
    }
    KVUStr::strncpy(text, converted.c_str(), capacity);
    return true;
}

bool KVUPrefsValue::ReadValue(CFStringRef key, CFStringRef application, void* data, size_t capacity)
{
    constexpr size_t kMost = std::numeric_limits<CFIndex>::max();
    return CopyData(Stored(key, application).get(), data, static_cast<CFIndex>(std::min(capacity, kMost)));
}

bool KVUPrefsValue::ReadValue(CFStringRef key, CFStringRef application, void* data)
{
    return ReadValue(key, application, data, std::numeric_limits<size_t>::max());
}

void KVUPrefsValue::WriteValue(CFStringRef key, CFStringRef application, bool value)
{
    CFPreferencesSetAppValue(key, value ? kCFBooleanTrue : kCFBooleanFalse, application);
}

void KVUPrefsValue::WriteValue(CFStringRef key, CFStringRef application, int value)
{
    StoreAndRelease(key, application, CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &value));
}

void KVUPrefsValue::WriteValue(CFStringRef key, CFStringRef application, char value)
{
    StoreAndRelease(key, application, CFNumberCreate(kCFAllocatorDefault, kCFNumberCharType, &value));
}

void KVUPrefsValue::WriteValue(CFStringRef key, CFStringRef application, const char* text)
{
    if (text != nullptr) {
        StoreAndRelease(key, application,
                        CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman));
    }
}

void KVUPrefsValue::WriteValue(CFStringRef key, CFStringRef application, const void* data, size_t length)
{
    StoreAndRelease(key, application,
                    CFDataCreate(kCFAllocatorDefault, static_cast<const UInt8*>(data), static_cast<CFIndex>(length)));
}

bool KVUPrefsValue::SyncPrefs(CFStringRef application)
{
    return CFPreferencesAppSynchronize(application) != 0;
}
