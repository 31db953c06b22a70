// Which track libraries there are.
#pragma once

#include "TrackLibraries/Utilities/ULibraryConstants.h"

#include <deque>
#include <string>
#include <vector>

class CRailSet;

/// A library file as the registry knows it.
struct tRSDiskEntry {
    std::string name; ///< by which elements refer to it, see ULibraryFiles::GetLibraryName
    std::string path;
    int modelScale = 0;
    tRailSetContentType contentType = 0;
};

/// Registry of the library files on disk, in the order in which they were added. It starts empty; the host,
/// who knows where libraries lie, fills it. Not for several threads.
class CRailsetFolder {
public:
    /// The one registry, made when it is first asked for; lives until the process ends.
    static CRailsetFolder* Instance();

    CRailsetFolder(const CRailsetFolder&) = delete;
    CRailsetFolder& operator=(const CRailsetFolder&) = delete;
    virtual ~CRailsetFolder() = default;

    /// Registers library files behind those that are known. A path that is registered already, and a file that does not
    /// load, is passed over with a warning. Files of the same name in different folders are all registered; look-ups by
    /// name give the first.
    void InitializeWithPaths(const std::vector<std::string>& paths);
    /// Does nothing: the registry only grows.
    void ReScanRailsetsFolder() {}
    /// Registers once more a file that is already registered, after it changed for example; the old entry stays in
    /// front of the new one. A file that is not registered is refused, silently.
    /// @return the new entry, or null
    const tRSDiskEntry* LoadExternalRailset(const std::string& path);

    /// @return the first entry of that name (byte for byte), or null. Entries stay where they are for good.
    const tRSDiskEntry* GetRailsetEntry(const std::string& name) const;
    bool ContainsRailset(const std::string& name) const { return GetRailsetEntry(name) != nullptr; }
    /// @return a library bound to the file of that name, not loaded yet, which the caller owns;
    ///         null for an unknown name
    CRailSet* GetRailset(const std::string& name) const;
    /// Replaces `entries` by those of that scale and content type. @return their number
    int GetRailsetEntries(std::vector<const tRSDiskEntry*>& entries, int modelScale,
                          tRailSetContentType contentType) const;
    /// Looks a product number up in all libraries of a manufacturer, then in all libraries. Every library is read from
    /// disk for it.
    /// @param libraryName  receives the name of the first library that holds it
    /// @return false when none does
    bool FindLibraryForElement(const std::string& manufacturer, const std::string& productNumber,
                               std::string& libraryName) const;

protected:
    CRailsetFolder() = default;

private:
    /// @return true when the path is registered. Otherwise, for a name that is taken, says so: only the message makes
    ///         the name unique.
    bool TestMakeUniqueName(const std::string& path) const;
    /// @return the new entry, or null for a file that does not load
    const tRSDiskEntry* BufferLibrary(const std::string& path);

    static CRailsetFolder* mSingletonInstance;
    std::deque<tRSDiskEntry> mEntries; ///< so that entries handed out stay valid
};
