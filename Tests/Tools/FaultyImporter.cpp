// The importer of a plug-in that misbehaves on demand: the document says how. It stands in the real plug-in's factory.
#include "Importer/GetMetadataForFile.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <unistd.h>

/// The worker's end of the socket pair, of which a plug-in should know nothing.
static constexpr int kHostSocket = 3;

static CFStringRef MakeString(const std::string& text)
{
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                   static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
}

static std::string ReadDocument(CFStringRef path)
{
    char name[64] = {};
    char text[64] = {};
    CFStringGetCString(path, name, sizeof name, kCFStringEncodingUTF8);
    const char* slash = strrchr(name, '/'); // "/proc/self/fd/N"
    const ssize_t count = pread(slash != nullptr ? atoi(slash + 1) : -1, text, sizeof text, 0);
    return {text, static_cast<size_t>(count > 0 ? count : 0)};
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
        void* memory = malloc(size_t{1} << 20);
        if (memory == nullptr) {
            return;
        }
        memset(memory, static_cast<int>(block), size_t{1} << 20);
    }
}

static void Misbehave(const std::string& text, CFMutableDictionaryRef attributes)
{
    if (text == "crash") {
        volatile int* nowhere = nullptr;
        *nowhere = 1;
    } else if (text == "exit") {
        exit(0);
    } else if (text == "hang") {
        for (volatile bool forever = true; forever;) {
        }
    } else if (text == "throw") {
        throw std::runtime_error("on demand");
    } else if (text == "garbage") {
        [[maybe_unused]] const ssize_t written = write(kHostSocket, "what a strange answer", 21);
    } else if (text == "flood the host") {
        Flood(kHostSocket);
    } else if (text == "memory") {
        Eat();
    } else if (text == "flood the streams") {
        Flood(STDOUT_FILENO);
        Flood(STDERR_FILENO);
    } else if (text == "strange values") {
        const CFDataRef value = CFDataCreate(kCFAllocatorDefault, nullptr, 0);
        CFDictionarySetValue(attributes, kMDItemLayerNames, value);
        CFRelease(value);
    }
}

Boolean GetMetadataForFile(void*, CFMutableDictionaryRef attributes, CFStringRef, CFStringRef path)
{
    const std::string text = ReadDocument(path);
    Misbehave(text, attributes);
    const CFStringRef value = MakeString(text);
    CFDictionarySetValue(attributes, kMDItemDescription, value);
    CFRelease(value);
    return true;
}
