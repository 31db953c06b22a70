#include "Elements/Utilities/UElementNameUtils.h"

#include "BuildingBlocks/CCompositeGeometry.h"

CPoint UElementNameUtils::GetElementNamePosition(CCompositeGeometry* element, CLayout*, CGSize labelSize)
{
    DRect box = {};
    element->CalcBoundingBox(box);
    const CPoint centre = UDRect::Center(box);
    const CPoint& position = element->GetPosition();
    return {position.x + centre.x - labelSize.width / 2.0, position.y + centre.y - labelSize.height / 2.0, 0.0};
}
