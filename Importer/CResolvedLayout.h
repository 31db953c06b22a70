// A layout that is being imported, and the resolver through which its elements find their layers.
#pragma once

#include "Layouts/CLayout.h"

#include <string>

class CVLLayerNameResolver;

/// Owns a layout and installs a layer name resolver for it. The resolver outlives this object: it stays installed,
/// without a layout, and is freed when the next one takes its place. One object at a time per process.
class CResolvedLayout {
public:
    CResolvedLayout();
    /// Takes the layout from the resolver before the layout dies.
    ~CResolvedLayout();
    CResolvedLayout(const CResolvedLayout&) = delete;
    CResolvedLayout& operator=(const CResolvedLayout&) = delete;

    CLayout& Get() { return mLayout; }

    /// The content summary of the layout's elements, Mac OS Roman.
    std::string Summary();

private:
    CLayout mLayout;
    CVLLayerNameResolver* mResolver; ///< owned by this file's static
};
