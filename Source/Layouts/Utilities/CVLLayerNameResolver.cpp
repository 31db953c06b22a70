#include "Layouts/Utilities/CVLLayerNameResolver.h"

#include "CheckError/CErr.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CLayout.h"

CLayer* CVLLayerNameResolver::GetLayer(const char* name)
{
    if (mLayout == nullptr) {
        return nullptr;
    }
    CLayerManager* layers = mLayout->GetLayerList();
    CErr::CheckNull(layers, "virtual CLayer *CVLLayerNameResolver::GetLayer(const char *)",
                    "Failed to retrieve layer list from layout");
    return layers->GetLayerByName(name);
}
