// A layout as the importer sets it up, and a file for it to read and write.
#pragma once

#include "Layers/CLayer.h"
#include "Layers/CLayerManager.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "support/DocumentBuilder.h"
#include "support/ScratchFile.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A layout that is read from bytes and saved to them.
class CTestLayout : public CBoundLayout {
public:
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
};

/// True when every group is reached from one without a parent, exactly once, and lists only groups whose parent it is.
inline bool IsForest(const std::vector<CGroup*>& groups)
{
    std::multimap<const CGroup*, const CGroup*> children;
    for (const CGroup* group : groups) {
        children.emplace(group->GetParentGroup(), group);
    }
    std::vector<const CGroup*> pending = {nullptr};
    for (size_t i = 0; i < pending.size(); ++i) {
        const auto [begin, end] = children.equal_range(pending[i]);
        std::transform(begin, end, std::back_inserter(pending), [](const auto& child) { return child.second; });
    }
    return pending.size() == groups.size() + 1 && std::all_of(groups.begin(), groups.end(), [](const CGroup* group) {
               const std::vector<CGroup*>& members = group->GetMemberGroupsVec();
               return std::all_of(members.begin(), members.end(),
                                  [group](const CGroup* member) { return member->GetParentGroup() == group; });
           });
}
