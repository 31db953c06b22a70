// Finds layers by name in one layout.
#pragma once

#include "Layers/CLayerNameResolver.h"

class CLayout;

/// Resolver of the layout that is being loaded. It may outlive its layout, once unbound from it.
class CVLLayerNameResolver : public CLayerNameResolver {
public:
    /// @param layout  not owned
    explicit CVLLayerNameResolver(CLayout* layout) : mLayout(layout) {}

    /// The first layer of that name in the layout, or null; always null, without a report, once unbound.
    CLayer* GetLayer(const char* name) override;
    /// To be called before the layout dies.
    void Unbind() { mLayout = nullptr; }

private:
    CLayout* mLayout;
};
