// How element code finds a layer by name without knowing the layout.
#pragma once

class CLayer;

/// Finds the layers of whatever document is being read.
class CLayerNameResolver {
public:
    virtual ~CLayerNameResolver() = default;
    /// @return the layer of that name (not owned by the caller), or null
    virtual CLayer* GetLayer(const char* name) = 0;
};
