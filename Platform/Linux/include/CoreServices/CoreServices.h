// What Core Services adds for metadata importers, and the one File Manager record that the core fills.
#ifndef VELMORA_CORESERVICES_H
#define VELMORA_CORESERVICES_H

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A file name: a count of UTF-16 units and the units themselves.
typedef struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
} HFSUniStr255;

/// The type of plug-in that an indexing service looks for, and the interface that it asks the instance for.
#define kMDImporterTypeID                                                                                              \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3, 0xF9,    \
                                   0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)
#define kMDImporterInterfaceID                                                                                         \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x6E, 0xBC, 0x27, 0xC4, 0x89, 0x9C, 0x11, 0xD8, 0x84, 0xAE,    \
                                   0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)

typedef struct MDImporterInterfaceStruct {
    IUNKNOWN_C_GUTS;
    /// Fills `attributes` from the document. True when it was imported; otherwise the dictionary is as it was.
    Boolean (*ImporterImportData)(void* instance, CFMutableDictionaryRef attributes, CFStringRef contentType,
                                  CFStringRef path);
} MDImporterInterfaceStruct;

/// Attribute keys; the text of each is its name.
CF_EXPORT extern const CFStringRef kMDItemAuthors;     ///< array of strings
CF_EXPORT extern const CFStringRef kMDItemDescription; ///< string
CF_EXPORT extern const CFStringRef kMDItemLayerNames;  ///< array of strings
CF_EXPORT extern const CFStringRef kMDItemTextContent; ///< string
CF_EXPORT extern const CFStringRef kMDItemVersion;     ///< string

#ifdef __cplusplus
}
#endif

#endif
