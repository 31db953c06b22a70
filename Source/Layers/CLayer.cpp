#include "Layers/CLayer.h"

#include "CheckError/CErr.h"
#include "KVUStr/KVUStr.h"
#include "Layers/CLayerNameResolver.h"

CLayerNameResolver* CLayer::sLayerNameResolver = nullptr;

CLayer::CLayer(const char* name)
{
    KVUStr::strncpy(mName, name, sizeof mName);
}

CLayer* CLayer::GetLayerByName(const char* name)
{
    CErr::CheckNull(sLayerNameResolver, "static CLayer *CLayer::GetLayerByName(const char *)",
                    "No layer name resolver configured.");
    return sLayerNameResolver->GetLayer(name);
}
