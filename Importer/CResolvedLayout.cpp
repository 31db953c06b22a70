#include "CResolvedLayout.h"

#include "Elements/Utilities/UElementStatistics.h"
#include "Layers/CLayer.h"
#include "Layouts/Utilities/CVLLayerNameResolver.h"

static CVLLayerNameResolver* sInstalled = nullptr; // a pointer: at exit nothing may take away what stays installed

CResolvedLayout::CResolvedLayout() : mResolver(new CVLLayerNameResolver(&mLayout))
{
    CLayer::ConfigureLayerNameResolver(mResolver);
    delete sInstalled;
    sInstalled = mResolver;
}

CResolvedLayout::~CResolvedLayout()
{
    mResolver->Unbind();
}

std::string CResolvedLayout::Summary()
{
    return UElementStatistics::GetContentSummaryAsString(mLayout.GetElements());
}
