// Plug-in factories of this process: where each comes from, and how many instances of it live.
#import "Linux/CoreFoundation/Classes.h"
#import "Linux/CoreFoundation/Pool.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

namespace {
struct tUUIDLess {
    bool operator()(const CFUUIDBytes& a, const CFUUIDBytes& b) const { return memcmp(&a, &b, sizeof a) < 0; }
};

struct tFactory {
    CFBundleRef bundle = nullptr; ///< retained; null while only the instances of a factory are known
    std::string function;
    std::vector<CFUUIDBytes> types;
    CFIndex instances = 0;
};

// A host may load the plug-in without CFPlugInCreate; the factory then has no bundle, but still a count.
struct tRegistry {
    std::mutex lock;
    std::map<CFUUIDBytes, tFactory, tUUIDLess> factories;
};
} // namespace

static tRegistry& Registry()
{
    static tRegistry& sRegistry = *new tRegistry; // instances may die after static objects did
    return sRegistry;
}

static bool SameUUID(const CFUUIDBytes& a, const CFUUIDBytes& b) { return memcmp(&a, &b, sizeof a) == 0; }

// @return false for what is no text or no UUID
static bool ParseUUID(id text, CFUUIDBytes& bytes)
{
    if (![text isKindOfClass:[NSString class]]) {
        return false;
    }
    const CFUUIDRef uuid = CFUUIDCreateFromString(kCFAllocatorDefault, reinterpret_cast<CFStringRef>(text));
    if (uuid == nullptr) {
        return false;
    }
    bytes = CFUUIDGetUUIDBytes(uuid);
    CFRelease(uuid);
    return true;
}

static NSDictionary* DictionaryOf(CFBundleRef bundle, NSString* key)
{
    id value = [[reinterpret_cast<PlatformBundle*>(bundle) info] objectForKey:key];
    return [value isKindOfClass:[NSDictionary class]] ? value : nil;
}

// The factories that a bundle names for a type, in its order.
static std::vector<CFUUIDBytes> FactoriesForType(CFBundleRef bundle, const CFUUIDBytes& type)
{
    std::vector<CFUUIDBytes> result;
    NSDictionary* types = DictionaryOf(bundle, @"CFPlugInTypes");
    NSEnumerator* names = [types keyEnumerator];
    while (id name = [names nextObject]) {
        CFUUIDBytes bytes;
        id list = [types objectForKey:name];
        if (!ParseUUID(name, bytes) || !SameUUID(bytes, type) || ![list isKindOfClass:[NSArray class]]) {
            continue;
        }
        NSEnumerator* factories = [list objectEnumerator];
        while (id factory = [factories nextObject]) {
            if (ParseUUID(factory, bytes)) {
                result.push_back(bytes);
            }
        }
    }
    return result;
}

// Every type of the bundle that lists the factory.
static std::vector<CFUUIDBytes> TypesOfFactory(CFBundleRef bundle, const CFUUIDBytes& factory)
{
    std::vector<CFUUIDBytes> result;
    NSEnumerator* names = [DictionaryOf(bundle, @"CFPlugInTypes") keyEnumerator];
    while (id name = [names nextObject]) {
        CFUUIDBytes type;
        if (!ParseUUID(name, type)) {
            continue;
        }
        const std::vector<CFUUIDBytes> factories = FactoriesForType(bundle, type);
        if (std::any_of(factories.begin(), factories.end(),
                        [&factory](const CFUUIDBytes& other) { return SameUUID(other, factory); })) {
            result.push_back(type);
        }
    }
    return result;
}

CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url)
{
    const Platform::CPool pool;
    const CFBundleRef bundle = CFBundleCreate(allocator, url);
    if (bundle == nullptr) {
        return nullptr;
    }
    NSDictionary* functions = DictionaryOf(bundle, @"CFPlugInFactories");
    NSEnumerator* names = [functions keyEnumerator];
    while (id name = [names nextObject]) {
        CFUUIDBytes uuid;
        id function = [functions objectForKey:name];
        if (!ParseUUID(name, uuid) || ![function isKindOfClass:[NSString class]]) {
            continue;
        }
        const std::vector<CFUUIDBytes> types = TypesOfFactory(bundle, uuid);
        const std::lock_guard<std::mutex> lock(Registry().lock);
        tFactory& factory = Registry().factories[uuid];
        if (factory.bundle != nullptr) {
            CFRelease(factory.bundle); // the bundle opened last serves
        }
        factory.bundle = static_cast<CFBundleRef>(const_cast<void*>(CFRetain(bundle)));
        factory.function = Platform::Utf8(reinterpret_cast<CFStringRef>(function));
        factory.types = types;
    }
    return bundle;
}

CFBundleRef CFPlugInGetBundle(CFPlugInRef plugIn) { return plugIn; }

CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef type, CFPlugInRef plugIn)
{
    const Platform::CPool pool;
    NSMutableArray* result = [[NSMutableArray alloc] init];
    for (const CFUUIDBytes& factory : FactoriesForType(plugIn, CFUUIDGetUUIDBytes(type))) {
        [result addObject:[[[PlatformUUID alloc] initWithBytes:factory] autorelease]];
    }
    return reinterpret_cast<CFArrayRef>(result);
}

void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factoryID, CFUUIDRef type)
{
    tFactory factory;
    {
        const std::lock_guard<std::mutex> lock(Registry().lock);
        const auto found = Registry().factories.find(CFUUIDGetUUIDBytes(factoryID));
        if (found == Registry().factories.end() || found->second.bundle == nullptr) {
            return nullptr;
        }
        factory = found->second;
    }
    const CFUUIDBytes wanted = CFUUIDGetUUIDBytes(type);
    if (std::none_of(factory.types.begin(), factory.types.end(),
                     [&wanted](const CFUUIDBytes& other) { return SameUUID(other, wanted); })) {
        return nullptr;
    }
    const CFStringRef name = Platform::CreateString(factory.function);
    void* const function = CFBundleGetFunctionPointerForName(factory.bundle, name);
    CFRelease(name);
    using tFactoryFunction = void* (*)(CFAllocatorRef, CFUUIDRef);
    return function != nullptr ? reinterpret_cast<tFactoryFunction>(function)(allocator, type) : nullptr;
}

void CFPlugInAddInstanceForFactory(CFUUIDRef factory)
{
    const std::lock_guard<std::mutex> lock(Registry().lock);
    ++Registry().factories[CFUUIDGetUUIDBytes(factory)].instances;
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory)
{
    const std::lock_guard<std::mutex> lock(Registry().lock);
    --Registry().factories[CFUUIDGetUUIDBytes(factory)].instances;
}

CFIndex PlatformPlugInInstanceCount(CFUUIDRef factory)
{
    const std::lock_guard<std::mutex> lock(Registry().lock);
    const auto found = Registry().factories.find(CFUUIDGetUUIDBytes(factory));
    return found != Registry().factories.end() ? found->second.instances : 0;
}
