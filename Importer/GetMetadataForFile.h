// The import entry of the plug-in.
#pragma once

#include <CoreServices/CoreServices.h>

/// Fills the dictionary with the attributes of one layout document. One import at a time per process.
/// @param instance     not used
/// @param attributes   keeps what it holds unless the import succeeds; the five attributes replace older values then
/// @param contentType  uniform type identifier; anything but exactly the layout's is left alone
/// @param path         of the document; without a form in Mac OS Roman it cannot be opened
/// @return whether the document was imported
extern "C" __attribute__((visibility("default"))) Boolean
GetMetadataForFile(void* instance, CFMutableDictionaryRef attributes, CFStringRef contentType, CFStringRef path);
