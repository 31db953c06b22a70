#include "Elements/Utilities/UElementSelection.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CJoint.h"
#include "CheckError/CErr.h"
#include "Elements/Utilities/CQueryConnectedItems.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementJointQueries.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layers/CLayer.h"
#include "Layouts/Groups/CGroupsManager.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstring>

namespace {
using tElements = UElementSelection::tElements;
using tElementSet = UElementSelection::tElementSet;
using tPredicate = bool (*)(const CCompositeGeometry*);

bool IsSelected(const CCompositeGeometry* element)
{
    return element->IsSelected();
}

void Filter(const tElements& elements, bool selected, tElements& out)
{
    tElements found; // `out` may be `elements`
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (element->IsSelected() == selected) {
            found.push_back(element);
        }
    }
    out.swap(found);
}

/// Selects the selectable elements that fit.
template <typename tFits>
void SelectWhere(const tElements& elements, tFits fits)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (UElementInspector::IsSelectable(element) && fits(element)) {
            element->Select();
        }
    }
}

bool IsGenericGraphic(const CCompositeGeometry* element)
{
    return UElementInspector::IsGenericElement(element) && !UElementInspector::IsFlexElement(element);
}

/// The first test that an element passes, or null.
tPredicate FindKind(const CCompositeGeometry* element)
{
    static constexpr tPredicate kKinds[] = {&UElementInspector::IsPolyElement, &UElementInspector::IsRectElement,
                                            &UElementInspector::IsLineElement, &UElementInspector::IsCircleElement,
                                            &UElementInspector::IsTextElement};
    for (const tPredicate isOfKind : kKinds) {
        if (isOfKind(element)) {
            return isOfKind;
        }
    }
    return nullptr;
}

/// Whether a connected joint leads to an element of the set. `function` reports one that is connected to nothing.
bool LeadsInto(const CJoint* joint, const tElementSet& selection, const char* function)
{
    const CJoint* partner = joint->GetPartner();
    CErr::CheckNull(partner, function, "Joint not connected");
    return selection.count(partner->GetOwner()) != 0;
}
} // namespace

CCompositeGeometry* UElementSelection::FindFirstSelectedItem(const tElements& elements)
{
    const auto found = std::find_if(elements.begin(), elements.end(), &IsSelected);
    return found != elements.end() ? *found : nullptr;
}

void UElementSelection::GetSelectedElements(const tElements& elements, tElements& out)
{
    Filter(elements, true, out);
}

void UElementSelection::GetUnselectedElements(const tElements& elements, tElements& out)
{
    Filter(elements, false, out);
}

int UElementSelection::GetNumberOfSelectedItems(const tElements& elements)
{
    return static_cast<int>(std::count_if(elements.begin(), elements.end(), &IsSelected));
}

void UElementSelection::UnselectAll(const tElements& elements)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        element->Unselect();
    }
}

void UElementSelection::UnselectAllInLayer(const tElements& elements, const CLayer* layer)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (element->GetLayer() == layer) {
            element->Unselect();
        }
    }
}

void UElementSelection::SelectAll(const tElements& elements)
{
    SelectWhere(elements, [](const CCompositeGeometry*) { return true; });
}

void UElementSelection::SelectAllInLayer(const tElements& elements, const CLayer* layer)
{
    SelectWhere(elements, [layer](const CCompositeGeometry* candidate) { return candidate->GetLayer() == layer; });
}

void UElementSelection::SelectAllConnected(const tElements& elements, CCompositeGeometry* element)
{
    if (element == nullptr) {
        element = FindFirstSelectedItem(elements);
    }
    if (element == nullptr) {
        return;
    }
    UnselectAll(elements);
    tElements connected;
    CQueryConnectedItems(element).GetConnectedItems(connected);
    SelectAll(connected);
}

