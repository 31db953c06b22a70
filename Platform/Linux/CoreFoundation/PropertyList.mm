#import "Linux/CoreFoundation/PropertyList.h"
#import "Linux/CoreFoundation/Pool.h"
#import "Linux/CoreFoundation/PropertyListForm.h"
#import "Linux/CoreFoundation/PropertyListGuard.h"
#include "Portable/Utf8.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>
#include <string_view>

static bool ReadFile(const std::string& path, std::string& bytes)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "rbe"), &fclose);
    if (!file) {
        return false;
    }
    char block[4096];
    while (const size_t count = fread(block, 1, sizeof block, file.get())) {
        bytes.append(block, count);
    }
    return ferror(file.get()) == 0;
}

// Whether a zero is in the text or any reference to a character is to none: Foundation takes it for a zero.
static bool HasZero(std::string_view text)
{
    static constexpr std::string_view kReference = "&#";
    static constexpr unsigned long kLastCharacter = 0x10FFFF;
    for (size_t at = text.find(kReference); at != text.npos; at = text.find(kReference, at)) {
        at += kReference.size();
        const bool isHex = text.substr(at).starts_with('x');
        const char* const digits = text.data() + at + (isHex ? 1 : 0);
        unsigned long character = 0;
        const auto [end, error] = std::from_chars(digits, text.data() + text.size(), character, isHex ? 16 : 10);
        if (error != std::errc() || character == 0 || character > kLastCharacter) {
            return true;
        }
    }
    return text.find('\0') != text.npos;
}

// Foundation would also try its binary and its old text form, logs text that is not UTF-8, for some cut documents asks
// for all memory there is, and takes a text with zeros that it then writes as another; none of that gets as far.
static bool LooksWhole(const std::string& bytes)
{
    static constexpr std::string_view kEnd = "</plist>";
    const size_t last = bytes.find_last_not_of(" \t\r\n");
    return last != std::string::npos && !HasZero(bytes) && last >= kEnd.size() && bytes[0] == '<' &&
           std::string_view(bytes).substr(0, last + 1).ends_with(kEnd) && Platform::IsUtf8(bytes) &&
           Platform::HasPropertyListForm(bytes);
}

Platform::eListState Platform::ReadPropertyList(const std::string& path, NSMutableDictionary*& result)
{
    std::string bytes;
    errno = 0;
    if (!ReadFile(path, bytes)) {
        return errno == ENOENT ? eListState::kMissing : eListState::kDamaged;
    }
    if (!LooksWhole(bytes)) {
        return eListState::kDamaged;
    }
    const CPool pool;
    NSData* data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
    id list = PlatformParsePropertyList(data);
    if (![list isKindOfClass:[NSDictionary class]]) {
        return eListState::kDamaged;
    }
    result = [[NSMutableDictionary alloc] initWithDictionary:list];
    return eListState::kRead;
}

bool Platform::FormatPropertyList(NSDictionary* list, std::string& bytes)
{
    const CPool pool;
    NSData* data = PlatformFormatPropertyList(list);
    if (data == nil) {
        return false;
    }
    bytes.assign(static_cast<const char*>([data bytes]), [data length]);
    return true;
}
