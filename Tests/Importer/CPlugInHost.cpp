#include "CPlugInHost.h"

#include "Importer/Names.h"

#include <stdexcept>
#include <vector>

using nlohmann::json;
template <class tRef>
using tHeld = Platform::tReleased<tRef>;

static tHeld<CFStringRef> MakeText(const std::string& utf8)
{
    return tHeld<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, utf8.c_str(), kCFStringEncodingUTF8));
}

template <class tValue>
static tValue Must(tValue value)
{
    if (!value) {
        throw std::runtime_error("the importer cannot be loaded");
    }
    return value;
}

static json ToJson(CFTypeRef object)
{
    if (CFGetTypeID(object) == CFArrayGetTypeID()) {
        json result = json::array();
        const auto array = static_cast<CFArrayRef>(object);
        for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
            result.push_back(ToJson(CFArrayGetValueAtIndex(array, i)));
        }
        return result;
    }
    static char text[1 << 20];
    const bool isText = CFGetTypeID(object) == CFStringGetTypeID() &&
                        CFStringGetCString(static_cast<CFStringRef>(object), text, sizeof text, kCFStringEncodingUTF8);
    return isText ? json(text) : json();
}

CPlugInHost::CPlugInHost()
{
    const std::string path = std::string(BUILD_FOLDER) + "/" + Importer::kBundleName;
    const tHeld<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true));
    mPlugIn.reset(CFPlugInCreate(kCFAllocatorDefault, url.get()));
    const tHeld<CFArrayRef> factories(
        CFPlugInFindFactoriesForPlugInTypeInPlugIn(kMDImporterTypeID, Must(mPlugIn.get())));
    Must(CFArrayGetCount(factories.get()) == 1);
    mFactory.reset(static_cast<CFUUIDRef>(CFRetain(CFArrayGetValueAtIndex(factories.get(), 0))));
    auto** const unknown = static_cast<MDImporterInterfaceStruct**>(
        CFPlugInInstanceCreate(kCFAllocatorDefault, mFactory.get(), kMDImporterTypeID));
    LPVOID importer = nullptr;
    (*Must(unknown))->QueryInterface(unknown, CFUUIDGetUUIDBytes(kMDImporterInterfaceID), &importer);
    mImporter = static_cast<MDImporterInterfaceStruct**>(Must(importer));
    (*unknown)->Release(unknown);
}

CPlugInHost::~CPlugInHost()
{
    (*mImporter)->Release(mImporter);
}

bool CPlugInHost::Import(const std::string& path, json& attributes, const char* contentType) const
{
    const tHeld<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    for (const auto& [key, value] : attributes.items()) {
        CFDictionarySetValue(dictionary.get(), MakeText(key).get(), MakeText(value.get<std::string>()).get());
    }
    const auto type = MakeText(contentType != nullptr ? contentType : Importer::kContentType);
    const bool result =
        (*mImporter)->ImporterImportData(mImporter, dictionary.get(), type.get(), MakeText(path).get()) != 0;
    std::vector<const void*> keys(static_cast<size_t>(CFDictionaryGetCount(dictionary.get())));
    std::vector<const void*> values(keys.size());
    CFDictionaryGetKeysAndValues(dictionary.get(), keys.data(), values.data());
    attributes = json::object();
    for (size_t i = 0; i < keys.size(); ++i) {
        attributes[ToJson(keys[i]).get<std::string>()] = ToJson(values[i]);
    }
    return result;
}

std::string GoodDocument()
{
    return std::string(TEST_DATA) + "/documents/valid-00002.velmora";
}
