#include "TrackLibraries/CRailSet.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/CErr.h"
#include "KVUDate/KVUDate.h"
#include "KVUStr/KVUStr.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstring>
#include <new>
#include <unordered_map>
#include <unordered_set>

CRailSet::~CRailSet()
{
    BOOST_REVERSE_FOREACH(CCompositeGeometry* element, mElements) {
        CErr::CheckNull(element, "CRailSet::~CRailSet()", "Invalid element reference in railset");
        delete element;
    }
}

CCompositeGeometry* CRailSet::FindGeometry(std::string_view name) const
{
    BOOST_REVERSE_FOREACH(CCompositeGeometry* element, mElements) {
        if (element != nullptr && name == element->GetName()) {
            return element;
        }
    }
    return nullptr;
}

bool CRailSet::Remove(CCompositeGeometry* element)
{
    const auto found = std::find(mElements.begin(), mElements.end(), element);
    if (found == mElements.end()) {
        return false;
    }
    mElements.erase(found);
    return true;
}

void CRailSet::ImportRailset(const CRailSet* other)
{
    const size_t count = other->mElements.size(); // a library may be imported into itself
    for (size_t i = 0; i < count; ++i) {
        CCompositeGeometry* const source = other->mElements[i];
        CCompositeGeometry* const copy = source != nullptr ? new (std::nothrow) CCompositeGeometry(source) : nullptr;
        CErr::CheckNull(copy, "void CRailSet::ImportRailset(const CRailSet *)", "Failed to create copy of element");
        Append(copy);
    }
}

int CRailSet::SynchronizeDescriptions(const CRailSet* other, bool dryRun)
{
    // By name, last element first: two large libraries are not searched once for each article.
    std::unordered_map<std::string_view, std::vector<CCompositeGeometry*>> namesakes;
    BOOST_REVERSE_FOREACH(CCompositeGeometry* element, mElements) {
        if (element != nullptr) {
            namesakes[element->GetName()].push_back(element);
        }
    }
    int count = 0;
    BOOST_FOREACH(const CCompositeGeometry* source, other->mElements) {
        CErr::CheckNull(source, "int CRailSet::SynchronizeDescriptions(const CRailSet *, bool)", "Failed to fetch CIG");
        const auto found = namesakes.find(source->GetName());
        if (found == namesakes.end()) {
            continue;
        }
        const auto differs = [source](const CCompositeGeometry* element) {
            return std::strcmp(element->GetDescription(), source->GetDescription()) != 0;
        };
        const auto target = std::find_if(found->second.begin(), found->second.end(), differs);
        if (target == found->second.end()) {
            continue;
        }
        ++count;
        if (!dryRun) {
            (*target)->SetDescription(source->GetDescription());
        }
    }
    return count;
}

int CRailSet::GetNumberOfSyncableElements(const CRailSet* other) const
{
    std::unordered_set<std::string_view> names;
    BOOST_FOREACH(const CCompositeGeometry* element, mElements) {
        if (element != nullptr) {
            names.insert(element->GetName());
        }
    }
    int count = 0;
    BOOST_FOREACH(const CCompositeGeometry* element, other->mElements) {
        CErr::CheckNull(element, "int CRailSet::GetNumberOfSyncableElements(const CRailSet *)", "Failed to fetch CIG");
        count += names.count(element->GetName()) > 0 ? 1 : 0;
    }
    return count;
}

void CRailSet::SetCreationDate(const char* date)
{
    if (date != nullptr) {
        KVUStr::strncpy(mParameters.creationDate, date, sizeof mParameters.creationDate);
    }
}

void CRailSet::SetCreationDateToNow()
{
    KVUDate::FormatNow(mParameters.creationDate, sizeof mParameters.creationDate);
}