void UElementSelection::InvertSelection(const tElements& elements, int& unselected, int& selected)
{
    unselected = 0;
    selected = 0;
    tElements toUnselect;
    tElements toSelect;
    GetSelectedElements(elements, toUnselect);
    GetUnselectedElements(elements, toSelect);
    BOOST_FOREACH(CCompositeGeometry* element, toUnselect) {
        element->Unselect();
        ++unselected;
    }
    BOOST_FOREACH(CCompositeGeometry* element, toSelect) {
        if (UElementInspector::IsSelectable(element)) {
            element->Select();
            ++selected;
        }
    }
}

void UElementSelection::SelectSameColor(const CCompositeGeometry* element, const tElements& elements)
{
    SelectWhere(elements, [element](const CCompositeGeometry* candidate) {
        return std::memcmp(&candidate->GetFillColor(), &element->GetFillColor(), sizeof(RGBColor)) == 0;
    });
}

void UElementSelection::SelectSimilarManufacturer(const CCompositeGeometry* element, const tElements& elements)
{
    SelectWhere(elements, [element](const CCompositeGeometry* candidate) {
        return std::strcmp(candidate->GetManufacturer(), element->GetManufacturer()) == 0;
    });
}

void UElementSelection::SelectSimilarRailset(const CCompositeGeometry* element, const tElements& elements)
{
    if (element->HasRailSetName()) {
        SelectWhere(elements, [element](const CCompositeGeometry* candidate) {
            return std::strcmp(candidate->GetRailSetName(), element->GetRailSetName()) == 0;
        });
    }
}

void UElementSelection::SelectSimilarScale(const CCompositeGeometry* element, const tElements& elements)
{
    if (UElementInspector::IsTrackElement(element)) {
        SelectWhere(elements, [element](const CCompositeGeometry* candidate) {
            return UElementInspector::IsTrackElement(candidate) &&
                   candidate->GetModelScale() == element->GetModelScale();
        });
    }
}

void UElementSelection::SelectSimilarNames(const CCompositeGeometry* element, const tElements& elements)
{
    SelectWhere(elements, [element](const CCompositeGeometry* candidate) {
        return std::strcmp(candidate->GetName(), element->GetName()) == 0;
    });
}

void UElementSelection::SelectSimilarDynTypes(const CCompositeGeometry* element, const tElements& elements)
{
    if (const tPredicate isOfKind = FindKind(element)) {
        SelectWhere(elements, [isOfKind](const CCompositeGeometry* candidate) {
            return IsGenericGraphic(candidate) && isOfKind(candidate);
        });
    }
}

void UElementSelection::SelectSimilar(const CCompositeGeometry* element, const tElements& elements)
{
    if (IsGenericGraphic(element)) {
        SelectSimilarDynTypes(element, elements);
    } else {
        SelectSimilarNames(element, elements);
    }
}

void UElementSelection::SelectTextElements(const tElements& elements)
{
    tElements texts;
    UElementVectorOperations::GetAllTextElements(elements, texts);
    SelectAll(texts);
}

void UElementSelection::SelectTrackElements(const tElements& elements)
{
    SelectWhere(elements, &UElementInspector::IsTrackElement);
}

bool UElementSelection::SelectionConsistsOfSingleLayer(const tElements& elements)
{
    const CCompositeGeometry* first = FindFirstSelectedItem(elements);
    if (first == nullptr) {
        return false;
    }
    const CLayer* layer = first->GetLayer();
    CErr::CheckNull(layer,
                    "static bool UElementSelection::SelectionConsistsOfSingleLayer(vector<CCompositeGeometry *> &)",
                    "Failed to retrieve layer from element");
    return std::all_of(elements.begin(), elements.end(), [layer](const CCompositeGeometry* element) {
        return !element->IsSelected() || element->GetLayer() == layer;
    });
}

bool UElementSelection::SelectionConsistsOfSingleGroup(const tElements& elements, const CGroupsManager* groups)
{
    CCompositeGeometry* first = FindFirstSelectedItem(elements);
    const CGroup* group = first != nullptr ? groups->GetGroupForGeometry(first) : nullptr;
    return group != nullptr &&
           std::all_of(elements.begin(), elements.end(), [groups, group](CCompositeGeometry* element) {
               return !element->IsSelected() || groups->GetGroupForGeometry(element) == group;
           });
}

