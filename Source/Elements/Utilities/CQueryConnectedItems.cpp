#include "Elements/Utilities/CQueryConnectedItems.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CJoint.h"
#include "CheckError/CErr.h"
#include "Elements/Utilities/UElementJointQueries.h"

#include <algorithm>

void CQueryConnectedItems::FindAllConnectedItems(std::vector<CCompositeGeometry*>& out, CCompositeGeometry* item)
{
    // Connected joints still to be followed, the next one last: a layout may hang together in one long chain, for which
    // a call per element has not stack enough.
    std::vector<CJoint*> pending;
    const auto visit = [&](CCompositeGeometry* element) {
        out.push_back(element);
        mVisited.insert(element);
        const size_t first = pending.size();
        UElementJointQueries::GetConnectedJoints(element, pending);
        std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(first), pending.end());
    };
    visit(item);
    while (!pending.empty()) {
        const CJoint* partner = pending.back()->GetPartner();
        pending.pop_back();
        CCompositeGeometry* neighbour = partner != nullptr ? partner->GetOwner() : nullptr;
        CErr::CheckNull(neighbour,
                        "void CQueryConnectedItems::FindAllConnectedItems(vector<CCompositeGeometry *> &, "
                        "CCompositeGeometry *)",
                        "No element connected at current joint");
        if (mVisited.count(neighbour) == 0) {
            visit(neighbour);
        }
    }
}
