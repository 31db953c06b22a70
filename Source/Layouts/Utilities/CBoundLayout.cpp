#include "Layouts/Utilities/CBoundLayout.h"

#include "Layers/CLayer.h"
#include "Layouts/Utilities/CVLLayerNameResolver.h"

static CVLLayerNameResolver* sInstalled = nullptr; // a pointer: at exit nothing may take away what stays installed
static const CBoundLayout* sBound = nullptr;       // to which the installed one is bound

CBoundLayout::CBoundLayout()
{
    auto* resolver = new CVLLayerNameResolver(this);
    CLayer::ConfigureLayerNameResolver(resolver);
    delete sInstalled;
    sInstalled = resolver;
    sBound = this;
}

CBoundLayout::~CBoundLayout()
{
    if (sBound == this) {
        sInstalled->Unbind();
        sBound = nullptr;
    }
}
