// A layout as the importer sets it up, and a file for it to read and write.
#pragma once

#include "Layers/CLayer.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CLayout.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Utilities/CVLLayerNameResolver.h"
#include "support/DocumentBuilder.h"
#include "support/ScratchFile.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A layout with the layer name resolver bound to it.
class CTestLayout : public CLayout {
public:
    CTestLayout() : mResolver(this) { CLayer::ConfigureLayerNameResolver(&mResolver); }
    ~CTestLayout() { CLayer::ConfigureLayerNameResolver(nullptr); }

    int LoadBytes(std::string_view bytes) { return Load(CScratchFile(bytes).Path()); }
    int LoadRecords(const CRecords& records) { return LoadBytes(records.Bytes()); }
    /// What Save writes, with nothing changed but what saving changes.
    std::string SavedBytes()
    {
        const CScratchFile file;
        const std::string path = file.Path();
        if (!Save(&path)) {
            throw std::runtime_error("not saved");
        }
        return file.Get();
    }
    CRecords Saved() { return CRecords::OfDocument(SavedBytes()); }

    std::vector<std::string> LayerNames()
    {
        std::vector<std::string> names;
        for (int i = 0; i < GetLayerList()->GetNumberOfLayers(); ++i) {
            names.emplace_back(GetLayerList()->GetLayerAtIndex(i)->GetName());
        }
        return names;
    }

private:
    CVLLayerNameResolver mResolver;
};

/// True when every group stands in at most one list of members, is the parent of what its list holds and is reached
/// from exactly one root: no cycles, no second parents.
inline bool IsForest(const std::vector<CGroup*>& groups)
{
    std::vector<const CGroup*> pending;
    for (const CGroup* group : groups) {
        if (group->GetParentGroup() == nullptr) {
            pending.push_back(group);
        }
    }
    size_t reached = 0;
    while (!pending.empty() && reached <= groups.size()) {
        const CGroup* group = pending.back();
        pending.pop_back();
        ++reached;
        for (const CGroup* member : group->GetMemberGroupsVec()) {
            if (member->GetParentGroup() != group) {
                return false;
            }
            pending.push_back(member);
        }
    }
    return pending.empty() && reached == groups.size();
}
