#include "Properties.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/CGroupsManager.h"
#include "Layouts/Groups/UGroups.h"
#include "Layouts/Utilities/CBoundLayout.h"

#include <memory>
#include <vector>

namespace {
using Byte = unsigned char;

/// In memory of its own size, so that a sanitizer sees who reads behind it.
std::unique_ptr<Byte[]> Copy(std::string_view bytes)
{
    std::unique_ptr<Byte[]> block(new Byte[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), block.get());
    return block;
}

std::string Text(const Byte* block, size_t size)
{
    return {reinterpret_cast<const char*>(block), size};
}

/// What was pasted; frees it.
struct tPasted {
    tPasted() = default;
    tPasted(const tPasted&) = delete;
    tPasted& operator=(const tPasted&) = delete;
    ~tPasted()
    {
        for (CGroup* group : groups) {
            delete group;
        }
        UElementVectorOperations::DeleteItemVector(elements);
    }
    bool TakeElements(std::string_view bytes)
    {
        return UElementVectorOperations::ElementVectorFromRawMem(elements, Copy(bytes).get(), bytes.size());
    }
    bool TakeGroups(std::string_view bytes)
    {
        return UGroups::GroupVectorFromRawMem(&manager, groups, elements, Copy(bytes).get(), bytes.size());
    }
    std::string CopyElements()
    {
        unsigned long size = 0;
        const std::unique_ptr<Byte[]> block(UElementVectorOperations::ElementVectorToRawMem(elements, size));
        return Text(block.get(), size);
    }
    std::string CopyGroups() const
    {
        size_t size = 0;
        const std::unique_ptr<Byte[]> block(UGroups::GroupVectorToRawMem(groups, elements, size));
        return Text(block.get(), size);
    }

    CGroupsManager manager;
    std::vector<CCompositeGeometry*> elements;
    std::vector<CGroup*> groups;
};
} // namespace

std::string Properties::Clipboard(std::string_view bytes)
{
    if (bytes.size() < 2) {
        return {};
    }
    const CBoundLayout layout; // whose layers the elements may name
    const size_t length = static_cast<Byte>(bytes[0]) | static_cast<size_t>(static_cast<Byte>(bytes[1])) << 8;
    bytes.remove_prefix(2);
    tPasted pasted;
    const bool taken = pasted.TakeElements(bytes.substr(0, length));
    if (!taken && !pasted.elements.empty()) {
        return "refused, but some were taken";
    }
    const bool hasGroups = bytes.size() > length && pasted.TakeGroups(bytes.substr(length));
    tPasted again;
    if (!again.TakeElements(pasted.CopyElements()) || again.CopyElements() != pasted.CopyElements()) {
        return "elements copied, but not pasted again as they were";
    }
    if (hasGroups && (!again.TakeGroups(pasted.CopyGroups()) || again.CopyGroups() != pasted.CopyGroups())) {
        return "groups copied, but not pasted again as they were";
    }
    return {};
}
