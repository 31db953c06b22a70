// Preferences as one property list file per application. Foundation's own store is not used: it ignores HOME and can
// wait many seconds for a stale lock.
#import "Linux/CoreFoundation/Classes.h"
#import "Linux/CoreFoundation/Pool.h"
#import "Linux/CoreFoundation/PropertyList.h"
#include "Platform/Streams.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

const CFStringRef kCFPreferencesCurrentApplication = (CFStringRef) @"kCFPreferencesCurrentApplication";

namespace {
struct tStore {
    std::string path;                  ///< empty when the values live in memory only
    NSMutableDictionary* values = nil; ///< owned
    bool changed = false;              ///< since the file was read or written
    bool damaged = false;              ///< the file is there and could not be understood
};
} // namespace

// The stores are read with the lock held, and kept until the process ends.
static std::mutex& Lock()
{
    static std::mutex& sLock = *new std::mutex;
    return sLock;
}

static std::string ConfigurationFolder()
{
    const char* const configuration = getenv("XDG_CONFIG_HOME");
    if (configuration != nullptr && configuration[0] == '/') {
        return std::string(configuration) + "/velmora";
    }
    const char* const home = getenv("HOME");
    return home != nullptr && home[0] == '/' ? std::string(home) + "/.config/velmora" : std::string();
}

static tStore& StoreOf(CFStringRef application)
{
    static auto& sStores = *new std::map<std::string, tStore>;
    if (CFEqual(application, kCFPreferencesCurrentApplication)) {
        application = CFBundleGetIdentifier(CFBundleGetMainBundle());
    }
    const std::string name = Platform::Utf8(application);
    tStore& store = sStores[name];
    if (store.values == nil) {
        const std::string folder = ConfigurationFolder();
        if (!folder.empty() && !name.empty() && name.find('/') == std::string::npos) {
            store.path = folder + "/" + name + ".plist";
            store.damaged = Platform::ReadPropertyList(store.path, store.values) == Platform::eListState::kDamaged;
        }
        if (store.values == nil) {
            store.values = [[NSMutableDictionary alloc] init];
        }
    }
    return store;
}

// Makes a folder and its parents; what is made is the user's alone.
static bool MakeFolder(const std::string& path)
{
    if (mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) {
        return true;
    }
    const size_t slash = path.rfind('/');
    return errno == ENOENT && slash != 0 && slash != std::string::npos && MakeFolder(path.substr(0, slash)) &&
           (mkdir(path.c_str(), 0700) == 0 || errno == EEXIST);
}

// Gives a damaged file a name that no file has, so that its user can still mend it.
static bool MoveAside(const std::string& path)
{
    for (int number = 1; number < 1000; ++number) {
        const std::string aside = path + ".damaged-" + std::to_string(number);
        if (link(path.c_str(), aside.c_str()) == 0) { // never replaces, as rename would
            return unlink(path.c_str()) == 0;
        }
        if (errno != EEXIST) {
            return access(aside.c_str(), F_OK) != 0 && rename(path.c_str(), aside.c_str()) == 0;
        }
    }
    return false;
}

static bool Write(const tStore& store)
{
    std::string bytes;
    const std::string folder = store.path.substr(0, store.path.rfind('/'));
    if (!Platform::FormatPropertyList(store.values, bytes) || !MakeFolder(folder)) {
        return false;
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        return false; // the file could only be overwritten in place, and then be left half written
    }
    if (store.damaged && !MoveAside(store.path)) {
        return false;
    }
    Platform::COutputFile file(store.path);
    return file.Get() != nullptr && fwrite(bytes.data(), 1, bytes.size(), file.Get()) == bytes.size() && file.Commit();
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application)
{
    const Platform::CPool pool;
    const std::lock_guard<std::mutex> lock(Lock());
    return [[StoreOf(application).values objectForKey:(id)key] retain];
}

// The value of `key` as a whole number. @return false for any other kind of value
static bool GetWhole(CFStringRef key, CFStringRef application, bool booleans, CFIndex& result)
{
    const CFPropertyListRef value = CFPreferencesCopyAppValue(key, application);
    if (value == nullptr) {
        return false;
    }
    bool valid = false;
    if (CFGetTypeID(value) == CFBooleanGetTypeID()) {
        result = CFBooleanGetValue(static_cast<CFBooleanRef>(value));
        valid = booleans;
    } else if (CFGetTypeID(value) == CFNumberGetTypeID()) {
        valid = CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberCFIndexType, &result);
    }
    CFRelease(value);
    return valid;
}

Boolean CFPreferencesGetAppBooleanValue(CFStringRef key, CFStringRef application, Boolean* valid)
{
    CFIndex value = 0;
    const bool found = GetWhole(key, application, true, value);
    if (valid != nullptr) {
        *valid = found;
    }
    return found && value != 0;
}

CFIndex CFPreferencesGetAppIntegerValue(CFStringRef key, CFStringRef application, Boolean* valid)
{
    CFIndex value = 0;
    const bool found = GetWhole(key, application, false, value);
    if (valid != nullptr) {
        *valid = found;
    }
    return found ? value : 0;
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application)
{
    const Platform::CPool pool;
    const std::lock_guard<std::mutex> lock(Lock());
    tStore& store = StoreOf(application);
    const CFTypeRef old = [store.values objectForKey:(id)key];
    if (old == value || (old != nullptr && value != nullptr && CFEqual(old, value))) {
        return;
    }
    if (value != nullptr) {
        [store.values setObject:(id)value forKey:(id)key];
    } else {
        [store.values removeObjectForKey:(id)key];
    }
    store.changed = true;
}

Boolean CFPreferencesAppSynchronize(CFStringRef application)
{
    const std::lock_guard<std::mutex> lock(Lock());
    tStore& store = StoreOf(application);
    if (!store.changed) {
        return true;
    }
    if (store.path.empty() || !Write(store)) {
        return false;
    }
    store.changed = false;
    store.damaged = false;
    return true;
}
