#include "KVUPrefsValue/KVUPrefsValue.h"

#include "KVUStr/KVUStr.h"

#include <algorithm>

namespace {
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
    if (!valid) {
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
    const CFTypeRef stored = CFPreferencesCopyAppValue(key, application);
    if (stored == nullptr) {
        return false;
    }
    const char* converted = nullptr;
    if (CFGetTypeID(stored) == CFStringGetTypeID()) {
        converted = KVUStr::GetCStrFromCFStr(static_cast<CFStringRef>(stored), kCFStringEncodingMacRoman);
    }
    if (converted != nullptr) {
        KVUStr::strncpy(text, converted, capacity);
    }
    CFRelease(stored);
    return converted != nullptr;
}

bool KVUPrefsValue::ReadValue(CFStringRef key, CFStringRef application, void* data, size_t capacity)
{
    const CFTypeRef stored = CFPreferencesCopyAppValue(key, application);
    if (stored == nullptr) {
        return false;
    }
    const bool isData = CFGetTypeID(stored) == CFDataGetTypeID();
    if (isData) {
        const CFDataRef bytes = static_cast<CFDataRef>(stored);
        const CFIndex count = std::min(CFDataGetLength(bytes), static_cast<CFIndex>(capacity));
        CFDataGetBytes(bytes, CFRangeMake(0, count), static_cast<UInt8*>(data));
    }
    CFRelease(stored);
    return isData;
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
