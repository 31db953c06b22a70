#include "CPlugInHost.h"

#include "Importer/Names.h"

#include <vector>

using nlohmann::json;

static CFStringRef CreateText(const std::string& utf8)
{
    return CFStringCreateWithCString(kCFAllocatorDefault, utf8.c_str(), kCFStringEncodingUTF8);
}

static CFTypeRef CreateObject(const json& value)
{
    if (!value.is_array()) {
        return CreateText(value.get<std::string>());
    }
    const CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    for (const json& entry : value) {
        const CFTypeRef object = CreateObject(entry);
        CFArrayAppendValue(array, object);
        CFRelease(object);
    }
    return array;
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
    if (CFGetTypeID(object) != CFStringGetTypeID()) {
        return nullptr;
    }
    const auto text = static_cast<CFStringRef>(object);
    const CFIndex length = CFStringGetLength(text);
    std::vector<char> bytes(static_cast<size_t>(CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) + 1));
    if (!CFStringGetCString(text, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8)) {
        return nullptr;
    }
    return bytes.data();
}

CPlugInHost::CPlugInHost()
{
    const std::string path = std::string(BUILD_FOLDER) + "/" + Importer::kBundleName;
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true);
    mPlugIn = CFPlugInCreate(kCFAllocatorDefault, url);
    CFRelease(url);
    if (mPlugIn == nullptr) {
        return;
    }
    const CFArrayRef factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(kMDImporterTypeID, mPlugIn);
    if (CFArrayGetCount(factories) == 1) {
        mFactory = static_cast<CFUUIDRef>(CFRetain(CFArrayGetValueAtIndex(factories, 0)));
    }
    CFRelease(factories);
    if (mFactory == nullptr) {
        return;
    }
    auto** const unknown = static_cast<MDImporterInterfaceStruct**>(
        CFPlugInInstanceCreate(kCFAllocatorDefault, mFactory, kMDImporterTypeID));
    if (unknown == nullptr) {
        return;
    }
    LPVOID importer = nullptr;
    (*unknown)->QueryInterface(unknown, CFUUIDGetUUIDBytes(kMDImporterInterfaceID), &importer);
    mImporter = static_cast<MDImporterInterfaceStruct**>(importer);
    (*unknown)->Release(unknown);
}

CPlugInHost::~CPlugInHost()
{
    if (mImporter != nullptr) {
        (*mImporter)->Release(mImporter);
    }
    if (mFactory != nullptr) {
        CFRelease(mFactory);
    }
    if (mPlugIn != nullptr) {
        CFRelease(mPlugIn);
    }
}

bool CPlugInHost::Import(const std::string& path, json& attributes, const char* contentType) const
{
    const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    for (const auto& [key, value] : attributes.items()) {
        const CFStringRef name = CreateText(key);
        const CFTypeRef object = CreateObject(value);
        CFDictionarySetValue(dictionary, name, object);
        CFRelease(name);
        CFRelease(object);
    }
    const CFStringRef type = CreateText(contentType != nullptr ? contentType : Importer::kContentType);
    const CFStringRef pathText = CreateText(path);
    const bool result = (*mImporter)->ImporterImportData(mImporter, dictionary, type, pathText) != 0;
    CFRelease(type);
    CFRelease(pathText);

    std::vector<const void*> keys(static_cast<size_t>(CFDictionaryGetCount(dictionary)));
    std::vector<const void*> values(keys.size());
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    attributes = json::object();
    for (size_t i = 0; i < keys.size(); ++i) {
        attributes[ToJson(keys[i]).get<std::string>()] = ToJson(values[i]);
    }
    CFRelease(dictionary);
    return result;
}

std::string GoodDocument()
{
    return std::string(TEST_DATA) + "/documents/valid-00002.velmora";
}