bool UElementSelection::GetFirstLastTrackFromSection(const tElements& elements, CCompositeGeometry** first,
                                                     CCompositeGeometry** last, CJoint** firstJoint, CJoint** lastJoint)
{
    constexpr char kFunction[] =
        "static bool UElementSelection::GetFirstLastTrackFromSection(vector<CCompositeGeometry *> &, "
        "CCompositeGeometry **, CCompositeGeometry **, CJoint **, CJoint **)";
    if (elements.size() < 2) {
        return true;
    }
    CErr::CheckNull(first, kFunction, "Invalid handle to track A");
    CErr::CheckNull(last, kFunction, "Invalid handle to track B");
    CJoint* ignored = nullptr;
    CJoint*& firstOut = firstJoint != nullptr ? *firstJoint : ignored;
    CJoint*& lastOut = lastJoint != nullptr ? *lastJoint : ignored;
    *first = nullptr;
    *last = nullptr;
    firstOut = nullptr;
    lastOut = nullptr;
    const tElementSet section(elements.begin(), elements.end());
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        CJoint* joint = nullptr;
        if (ConnectedOnlyWithinSelection(element, &joint, section)) {
            continue;
        }
        if (*first == nullptr) {
            *first = element;
            firstOut = joint;
        } else {
            *last = element;
            lastOut = joint;
        }
    }
    return *first != nullptr && *last != nullptr;
}

bool UElementSelection::ConnectedOnlyWithinSelection(CCompositeGeometry* element, CJoint** joint,
                                                     const tElementSet& selection)
{
    constexpr char kFunction[] = "static bool UElementSelection::ConnectedOnlyWithinSelection(CCompositeGeometry *, "
                                 "CJoint **, set<CCompositeGeometry *> &)";
    std::vector<CJoint*> joints;
    element->GetJoints(joints, true, false);
    BOOST_FOREACH(CJoint* candidate, joints) {
        if (candidate->IsActive() || !LeadsInto(candidate, selection, kFunction)) {
            if (joint != nullptr) {
                *joint = candidate;
            }
            return false;
        }
    }
    return true;
}

bool UElementSelection::IsSelectionContiguous(const tElements& elements)
{
    if (elements.size() < 2) {
        return false;
    }
    CCompositeGeometry* first = nullptr;
    CCompositeGeometry* last = nullptr;
    CJoint* firstJoint = nullptr;
    GetFirstLastTrackFromSection(elements, &first, &last, &firstJoint); // a section may have a single end
    if (first == nullptr || firstJoint == nullptr) {
        return false;
    }
    tElementSet unvisited(elements.begin(), elements.end());
    unvisited.erase(first);
    const CJoint* joint = firstJoint;
    while (!unvisited.empty()) {
        joint = UElementJointQueries::GetOppositeJoint(joint);
        if (joint == nullptr || joint->GetPartner() == nullptr) {
            return false;
        }
        joint = joint->GetPartner();
        if (unvisited.erase(joint->GetOwner()) == 0) { // also when the owner is unknown
            return false;
        }
    }
    return true;
}

bool UElementSelection::IsTrackDirectlyConnectedToAnyElementInSelection(CCompositeGeometry* element,
                                                                        const tElementSet& selection)
{
    static constexpr char kFunction[] =
        "static bool UElementSelection::IsTrackDirectlyConnectedToAnyElementInSelection("
        "CCompositeGeometry *, set<CCompositeGeometry *> &)";
    std::vector<CJoint*> joints;
    UElementJointQueries::GetConnectedJoints(element, joints);
    return std::any_of(joints.begin(), joints.end(),
                       [&selection](const CJoint* joint) { return LeadsInto(joint, selection, kFunction); });
}
