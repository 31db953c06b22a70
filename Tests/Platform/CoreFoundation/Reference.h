// Small helpers of the Core Foundation tests.
#pragma once

#include "Platform/Released.h"

#include <string>

template <typename T>
using tOwned = Platform::tReleased<T>;

inline tOwned<CFStringRef> Text(const std::string& utf8)
{
    return tOwned<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, utf8.c_str(), kCFStringEncodingUTF8));
}

inline std::string Utf8(CFTypeRef string)
{
    char buffer[4096];
    if (string == nullptr || CFGetTypeID(string) != CFStringGetTypeID() ||
        !CFStringGetCString(static_cast<CFStringRef>(string), buffer, sizeof buffer, kCFStringEncodingUTF8)) {
        return "(no text)";
    }
    return buffer;
}

inline tOwned<CFURLRef> Url(const std::string& path)
{
    return tOwned<CFURLRef>(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), false));
}

inline std::string Path(CFURLRef url)
{
    UInt8 buffer[4096];
    return CFURLGetFileSystemRepresentation(url, true, buffer, sizeof buffer) ? reinterpret_cast<const char*>(buffer)
                                                                              : "(no path)";
}
