// The application's bundle.
#pragma once

#include "Platform/FileReference.h"

#include <CoreFoundation/CoreFoundation.h>

/// The main bundle: where it lies, what it is called and what it holds. Texts are Mac OS Roman, empty when unknown, and
/// only valid until the next conversion of a Core Foundation string (KVUStr::GetCStrFromCFStr).
class CBundle {
public:
    /// The one bundle, never destroyed.
    static CBundle* Instance();

    CBundle();
    virtual ~CBundle();
    CBundle(const CBundle&) = delete;
    CBundle& operator=(const CBundle&) = delete;

    /// The bundle folder's name with its extension.
    const char* GetBundleName() const;
    const char* GetIdentifier() const;

    /// The bundle's version; "?" when the information property list holds something else than a text.
    const char* GetVersionNumber() const;

    /// @return false when the folder does not exist
    bool GetBundleLocation(FSRef& location) const;

    /// A file of the resources folder. @param name,type  Mac OS Roman
    /// @return null when there is no such file; the caller releases the URL
    CFURLRef GetURLForResource(const char* name, const char* type) const;

    /// As GetURLForResource. @return false when there is no such file; `resource` is then untouched
    bool GetFSRefForResource(const char* name, const char* type, FSRef& resource) const;

    /// A file in the folder that holds the bundle. @param name  UTF-8
    /// @return false when it does not exist
    bool GetFSRefForFileNextToApp(const char* name, FSRef& file) const;

private:
    CFBundleRef mBundle; ///< not owned
    CFURLRef mURL;       ///< of the bundle folder; owned
};
