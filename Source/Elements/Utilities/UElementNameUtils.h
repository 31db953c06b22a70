// Where the name of an element is shown.
#pragma once

#include "CPoint/CPoint.h"
#include "Platform/Geometry.h"

class CCompositeGeometry;
class CLayout;

/// Places the labels of elements.
class UElementNameUtils {
public:
    UElementNameUtils() = delete;

    /// Left top corner, in the layout, of a label that is centred on the element's bounding box. mm, z 0. A label that
    /// is larger than the box sticks out evenly.
    /// @param labelSize  mm
    static CPoint GetElementNamePosition(CCompositeGeometry* element, CLayout* layout, CGSize labelSize);
};
