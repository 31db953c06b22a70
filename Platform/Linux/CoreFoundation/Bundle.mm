// Bundles, read by hand: Foundation's class here knows neither Contents/Info.plist nor Contents/Linux.
#import "Linux/CoreFoundation/Classes.h"
#import "Linux/CoreFoundation/Pool.h"
#import "Linux/CoreFoundation/PropertyList.h"

#include <climits>
#include <cstdio>
#include <dlfcn.h>
#include <unistd.h>

const CFStringRef kCFBundleExecutableKey = (CFStringRef) @"CFBundleExecutable";
const CFStringRef kCFBundleIdentifierKey = (CFStringRef) @"CFBundleIdentifier";
const CFStringRef kCFBundleNameKey = (CFStringRef) @"CFBundleName";
const CFStringRef kCFBundleVersionKey = (CFStringRef) @"CFBundleVersion";

static const char kExecutableFolder[] = "/Contents/Linux/";

@implementation PlatformBundle

- (id)initWithPathBytes:(const std::string&)path info:(NSDictionary*)info
{
    self = [super init];
    if (self != nil) {
        mPath = new std::string(path);
        mInfo = [info copy];
    }
    return self;
}

- (void)dealloc
{
    delete mPath;
    [mInfo release];
    [super dealloc];
}

- (const std::string&)path
{
    return *mPath;
}

- (NSDictionary*)info
{
    return mInfo;
}

- (BOOL)isEqual:(id)other
{
    return [other isKindOfClass:[PlatformBundle class]] && *mPath == [(PlatformBundle*)other path];
}

- (NSUInteger)hash
{
    return std::hash<std::string>()(*mPath);
}

- (void*)load
{
    if (mHandle != nullptr) {
        return mHandle;
    }
    id name = [mInfo objectForKey:(id)kCFBundleExecutableKey];
    const std::string file =
        [name isKindOfClass:[NSString class]] ? Platform::Utf8(reinterpret_cast<CFStringRef>(name)) : std::string();
    if (file.empty() || file.find('/') != std::string::npos) {
        fprintf(stderr, "%s: its property list names no executable\n", mPath->c_str());
        return nullptr;
    }
    // Never closed: classes that Objective-C once knows cannot be taken back.
    mHandle = dlopen((*mPath + kExecutableFolder + file).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (mHandle == nullptr) {
        fprintf(stderr, "%s\n", dlerror());
    }
    return mHandle;
}

@end

static PlatformBundle* AsObject(CFBundleRef bundle) { return reinterpret_cast<PlatformBundle*>(bundle); }

static std::string ExecutablePath()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string("/");
}

static CFBundleRef CreateFromFolder(const std::string& path)
{
    const Platform::CPool pool;
    NSMutableDictionary* info = nil;
    if (Platform::ReadPropertyList(path + "/Contents/Info.plist", info) != Platform::eListState::kRead) {
        return nullptr;
    }
    PlatformBundle* bundle = [[PlatformBundle alloc] initWithPathBytes:path info:info];
    [info release];
    return reinterpret_cast<CFBundleRef>(bundle);
}

static CFBundleRef CreateMainBundle()
{
    const Platform::CPool pool;
    const std::string executable = ExecutablePath();
    const std::string folder = executable.substr(0, executable.rfind('/'));
    const std::string tail = std::string(kExecutableFolder, sizeof kExecutableFolder - 2);
    if (folder.size() > tail.size() && folder.compare(folder.size() - tail.size(), tail.size(), tail) == 0) {
        const std::string path = folder.substr(0, folder.size() - tail.size());
        if (path.find('.', path.rfind('/') + 1) != std::string::npos) {
            if (CFBundleRef bundle = CreateFromFolder(path)) {
                return bundle;
            }
        }
    }
    NSDictionary* info = [NSDictionary dictionaryWithObjectsAndKeys:@"com.velmora.Velmora", (id)kCFBundleIdentifierKey,
                                                                    @"Velmora", (id)kCFBundleNameKey, @VELMORA_VERSION,
                                                                    (id)kCFBundleVersionKey, nil];
    return reinterpret_cast<CFBundleRef>([[PlatformBundle alloc] initWithPathBytes:folder + "/Velmora" info:info]);
}

CFBundleRef CFBundleGetMainBundle()
{
    static const CFBundleRef sBundle = CreateMainBundle();
    return sBundle;
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url)
{
    return url != nullptr ? CreateFromFolder([(PlatformURL*)url path]) : nullptr;
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    return reinterpret_cast<CFURLRef>([[PlatformURL alloc] initWithPathBytes:[AsObject(bundle) path]]);
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle)
{
    const CFTypeRef identifier = CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleIdentifierKey);
    return [(id)identifier isKindOfClass:[NSString class]] ? static_cast<CFStringRef>(identifier) : nullptr;
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle)
{
    return reinterpret_cast<CFDictionaryRef>([AsObject(bundle) info]);
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key)
{
    return CFDictionaryGetValue(CFBundleGetInfoDictionary(bundle), key);
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type, CFStringRef subfolder)
{
    std::string path = [AsObject(bundle) path] + "/Contents/Resources/";
    if (const std::string folder = Platform::Utf8(subfolder); !folder.empty()) {
        path += folder + "/";
    }
    path += Platform::Utf8(name);
    if (const std::string ending = Platform::Utf8(type); !ending.empty()) {
        path += "." + ending;
    }
    if (Platform::Utf8(name).empty() || access(path.c_str(), F_OK) != 0) {
        return nullptr;
    }
    return reinterpret_cast<CFURLRef>([[PlatformURL alloc] initWithPathBytes:path]);
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef, CFStringRef key, CFStringRef value, CFStringRef)
{
    return CFStringCreateCopy(kCFAllocatorDefault, value != nullptr && CFStringGetLength(value) > 0 ? value : key);
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) { return [AsObject(bundle) load] != nullptr; }

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name)
{
    const Platform::CPool pool; // classes of the module may do anything when they are loaded
    void* const handle = [AsObject(bundle) load];
    return handle != nullptr ? dlsym(handle, Platform::Utf8(name).c_str()) : nullptr;
}
