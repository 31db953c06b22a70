#import "Linux/CoreFoundation/Classes.h"

#include <unistd.h>

@implementation PlatformURL

- (id)initWithPathBytes:(const std::string&)path
{
    self = [super init];
    if (self != nil) {
        mPath = new std::string(path);
        while (mPath->size() > 1 && mPath->back() == '/') {
            mPath->pop_back();
        }
    }
    return self;
}

- (void)dealloc
{
    delete mPath;
    [super dealloc];
}

- (const std::string&)path
{
    return *mPath;
}

- (BOOL)isEqual:(id)other
{
    return [other isKindOfClass:[PlatformURL class]] && *mPath == [(PlatformURL*)other path];
}

- (NSUInteger)hash
{
    return std::hash<std::string>()(*mPath);
}

- (id)copyWithZone:(NSZone*)zone
{
    (void)zone;
    return [self retain];
}

@end

static const std::string& PathOf(CFURLRef url)
{
    return [reinterpret_cast<PlatformURL*>(const_cast<__CFURL*>(url)) path];
}

static CFURLRef Create(const std::string& path)
{
    return reinterpret_cast<CFURLRef>([[PlatformURL alloc] initWithPathBytes:path]);
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex length, Boolean)
{
    if (path == nullptr || length <= 0 || memchr(path, 0, static_cast<size_t>(length)) != nullptr) {
        return nullptr;
    }
    std::string text(reinterpret_cast<const char*>(path), static_cast<size_t>(length));
    if (text[0] != '/') {
        char* const folder = getcwd(nullptr, 0);
        if (folder == nullptr) {
            return nullptr;
        }
        text = std::string(folder) + "/" + text;
        free(folder);
    }
    return Create(text);
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean, UInt8* buffer, CFIndex size)
{
    const std::string& path = PathOf(url);
    if (size <= 0 || path.size() >= static_cast<size_t>(size)) {
        return false;
    }
    memcpy(buffer, path.c_str(), path.size() + 1);
    return true;
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef url)
{
    const std::string& path = PathOf(url);
    return Platform::CreateString(path == "/" ? path : path.substr(path.rfind('/') + 1));
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef, CFURLRef url)
{
    const std::string& path = PathOf(url);
    const size_t slash = path.rfind('/');
    return Create(slash == 0 ? "/" : path.substr(0, slash));
}
