// Single values of the preference store.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>

/// Reads and writes one preference. A read leaves its target as it was and answers false when the key is missing or its
/// value has another type. Writes reach the disk with SyncPrefs.
class KVUPrefsValue {
public:
    static bool ReadValue(CFStringRef key, CFStringRef application, bool& value);
    /// A number beyond 32 bits is of another type.
    static bool ReadValue(CFStringRef key, CFStringRef application, int& value);

    /// The low byte of an integer.
    static bool ReadValue(CFStringRef key, CFStringRef application, char& value);

    /// A text in Mac OS Roman, cut to `capacity` bytes with its zero. Fails where it has no such form, too.
    static bool ReadValue(CFStringRef key, CFStringRef application, char* text, size_t capacity);

    /// Data, cut to `capacity` bytes.
    static bool ReadValue(CFStringRef key, CFStringRef application, void* data, size_t capacity);

    /// All bytes of the data: for those who know how many they stored.
    static bool ReadValue(CFStringRef key, CFStringRef application, void* data);

    static void WriteValue(CFStringRef key, CFStringRef application, bool value);
    static void WriteValue(CFStringRef key, CFStringRef application, int value);
    static void WriteValue(CFStringRef key, CFStringRef application, char value);

    /// A text in Mac OS Roman; null writes nothing.
    static void WriteValue(CFStringRef key, CFStringRef application, const char* text);

    static void WriteValue(CFStringRef key, CFStringRef application, const void* data, size_t length);

    /// Stores what was written. @return false when that failed
    static bool SyncPrefs(CFStringRef application);
};
