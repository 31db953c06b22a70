#include "Elements/Utilities/UElementInspector.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/ULog.h"
#include "Layers/CLayer.h"

#include <boost/foreach.hpp>

#include <vector>

namespace {
/// Type of the first component; 0 without components.
int FirstType(const CCompositeGeometry* element)
{
    const CBasicGeometry* first = element->GetBIGAtIndex(0);
    return first != nullptr ? first->GetType() : 0;
}

bool IsPolygon(const CCompositeGeometry* element, const char* function)
{
    if (!IsPolygonType(FirstType(element))) {
        return false;
    }
    ULog::Warn("%s: Need replacement for SetPolySubType!", function);
    return true;
}

bool IsSingleTrackOf(const CCompositeGeometry* element, int type)
{
    return UElementInspector::IsSingleTrackElement(element) && element->GetFirstTrackBIG()->GetType() == type;
}
} // namespace

bool UElementInspector::IsGenericElement(const CCompositeGeometry* element)
{
    return !element->HasRailSetName();
}

bool UElementInspector::IsFlexElement(const CCompositeGeometry* element)
{
    return FirstType(element) == kFlexTrackType;
}

bool UElementInspector::IsGenericFlex(const CCompositeGeometry* element)
{
    return IsGenericElement(element) && IsFlexElement(element);
}

bool UElementInspector::IsTextElement(const CCompositeGeometry* element)
{
    return FirstType(element) == kTextType;
}

bool UElementInspector::IsCircleElement(const CCompositeGeometry* element)
{
    return FirstType(element) == kOvalType;
}

bool UElementInspector::IsPolyElement(const CCompositeGeometry* element)
{
    return IsPolygon(element, "static bool UElementInspector::IsPolyElement(const CCompositeGeometry *)");
}

bool UElementInspector::IsLineElement(const CCompositeGeometry* element)
{
    return IsPolygon(element, "static bool UElementInspector::IsLineElement(const CCompositeGeometry *)");
}

bool UElementInspector::IsRectElement(const CCompositeGeometry* element)
{
    return IsPolygon(element, "static bool UElementInspector::IsRectElement(const CCompositeGeometry *)");
}

bool UElementInspector::IsTrackElement(const CCompositeGeometry* element)
{
    return element->GetFirstTrackBIG() != nullptr;
}

bool UElementInspector::IsSingleTrackElement(const CCompositeGeometry* element)
{
    return element->GetNumberOfTrackBIGs() == 1;
}

bool UElementInspector::IsCurvedTrack(const CCompositeGeometry* element)
{
    return IsSingleTrackOf(element, kCurveType);
}

bool UElementInspector::IsStraightTrack(const CCompositeGeometry* element)
{
    return IsSingleTrackOf(element, kStraightType);
}

bool UElementInspector::HasPolyHandles(const CCompositeGeometry* element)
{
    return IsFlexElement(element) || ((IsPolyElement(element) || IsLineElement(element)) && IsGenericElement(element));
}

bool UElementInspector::IsAdjustableLineWidth(const CCompositeGeometry* element)
{
    return IsGenericElement(element) && !IsFlexElement(element) &&
           (IsPolyElement(element) || IsLineElement(element) || IsRectElement(element) || IsCircleElement(element));
}

bool UElementInspector::IsEditableElement(const CCompositeGeometry* element)
{
    return IsFlexElement(element) ||
           (IsGenericElement(element) && (IsTextElement(element) || IsCircleElement(element) ||
                                          IsRectElement(element) || IsPolyElement(element) || IsLineElement(element)));
}

bool UElementInspector::HasFlexComponent(const CCompositeGeometry* element)
{
    BOOST_REVERSE_FOREACH(const CBasicGeometry* component, element->GetComponents()) {
        if (component->GetType() == kFlexTrackType) {
            return true;
        }
    }
    return false;
}

bool UElementInspector::IsConnected(CCompositeGeometry* element)
{
    std::vector<CJoint*> joints;
    element->GetJoints(joints, true, false);
    BOOST_FOREACH(const CJoint* joint, joints) {
        if (!joint->IsActive()) {
            return true;
        }
    }
    return false;
}

bool UElementInspector::IsSelectable(const CCompositeGeometry* element)
{
    const CLayer* layer = element->GetLayer();
    return layer == nullptr || (layer->GetIsVisible() && !layer->GetLocked());
}
