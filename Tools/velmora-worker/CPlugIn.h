// The importer plug-in as an indexing service would use it: bundle, factory, interface.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>

#include <string>

/// A loaded importer plug-in and one instance of it. The code stays loaded until the process ends.
class CPlugIn {
public:
    CPlugIn() = default;
    ~CPlugIn();
    CPlugIn(const CPlugIn&) = delete;
    CPlugIn& operator=(const CPlugIn&) = delete;

    /// Loads the bundle and creates an instance.
    /// @param path   bytes of the file system
    /// @param error  set to one line for people (UTF-8) when the answer is false
    bool Load(const std::string& path, std::string& error);

    /// Calls the importer. @return its answer
    bool Import(CFMutableDictionaryRef attributes, CFStringRef contentType, CFStringRef path) const;

    /// The bundle's property list; owned by the bundle.
    CFDictionaryRef GetInfo() const;

private:
    CFPlugInRef mPlugIn = nullptr;
    MDImporterInterfaceStruct** mImporter = nullptr;
};
