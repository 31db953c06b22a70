#include "CPlugIn.h"

#include "protocol/UTF8.h"

#include <unistd.h>

/// The instance of the bundle's importer factory, as IUnknown; null with the reason where there is none.
static MDImporterInterfaceStruct** CreateInstance(CFPlugInRef plugIn, std::string& reason)
{
    const CFArrayRef factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(kMDImporterTypeID, plugIn);
    MDImporterInterfaceStruct** instance = nullptr;
    if (factories == nullptr || CFArrayGetCount(factories) == 0) {
        reason = "is not a metadata importer";
    } else if (!CFBundleLoadExecutable(CFPlugInGetBundle(plugIn))) {
        reason = "cannot be loaded: its program code is missing or damaged";
    } else {
        const CFUUIDRef factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories, 0));
        instance = static_cast<MDImporterInterfaceStruct**>(
            CFPlugInInstanceCreate(kCFAllocatorDefault, factory, kMDImporterTypeID));
        reason = "makes no importer";
    }
    if (factories != nullptr) {
        CFRelease(factories);
    }
    return instance;
}

CPlugIn::~CPlugIn()
{
    if (mImporter != nullptr) {
        (*mImporter)->Release(mImporter);
    }
    if (mPlugIn != nullptr) {
        CFRelease(mPlugIn);
    }
}

bool CPlugIn::Load(const std::string& path, std::string& error)
{
    const std::string name = "the plug-in " + UTF8::MakeValid(path) + " ";
    if (access(path.c_str(), F_OK) != 0) {
        error = name + "does not exist";
        return false;
    }
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true);
    if (url != nullptr) {
        mPlugIn = CFPlugInCreate(kCFAllocatorDefault, url);
        CFRelease(url);
    }
    if (mPlugIn == nullptr) {
        error = name + "is no bundle: it has no readable property list";
        return false;
    }
    std::string reason;
    MDImporterInterfaceStruct** instance = CreateInstance(mPlugIn, reason);
    if (instance == nullptr) {
        error = name + reason;
        return false;
    }
    LPVOID importer = nullptr;
    const HRESULT result = (*instance)->QueryInterface(instance, CFUUIDGetUUIDBytes(kMDImporterInterfaceID), &importer);
    (*instance)->Release(instance); // the interface holds a reference of its own
    if (result != S_OK || importer == nullptr) {
        error = name + "does not offer the importer interface";
        return false;
    }
    mImporter = static_cast<MDImporterInterfaceStruct**>(importer);
    return true;
}

bool CPlugIn::Import(CFMutableDictionaryRef attributes, CFStringRef contentType, CFStringRef path) const
{
    return (*mImporter)->ImporterImportData(mImporter, attributes, contentType, path) != 0;
}

CFDictionaryRef CPlugIn::GetInfo() const
{
    return CFBundleGetInfoDictionary(CFPlugInGetBundle(mPlugIn));
}
