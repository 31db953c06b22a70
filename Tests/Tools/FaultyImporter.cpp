// The importer of a plug-in that misbehaves on demand: the document says how. It stands in the real plug-in's factory.
#include "Importer/GetMetadataForFile.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <unistd.h>

/// The worker's end of the socket pair, of which a plug-in should know nothing.
static constexpr int kHostSocket = 3;

static std::string ReadFrom(int descriptor)
{
    char text[64] = {};
    const ssize_t count = pread(descriptor, text, sizeof text, 0);
    return {text, static_cast<size_t>(count > 0 ? count : 0)};
}

/// What the caller of the host has open, and in its environment.
static std::string LookAround()
{
    const char* const variable = getenv("SECRET");
    return ReadFrom(9) + (variable != nullptr ? variable : "");
}

static std::string ReadDocument(CFStringRef path)
{
    char name[64] = {};
    CFStringGetCString(path, name, sizeof name, kCFStringEncodingUTF8);
    const char* slash = strrchr(name, '/'); // "/proc/self/fd/N"
    return ReadFrom(slash != nullptr ? atoi(slash + 1) : -1);
}

static void Flood(int descriptor)
{
    const std::string block(size_t{1} << 20, 'x');
    for (int i = 0; i < 64 && write(descriptor, block.data(), block.size()) > 0; ++i) {
    }
}

/// Memory that is in use, until there is none.
static void Eat()
{
    for (size_t block = 0; block < 100000; ++block) {
        if (void* memory = malloc(size_t{1} << 20); memory != nullptr) {
            memset(memory, static_cast<int>(block), size_t{1} << 20);
        }
    }
}

static void SetStrangeValue(CFMutableDictionaryRef attributes)
{
    const CFDataRef value = CFDataCreate(kCFAllocatorDefault, nullptr, 0);
    CFDictionarySetValue(attributes, kMDItemLayerNames, value);
    CFRelease(value);
}

static volatile int* volatile sNowhere = nullptr;
static volatile bool sForever = true;

static const struct {
    const char* text;
    void (*act)(CFMutableDictionaryRef attributes);
} kMisdeeds[] = {{"crash", [](auto) { *sNowhere = 1; }}, // a raised signal would be refused in the sandbox
                 {"exit", [](auto) { exit(0); }},
                 {"hang",
                  [](auto) {
                      while (sForever) {
                      }
                  }},
                 {"throw", [](auto) { throw std::runtime_error("on demand"); }},
                 {"flood the host", [](auto) { Flood(kHostSocket); }},
                 {"memory", [](auto) { Eat(); }},
                 {"flood the streams", [](auto) { Flood(STDOUT_FILENO), Flood(STDERR_FILENO); }},
                 {"strange values", SetStrangeValue}};

Boolean GetMetadataForFile(void*, CFMutableDictionaryRef attributes, CFStringRef, CFStringRef path)
{
    const std::string text = ReadDocument(path);
    for (const auto& misdeed : kMisdeeds) {
        if (text == misdeed.text) {
            misdeed.act(attributes);
        }
    }
    const std::string said = text == "look around" ? LookAround() : text;
    const CFStringRef value = CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(said.data()),
                                                      static_cast<CFIndex>(said.size()), kCFStringEncodingUTF8, false);
    CFDictionarySetValue(attributes, kMDItemDescription, value);
    CFRelease(value);
    return true;
}
