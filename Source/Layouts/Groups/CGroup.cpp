#include "Layouts/Groups/CGroup.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/ULog.h"
#include "Layouts/Groups/CGroupsManager.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <iterator>

CGroup::CGroup(CGroupsManager* manager) : mManager(manager) {}

CGroup::~CGroup()
{
    ClearParentGroup();
    while (!mChildren.empty()) {
        mChildren.front()->ClearParentGroup();
    }
    mManager->ForgetGroup(this);
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
    sub->SetParentGroup(this);
    if (sub->mParent == this && !sub->mIsListed) {
        sub->mIsListed = true;
        mChildren.splice(mChildren.end(), mChildren, sub->mPlace);
        mMembersAreCurrent = false;
    }
}

const std::vector<CGroup*>& CGroup::GetMemberGroupsVec() const
{
    if (!mMembersAreCurrent) {
        mMembers.clear();
        std::copy_if(mChildren.begin(), mChildren.end(), std::back_inserter(mMembers),
                     [](const CGroup* child) { return child->mIsListed; });
        mMembersAreCurrent = true;
    }
    return mMembers;
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
        } else if (root != this) { // into which an element before it may have brought it
            AddMember(root);
        }
    }
}

void CGroup::RemoveMember(CGroup* sub)
{
    if (sub->mParent == this) {
        sub->mIsListed = false;
        mMembersAreCurrent = false;
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
    while (sub->mIsListed && sub->mParent != this) {
        sub = sub->mParent;
    }
    return sub->mIsListed;
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
    CGroup* root = parent->GetRootGroup();
    if (root == this) { // what has no parent contains those groups of which it is the root
        ULog::Warn("%s: Group contains its parent", kFunction);
        return;
    }
    mParent = parent;
    mPlace = parent->mChildren.insert(parent->mChildren.end(), this);
    RememberRoot(root);
}

void CGroup::ClearParentGroup()
{
    if (mParent != nullptr) {
        mParent->mChildren.erase(mPlace);
        mParent->mMembersAreCurrent = false;
        mParent = nullptr;
        mIsListed = false;
        ++sNumCuts;
    }
}

CGroup* CGroup::GetRootGroup()
{
    CGroup* root = this;
    while (root->mParent != nullptr) {
        root = root->GetKnownAncestor();
    }
    for (CGroup* group = this; group != root;) {
        CGroup* next = group->GetKnownAncestor();
        group->RememberRoot(root);
        group = next;
    }
    return root;
}

void CGroup::RememberRoot(CGroup* root)
{
    mAncestor = root;
    mNumCutsThen = sNumCuts;
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
