#include "Elements/Utilities/UElementVectorOperations.h"

#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Elements/Utilities/UElementDescriptionGenerator.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementNameGenerator.h"
#include "KVUNum/KVUNum.h"
#include "KVURawMem/KVURawMem.h"
#include "Preferences/CVLPreferences.h"
#include "UnitLength/URailConstants.h"
#include "UnitLength/UUnits.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace {
using tElements = UElementVectorOperations::tElements;

/// Positions closer than this in x and in y are the same place, mm.
constexpr double kSamePlace = 0.001;
/// The scale that the search for the narrowest gauge starts with.
constexpr int kFirstScale = 22;

template <typename tPredicate>
void Filter(const tElements& elements, tElements& out, tPredicate fits)
{
    tElements found;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (fits(element)) {
            found.push_back(element);
        }
    }
    out.swap(found);
}

bool HasLowerZOrder(const CCompositeGeometry* a, const CCompositeGeometry* b)
{
    return a->GetZOrder() < b->GetZOrder();
}
} // namespace

UElementVectorOperations::Byte* UElementVectorOperations::ElementVectorToRawMem(tElements& elements,
                                                                                unsigned long& size)
{
    size_t needed = sizeof(int);
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        needed += static_cast<size_t>(element->GetParameterRawSize());
    }
    Byte* block = new (std::nothrow) Byte[needed];
    CErr::CheckNull(
        block, "static Byte *UElementVectorOperations::ElementVectorToRawMem(vector<CCompositeGeometry *> &, size_t &)",
        "Failed to alloc memory for clipboard data");
    void* cursor = KVURawMem::AppendDataToRawMem(static_cast<void*>(block), static_cast<int>(elements.size()));
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        cursor = element->GetParameterAsRaw(cursor);
    }
    size = needed;
    return block;
}

bool UElementVectorOperations::ElementVectorFromRawMem(tElements& elements, Byte* block)
{
    int count = 0;
    KVURawMem::FetchDataFromRawMem(static_cast<void*>(block), count);
    Byte* cursor = block + sizeof count;
    for (int i = 0; i < count; ++i) {
        // Measured in the block: an element takes no more than so many components, whatever its record holds.
        size_t length = 0;
        const bool isWhole = CCompositeGeometry::MeasureRawRecord(cursor, SIZE_MAX, length);
        CCompositeGeometry* element = new (std::nothrow) CCompositeGeometry(static_cast<void*>(cursor));
        if (element != nullptr) {
            elements.push_back(element);
        }
        if (element == nullptr || !isWhole) { // where the next one begins is unknown
            ULog::Warn("%s: Failed to create instance from memory",
                       "static bool UElementVectorOperations::ElementVectorFromRawMem(vector<CCompositeGeometry *> &, "
                       "Byte *)");
            return false;
        }
        cursor += length;
    }
    return true;
}

bool UElementVectorOperations::ElementVectorFromRawMem(tElements& elements, Byte* block, size_t size)
{
    int count = 0;
    if (size < sizeof count) {
        return false;
    }
    KVURawMem::FetchDataFromRawMem(static_cast<void*>(block), count);
    if (count < 0) {
        return false;
    }
    size_t position = sizeof count;
    for (int i = 0; i < count; ++i) {
        size_t length = 0;
        if (!CCompositeGeometry::MeasureRawRecord(block + position, size - position, length)) {
            return false;
        }
        position += length;
    }
    return ElementVectorFromRawMem(elements, block);
}

void UElementVectorOperations::GetAllTextElements(const tElements& elements, tElements& out)
{
    Filter(elements, out, &UElementInspector::IsTextElement);
}

void UElementVectorOperations::GetAllGenericFlextracks(const tElements& elements, tElements& out)
{
    Filter(elements, out, &UElementInspector::IsGenericFlex);
}

void UElementVectorOperations::GetAllElementsForLayer(const tElements& elements, const CLayer* layer, tElements& out)
{
    Filter(elements, out, [layer](const CCompositeGeometry* element) { return element->GetLayer() == layer; });
}

CCompositeGeometry* UElementVectorOperations::FindElement(const tElements& elements, const char* name)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (std::strcmp(element->GetName(), name) == 0) {
            return element;
        }
    }
    return nullptr;
}

void UElementVectorOperations::DeleteItemVector(tElements& elements)
{
    while (!elements.empty()) {
        CCompositeGeometry* element = elements.back();
        CErr::CheckNull(element,
                        "static void UElementVectorOperations::DeleteItemVector(vector<CCompositeGeometry *> &)",
                        "Invalid CCompositeGeometry items");
        elements.pop_back();
        delete element;
    }
}

void UElementVectorOperations::CloneItemVector(const tElements& elements, tElements& out)
{
    out.reserve(out.size() + elements.size());
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        out.push_back(new CCompositeGeometry(element));
    }
}

void UElementVectorOperations::MoveItemVec(const tElements& elements, double dx, double dy)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        element->MoveBy(dx, dy);
    }
}

void UElementVectorOperations::RotateItemVectorBy(const tElements& elements, const CPoint& centre, double angle)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        element->RotateBy(centre, angle);
    }
}

void UElementVectorOperations::UpdateGenericFlexNameDescription(const tElements& elements)
{
    const int preferred = CVLPreferences::Instance()->mUnits;
    const int unit = preferred >= UUnits::kMillimetre && preferred <= UUnits::kFoot ? preferred : UUnits::kCentimetre;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (!UElementInspector::IsGenericFlex(element)) {
            continue;
        }
        if (const auto* flex = dynamic_cast<CFlexTrackBIG*>(element->GetBIGAtIndex(0))) {
            const double length = flex->GetFlexTrackMaxLength();
            element->SetName(UElementNameGenerator::GetGenericFlexElementName(unit, length));
            element->SetDescription(UElementDescriptionGenerator::GetGenericFlexElementDescription(unit, length));
        }
    }
}

