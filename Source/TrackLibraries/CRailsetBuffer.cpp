#include "TrackLibraries/CRailsetBuffer.h"

#include "TrackLibraries/CRailsetFolder.h"

CRailsetBuffer::~CRailsetBuffer()
{
    CloseAllRailsets();
}

CRailSet* CRailsetBuffer::GetRailset(const std::string& name)
{
    const auto found = mLibraries.find(name);
    if (found != mLibraries.end()) {
        return found->second.get();
    }
    std::unique_ptr<CRailSet> library(CRailsetFolder::Instance()->GetRailset(name));
    if (!library) {
        return nullptr;
    }
    library->Load();
    return mLibraries.emplace(name, std::move(library)).first->second.get();
}

void CRailsetBuffer::CloseAllRailsets()
{
    for (auto& [name, library] : mLibraries) {
        library.reset();
    }
}
