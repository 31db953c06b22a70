// Track libraries that were loaded once.
#pragma once

#include "TrackLibraries/CRailSet.h"

#include <map>
#include <memory>
#include <string>

/// Loads each library once for someone who looks up many articles, and owns it.
class CRailsetBuffer {
public:
    CRailsetBuffer() = default;
    CRailsetBuffer(const CRailsetBuffer&) = delete;
    CRailsetBuffer& operator=(const CRailsetBuffer&) = delete;
    virtual ~CRailsetBuffer();

    /// The library of that name as CRailsetFolder knows it, loaded on the first request. One that failed to load is
    /// kept as well, with what could be read.
    /// @return null for a name that the folder does not know; such a name is not remembered
    CRailSet* GetRailset(const std::string& name);
    /// Destroys the libraries. From then on the buffer gives null for their names; it is of no more use.
    void CloseAllRailsets();

private:
    std::map<std::string, std::unique_ptr<CRailSet>> mLibraries;
};