double UElementVectorOperations::GetElementVectorRailLength(const tElements& elements, int)
{
    double length = 0.0;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        length += element->GetTrackLength();
    }
    return length;
}

void UElementVectorOperations::GetElementVectorCostsCurrency(const tElements& elements, int& sum, int& currency)
{
    int64_t total = 0;
    currency = kNoCurrency;
    BOOST_FOREACH(const CCompositeGeometry* element, elements) {
        total += element->GetPrice();
        if (currency == kNoCurrency && UElementInspector::IsTrackElement(element)) {
            currency = element->GetCurrency();
        }
    }
    using tLimits = std::numeric_limits<int>;
    sum = static_cast<int>(std::clamp<int64_t>(total, tLimits::min(), tLimits::max()));
}

int UElementVectorOperations::GetElementVectorSmallestScale(const tElements& elements)
{
    int scale = kFirstScale;
    BOOST_FOREACH(const CCompositeGeometry* element, elements) {
        const int candidate = element->GetModelScale();
        if (candidate != scale && URailConstants::GetModelScaleTW(scale) > URailConstants::GetModelScaleTW(candidate)) {
            scale = candidate;
        }
    }
    return scale;
}

bool UElementVectorOperations::IsLocationUnobstructed(const tElements& elements, const tElements& others)
{
    // Sorted by x so that only neighbours are compared.
    std::vector<const CPoint*> places;
    places.reserve(others.size());
    BOOST_FOREACH(const CCompositeGeometry* other, others) {
        places.push_back(&other->GetPosition());
    }
    std::sort(places.begin(), places.end(), [](const CPoint* a, const CPoint* b) { return a->x < b->x; });
    BOOST_FOREACH(const CCompositeGeometry* element, elements) {
        const CPoint& position = element->GetPosition();
        auto place = std::lower_bound(places.begin(), places.end(), position.x - kSamePlace,
                                      [](const CPoint* candidate, double x) { return candidate->x < x; });
        for (; place != places.end() && (*place)->x <= position.x + kSamePlace; ++place) {
            if (KVUNum::DeltaEquals(position.x, (*place)->x, kSamePlace) &&
                KVUNum::DeltaEquals(position.y, (*place)->y, kSamePlace)) {
                return false;
            }
        }
    }
    return true;
}

int UElementVectorOperations::GetNumberOfJoints(const tElements& elements)
{
    size_t count = 0;
    std::vector<CJoint*> joints;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        element->GetJoints(joints, true, false);
        count += joints.size();
    }
    return static_cast<int>(count);
}

bool UElementVectorOperations::IsAdjustableLineWidth(const tElements& elements)
{
    return !elements.empty() &&
           std::all_of(elements.begin(), elements.end(), &UElementInspector::IsAdjustableLineWidth);
}

void UElementVectorOperations::ApplyTrackbedWidth(const tElements& elements, double width)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        BOOST_FOREACH(CBasicGeometry* component, element->GetComponents()) {
            component->SetTrackbedWidth(width);
        }
    }
}

void UElementVectorOperations::ApplyZOrder(const tElements& elements, const tZOrders& zOrders)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        const auto found = zOrders.find(element);
        if (found != zOrders.end()) {
            element->SetZOrder(found->second);
        }
    }
}

void UElementVectorOperations::StoreElementVectorZOrder(const tElements& elements, tZOrders& zOrders)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        zOrders[element] = element->GetZOrder();
    }
}

CCompositeGeometry* UElementVectorOperations::FindElementWithMinZOrder(const tElements& elements)
{
    const auto found = std::min_element(elements.begin(), elements.end(), &HasLowerZOrder);
    return found == elements.end() ? nullptr : *found;
}

CCompositeGeometry* UElementVectorOperations::FindElementWithMaxZOrder(const tElements& elements)
{
    const auto found = std::max_element(elements.begin(), elements.end(), &HasLowerZOrder);
    return found == elements.end() ? nullptr : *found;
}

void UElementVectorOperations::ResetJointFlags(const tElements& elements)
{
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        BOOST_FOREACH(CBasicGeometry* component, element->GetComponents()) {
            for (int i = 0; i < 2; ++i) {
                if (component->GetJoint(i)->GetFlag() != 0) {
                    component->GetJoint(i)->ClearFlag();
                }
            }
        }
    }
}

void UElementVectorOperations::GetElementVectorBounds(const tElements& elements, DRect& bounds)
{
    CCalcBoundingBox grow(bounds);
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        DRect box = {};
        element->CalcBoundingBox(box);
        const CPoint& position = element->GetPosition();
        grow.Update(box.left + position.x, box.top + position.y);
        grow.Update(box.right + position.x, box.bottom + position.y);
    }
}

void UElementVectorOperations::GetElementVectorCenter(const tElements& elements, CPoint& centre)
{
    if (elements.empty()) {
        return;
    }
    DRect bounds = {};
    GetElementVectorBounds(elements, bounds);
    const CPoint middle = UDRect::Center(bounds);
    centre.SetPos(middle.x, middle.y);
}

double UElementVectorOperations::GetElementVectorMaxZPosition(const tElements& elements)
{
    double highest = elements.empty() ? 0.0 : elements.front()->GetPosition().z;
    BOOST_FOREACH(const CCompositeGeometry* element, elements) {
        highest = std::max(highest, element->GetPosition().z);
    }
    return highest;
}
