// Track libraries that were loaded once.
#pragma once

#include "TrackLibraries/CRailSet.h"

#include <map>
#include <memory>
#include <string>

/// Keeps the libraries that were asked for, for whoever looks up many articles:
/// one buffer for a layout, say. Owns them.
class CRailsetBuffer {
public:
    CRailsetBuffer() = default;
    CRailsetBuffer(const CRailsetBuffer&) = delete;
    CRailsetBuffer& operator=(const CRailsetBuffer&) = delete;
    virtual ~CRailsetBuffer();

    /// The library of that name as CRailsetFolder knows it, loaded on the first request. One that failed to load is
    /// kept as well, with what could be read.
    /// @return null for a name that the folder does not know, which it is asked again the next time
    CRailSet* GetRailset(const std::string& name);
    /// Destroys the libraries. The buffer still knows their names and gives null for them from then on, so this is the
    /// last thing to do with it.
    void CloseAllRailsets();

private:
    std::map<std::string, std::unique_ptr<CRailSet>> mLibraries;
};
