#include "Layouts/CDisplayOptionsManager.h"

#include "CheckError/CErr.h"

#include <new>

CDisplayOptionsManager* CDisplayOptionsManager::Instance()
{
    static CDisplayOptionsManager* sInstance = nullptr;
    if (sInstance == nullptr) {
        sInstance = new (std::nothrow) CDisplayOptionsManager;
        CErr::CheckNull(sInstance, "static CDisplayOptionsManager *CDisplayOptionsManager::Instance()",
                        "Failed to construct CDisplayOptionsManager singleton member");
    }
    return sInstance;
}
