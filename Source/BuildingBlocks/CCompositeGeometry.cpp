#include "BuildingBlocks/CCompositeGeometry.h"

#include "Bounds.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "KVUStr/KVUStr.h"

#include <boost/foreach.hpp>

#include <cstring>
#include <utility>

uint32_t CCompositeGeometry::sNextUniqueID = 1;

namespace {
/// Components of an unfilled element are drawn in this grey.
constexpr unsigned short kUnfilledGrey = 0xFF00;

template <size_t kSize>
void SetText(char (&field)[kSize], const char* text)
{
    if (text != nullptr) {
        KVUStr::strncpy(field, text, kSize);
    }
}
} // namespace

CCompositeGeometry::CCompositeGeometry()
{
    mLayout.uniqueID = sNextUniqueID++;
    mLayout.zOrder = static_cast<int>(mLayout.uniqueID);
}

CCompositeGeometry::CCompositeGeometry(CCompositeGeometry* source) : CCompositeGeometry()
{
    BOOST_FOREACH(CBasicGeometry* component, source->mComponents) {
        const bool isKnown = UComponentKinds::Find(component->GetType()) != nullptr;
        std::unique_ptr<CBasicGeometry> copy = isKnown ? component->Clone() : nullptr;
        if (!copy) {
            ULog::Warn("%s: Constructor failed to create element: Unknown type %d requested",
                       "CCompositeGeometry::CCompositeGeometry(CCompositeGeometry *)", component->GetType());
            return;
        }
        AppendOrDrop(std::move(copy));
    }
    mLibrary = source->mLibrary;
    const uint32_t uniqueID = mLayout.uniqueID;
    mLayout = source->mLayout;
    mLayout.uniqueID = uniqueID;
}

CCompositeGeometry::~CCompositeGeometry()
{
    BOOST_REVERSE_FOREACH(CBasicGeometry* component, mComponents) {
        delete component;
    }
}

bool CCompositeGeometry::Equals(const CCompositeGeometry* other) const
{
    return std::strcmp(GetName(), other->GetName()) == 0 && std::strcmp(GetRailSetName(), other->GetRailSetName()) == 0;
}

void CCompositeGeometry::Adopt(CBasicGeometry* big)
{
    mComponents.push_back(big);
    big->SetJointOwner(this);
}

void CCompositeGeometry::AppendBIG(CBasicGeometry* big)
{
    CErr::CheckNull(big, "void CCompositeGeometry::AppendBIG(CBasicGeometry *)", "No CBasicGeometry object specified");
    if (mComponents.size() >= Bounds::kMostComponents) {
        return;
    }
    if (!mComponents.empty()) {
        big->SetMidRailFlag(mComponents.front()->GetMidRailFlag());
    }
    Adopt(big);
}

void CCompositeGeometry::AppendOrDrop(std::unique_ptr<CBasicGeometry> big)
{
    if (mComponents.size() < Bounds::kMostComponents) {
        AppendBIG(big.release());
    }
}

CBasicGeometry* CCompositeGeometry::GetBIGAtIndex(short index) const
{
    return index >= 0 && static_cast<size_t>(index) < mComponents.size() ? mComponents[static_cast<size_t>(index)]
                                                                         : nullptr;
}

int CCompositeGeometry::GetIndexOfBIG(CBasicGeometry* big) const
{
    for (size_t i = mComponents.size(); i-- > 0;) {
        if (mComponents[i] == big) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void CCompositeGeometry::DeleteBIG(int index)
{
    if (index >= 0 && static_cast<size_t>(index) < mComponents.size()) {
        mComponents[static_cast<size_t>(index)]->SetJointOwner(nullptr);
        mComponents.erase(mComponents.begin() + index);
    }
}

void CCompositeGeometry::ReplaceBIG(int index, CBasicGeometry* big)
{
    DeleteBIG(index);
    if (index >= 0 && static_cast<size_t>(index) <= mComponents.size()) {
        mComponents.insert(mComponents.begin() + index, big);
        big->SetJointOwner(this);
    }
}

int CCompositeGeometry::GetNumberOfTrackBIGs() const
{
    int count = 0;
    BOOST_FOREACH(const CBasicGeometry* component, mComponents) {
        count += IsTrackType(component->GetType()) ? 1 : 0;
    }
    return count;
}

CBasicGeometry* CCompositeGeometry::GetFirstTrackBIG() const
{
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        if (IsTrackType(component->GetType())) {
            return component;
        }
    }
    return nullptr;
}

void CCompositeGeometry::GetJoints(std::vector<CJoint*>& joints, bool includeConnected, bool recalculate)
{
    joints.clear();
    std::vector<CJoint*> pair;
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        CErr::CheckNull(component, "void CCompositeGeometry::GetJoints(vector<CJoint *> &, bool, bool)",
                        "Invalid CBasicGeometry reference");
        component->GetJoints(mLayout.position, mLayout.angle, mLayout.grade, pair, recalculate);
        for (short i = 0; i < 2; ++i) {
            CJoint* joint = pair[static_cast<size_t>(i)];
            if (component->IsJointAllowed(i) && (includeConnected || joint->IsActive())) {
                joints.push_back(joint);
            }
        }
    }
}

void CCompositeGeometry::SetMidRailFlag(int flag)
{
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        component->SetMidRailFlag(flag);
    }
}

int CCompositeGeometry::GetMidRailFlag() const
{
    return mComponents.empty() ? 0 : mComponents.front()->GetMidRailFlag();
}

void CCompositeGeometry::SetLineThickness(int thickness)
{
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        component->SetLineThickness(thickness);
    }
}

int CCompositeGeometry::GetLineThickness() const
{
    int thickness = 0;
    BOOST_FOREACH(const CBasicGeometry* component, mComponents) {
        thickness = component->GetLineThickness();
        if (thickness > 0) {
            break;
        }
    }
    return thickness;
}

void CCompositeGeometry::SetFillMode(bool on)
{
    if (!on) {
        mLayout.fillColor = {kUnfilledGrey, kUnfilledGrey, kUnfilledGrey};
    }
    mLayout.fillMode = on;
}

double CCompositeGeometry::GetTrackLength()
{
    double length = 0.0;
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        length += component->GetTrackLength();
    }
    return length;
}

void CCompositeGeometry::SetName(const char* name)
{
    SetText(mLibrary.name, name);
}

void CCompositeGeometry::SetDescription(const char* description)
{
    SetText(mLibrary.description, description);
}

void CCompositeGeometry::SetManufacturer(const char* manufacturer)
{
    SetText(mLibrary.manufacturer, manufacturer);
}

void CCompositeGeometry::SetRailSetName(const char* name)
{
    SetText(mLibrary.railSetName, name);
}

void CCompositeGeometry::SetPrefix(const char* prefix)
{
    SetText(mLibrary.prefix, prefix);
}
