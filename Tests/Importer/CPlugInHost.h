// Loads the built importer bundle as an indexing service does.
#pragma once

#include "Platform/Released.h"

#include <CoreServices/CoreServices.h>

#include <nlohmann/json.hpp>
#include <string>

/// The bundle, one instance of its factory, and that instance's importer interface; all given back at the end.
class CPlugInHost {
public:
    /// Throws when a step up to the importer interface fails.
    CPlugInHost();
    ~CPlugInHost();
    CPlugInHost(const CPlugInHost&) = delete;
    CPlugInHost& operator=(const CPlugInHost&) = delete;

    CFPlugInRef PlugIn() const { return mPlugIn.get(); }
    CFUUIDRef Factory() const { return mFactory.get(); }
    MDImporterInterfaceStruct** Importer() const { return mImporter; }

    /// Imports a document.
    /// @param path        UTF-8
    /// @param attributes  what the dictionary holds before and after: texts, and after also arrays of texts
    /// @return what the importer answers
    bool Import(const std::string& path, nlohmann::json& attributes, const char* contentType = nullptr) const;

private:
    Platform::tReleased<CFPlugInRef> mPlugIn;
    Platform::tReleased<CFUUIDRef> mFactory;
    MDImporterInterfaceStruct** mImporter = nullptr;
};

/// A document of the test data that can be imported.
std::string GoodDocument();
