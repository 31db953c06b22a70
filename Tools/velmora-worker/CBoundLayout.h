// A layout that finds its own layers.
#pragma once

#include "Layers/CLayer.h"
#include "Layouts/CLayout.h"
#include "Layouts/Utilities/CVLLayerNameResolver.h"

/// A layout, and the resolver through which its elements find their layers.
class CBoundLayout {
public:
    CBoundLayout() : mResolver(&mLayout) { CLayer::ConfigureLayerNameResolver(&mResolver); }
    ~CBoundLayout() { CLayer::ConfigureLayerNameResolver(nullptr); }
    CBoundLayout(const CBoundLayout&) = delete;
    CBoundLayout& operator=(const CBoundLayout&) = delete;
    CLayout& Get() { return mLayout; }

private:
    CLayout mLayout;
    CVLLayerNameResolver mResolver;
};
