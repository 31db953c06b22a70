#include "Layouts/Groups/CGroup.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/ULog.h"
#include "Layouts/Groups/CGroupsManager.h"

#include <boost/foreach.hpp>

#include <algorithm>

CGroup::CGroup(CGroupsManager* manager) : mManager(manager) {}

CGroup::~CGroup()
{
    BOOST_FOREACH(CCompositeGeometry* element, mItems) {
        if (mManager->IsInGroup(element)) { // the element itself may be gone by now
            mManager->Ungroup(element);
        }
    }
    if (mHolder != nullptr) {
        mHolder->Detach(this);
    }
    for (CGroup* sub : GetMemberGroupsVec()) {
        sub->mHolder = nullptr;
        sub->ClearParentGroup();
    }
    mManager->RemoveGroup(this);
}

void CGroup::AddMember(CCompositeGeometry* element)
{
    if (mManager->IsInGroup(element)) {
        ULog::Warn("%s: Inconsistency detected - element %s already in group",
                   "void CGroup::AddMember(CCompositeGeometry *)", element->GetName());
        return;
    }
    mItems.push_back(element);
    mManager->Group(element, this);
}

void CGroup::AddMember(CGroup* sub)
{
    if (sub == this || IsMember(sub)) {
        return;
    }
    if (sub->IsMember(this)) {
        ULog::Warn("%s: Group contains the group it should become a member of", "void CGroup::AddMember(CGroup *)");
        return;
    }
    if (sub->mHolder != nullptr) {
        ULog::Warn("%s: Parent group already assigned!", "void CGroup::AddMember(CGroup *)");
        return;
    }
    Attach(sub);
}

void CGroup::Attach(CGroup* sub)
{
    sub->mHolder = this;
    sub->mIndexInHolder = mGroups.size();
    mGroups.push_back(sub);
    if (sub->mParent == nullptr) {
        sub->mParent = this;
    } else if (sub->mParent != this) {
        ULog::Warn("%s: Parent group already assigned!", "void CGroup::SetParentGroup(CGroup *)");
    }
}

void CGroup::Detach(CGroup* sub)
{
    mGroups[sub->mIndexInHolder] = nullptr;
    sub->mHolder = nullptr;
    ++mNumRemoved;
    if (mNumRemoved > mGroups.size() / 2) {
        Compact();
    }
}

void CGroup::Compact() const
{
    size_t kept = 0;
    for (CGroup* sub : mGroups) {
        if (sub != nullptr) {
            sub->mIndexInHolder = kept;
            mGroups[kept++] = sub;
        }
    }
    mGroups.resize(kept);
    mNumRemoved = 0;
}

const std::vector<CGroup*>& CGroup::GetMemberGroupsVec() const
{
    if (mNumRemoved > 0) {
        Compact();
    }
    return mGroups;
}

void CGroup::AddMembers(const std::vector<CCompositeGeometry*>& elements)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (!mManager->IsInGroup(element)) {
            AddMember(element);
            continue;
        }
        CGroup* root = mManager->GetRootGroup(element);
        if (root == nullptr) {
            ULog::Warn("%s: Inconsistency detected - no super group found for %s",
                       "void CGroup::AddMembers(vector<CCompositeGeometry *> &)", element->GetName());
        } else {
            AddMember(root);
        }
    }
}

void CGroup::RemoveMember(CGroup* sub)
{
    if (sub->mHolder == this) {
        Detach(sub);
    }
}

void CGroup::RemoveMember(CCompositeGeometry* element)
{
    const auto found = std::find(mItems.begin(), mItems.end(), element);
    if (found != mItems.end()) {
        mItems.erase(found);
    }
}

bool CGroup::IsMember(const CGroup* sub) const
{
    // Up from the one, not down through all members: a group stands in one list only.
    for (const CGroup* holder = sub->mHolder; holder != nullptr; holder = holder->mHolder) {
        if (holder == this) {
            return true;
        }
    }
    return false;
}

void CGroup::SetParentGroup(CGroup* parent)
{
    static constexpr char kFunction[] = "void CGroup::SetParentGroup(CGroup *)";
    if (parent == mParent) {
        return;
    }
    if (mParent != nullptr) {
        ULog::Warn("%s: Parent group already assigned!", kFunction);
        return;
    }
    // A group without members can be nobody's ancestor; deep nests are built from the outside in.
    if (!mGroups.empty() || parent == this) {
        for (const CGroup* ancestor = parent; ancestor != nullptr; ancestor = ancestor->mParent) {
            if (ancestor == this) {
                ULog::Warn("%s: Group contains its parent", kFunction);
                return;
            }
        }
    }
    mParent = parent;
}

CGroup* CGroup::GetRootGroup()
{
    CGroup* root = this;
    while (root->mParent != nullptr) {
        root = root->mParent;
    }
    return root;
}

void CGroup::GetAllMemberItems(std::vector<CCompositeGeometry*>& out) const
{
    std::vector<const CGroup*> pending = {this};
    while (!pending.empty()) {
        const CGroup* group = pending.back();
        pending.pop_back();
        out.insert(out.end(), group->mItems.begin(), group->mItems.end());
        const std::vector<CGroup*>& subs = group->GetMemberGroupsVec();
        pending.insert(pending.end(), subs.rbegin(), subs.rend());
    }
}
