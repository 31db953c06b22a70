// Blocks of elements and of groups from a clipboard, whose length is known and whose content is not.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layers/CLayer.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/CGroupsManager.h"
#include "Layouts/Groups/UGroups.h"
#include "Layouts/Utilities/CVLLayerNameResolver.h"

#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static CVLLayerNameResolver sResolver(nullptr); // knows no layer
    CLayer::ConfigureLayerNameResolver(&sResolver);
    std::vector<UElementVectorOperations::Byte> block(bytes, bytes + size);
    std::vector<CCompositeGeometry*> elements;
    UElementVectorOperations::ElementVectorFromRawMem(elements, block.data(), block.size());
    CGroupsManager manager;
    std::vector<CGroup*> groups;
    UGroups::GroupVectorFromRawMem(&manager, groups, elements, block.data(), block.size());
    for (CGroup* group : groups) {
        delete group;
    }
    UElementVectorOperations::DeleteItemVector(elements);
    return 0;
}
