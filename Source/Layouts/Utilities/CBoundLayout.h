// A layout that finds its own layers.
#pragma once

#include "Layouts/CLayout.h"

/// A layout, and the installed resolver through which its elements find their layers. The resolver outlives the layout:
/// it stays installed, without a layout, and is freed when the next one takes its place. While several live, names are
/// those of the one made last. Not to be destroyed as a CLayout.
class CBoundLayout : public CLayout {
public:
    CBoundLayout();
    /// Takes the layout from the resolver before the layout dies.
    ~CBoundLayout();
};
