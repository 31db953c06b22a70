// The plug-in's front door: its factory, and the instance with the interface table through which a host imports.
#include "GetMetadataForFile.h"
#include "Importer/Names.h"

#include <CoreServices/CoreServices.h>

#include <cstdlib>
#include <cstring>

/// One instance. A pointer to it serves as the pointer to the table's pointer that every COM interface is.
struct MetadataImporterPluginType {
    const MDImporterInterfaceStruct* conduitInterface;
    CFUUIDRef factoryID; ///< retained
    UInt32 refCount;     ///< not atomic: a host uses an instance from one thread at a time
};

static MetadataImporterPluginType* AllocMetadataImporterPluginType(CFUUIDRef factoryID);
static void DeallocMetadataImporterPluginType(MetadataImporterPluginType* thisInstance);
static HRESULT MetadataImporterQueryInterface(void* thisInstance, REFIID iid, LPVOID* ppv);
static ULONG MetadataImporterPluginAddRef(void* thisInstance);
static ULONG MetadataImporterPluginRelease(void* thisInstance);

// Shared by all instances: a host that writes to it ends there, instead of leading the next import astray.
static const MDImporterInterfaceStruct kInterfaceTable = {nullptr, &MetadataImporterQueryInterface,
                                                          &MetadataImporterPluginAddRef, &MetadataImporterPluginRelease,
                                                          &GetMetadataForFile};

static MetadataImporterPluginType* AllocMetadataImporterPluginType(CFUUIDRef factoryID)
{
    auto* const instance = static_cast<MetadataImporterPluginType*>(malloc(sizeof(MetadataImporterPluginType)));
    memset(instance, 0, sizeof *instance);
    instance->conduitInterface = &kInterfaceTable;
    instance->factoryID = static_cast<CFUUIDRef>(CFRetain(factoryID));
    CFPlugInAddInstanceForFactory(factoryID);
    instance->refCount = 1;
    return instance;
}

static void DeallocMetadataImporterPluginType(MetadataImporterPluginType* thisInstance)
{
    const CFUUIDRef factoryID = thisInstance->factoryID;
    // First the memory, then the count: a host that sees the count at 0 may rely on the instance being gone.
    free(thisInstance);
    if (factoryID != nullptr) {
        CFPlugInRemoveInstanceForFactory(factoryID);
        CFRelease(factoryID);
    }
}

static HRESULT MetadataImporterQueryInterface(void* thisInstance, REFIID iid, LPVOID* ppv)
{
    const CFUUIDRef interfaceID = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, iid);
    const bool known = CFEqual(interfaceID, kMDImporterInterfaceID) || CFEqual(interfaceID, IUnknownUUID);
    if (known) {
        static_cast<MetadataImporterPluginType*>(thisInstance)->conduitInterface->AddRef(thisInstance);
    }
    *ppv = known ? thisInstance : nullptr;
    CFRelease(interfaceID);
    return known ? S_OK : E_NOINTERFACE;
}

static ULONG MetadataImporterPluginAddRef(void* thisInstance)
{
    return ++static_cast<MetadataImporterPluginType*>(thisInstance)->refCount;
}

static ULONG MetadataImporterPluginRelease(void* thisInstance)
{
    auto* const instance = static_cast<MetadataImporterPluginType*>(thisInstance);
    const ULONG left = --instance->refCount;
    if (left == 0) {
        DeallocMetadataImporterPluginType(instance);
    }
    return left;
}

/// Makes an instance for the host; found by its name in the bundle's property list.
/// @return the instance with one reference, or null for any type but that of metadata importers
extern "C" __attribute__((visibility("default"))) void* MetadataImporterPluginFactory(CFAllocatorRef, CFUUIDRef typeID)
{
    if (!CFEqual(typeID, kMDImporterTypeID)) {
        return nullptr;
    }
    const CFStringRef text =
        CFStringCreateWithCString(kCFAllocatorDefault, Importer::kFactoryUUID, kCFStringEncodingASCII);
    const CFUUIDRef factoryID = CFUUIDCreateFromString(kCFAllocatorDefault, text);
    CFRelease(text);
    MetadataImporterPluginType* const instance = AllocMetadataImporterPluginType(factoryID);
    CFRelease(factoryID); // the instance holds its own
    return instance;
}
