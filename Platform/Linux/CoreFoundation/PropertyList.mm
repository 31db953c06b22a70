#import "Linux/CoreFoundation/PropertyList.h"
#import "Linux/CoreFoundation/Pool.h"
#import "Linux/CoreFoundation/PropertyListGuard.h"
#include "Portable/Utf8.h"

#include <cerrno>
#include <cstdio>
#include <memory>

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

// Foundation would also try its binary and its old text form, logs text that is not UTF-8, for some cut documents asks
// for all memory there is, and takes a text with zeros that it then writes as another; none of that gets as far.
static bool LooksWhole(const std::string& bytes)
{
    static constexpr std::string_view kEnd = "</plist>";
    const size_t last = bytes.find_last_not_of(" \t\r\n");
    return last != std::string::npos && bytes.find('\0') == std::string::npos && last >= kEnd.size() &&
           bytes[0] == '<' && std::string_view(bytes).substr(0, last + 1).ends_with(kEnd) && Platform::IsUtf8(bytes);
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
