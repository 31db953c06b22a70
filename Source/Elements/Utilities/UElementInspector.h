// What kind of element one has before oneself.
#pragma once

class CCompositeGeometry;

/// Classifies elements, mostly by their first component. What a polygon once was drawn as is not known any more, so
/// polygon, line and rectangle are one kind; each of these three tests warns whenever it says yes.
class UElementInspector {
public:
    UElementInspector() = delete;

    /// Belongs to no track library.
    static bool IsGenericElement(const CCompositeGeometry* element);
    static bool IsFlexElement(const CCompositeGeometry* element);
    static bool IsGenericFlex(const CCompositeGeometry* element);
    static bool IsTextElement(const CCompositeGeometry* element);
    static bool IsCircleElement(const CCompositeGeometry* element);
    static bool IsPolyElement(const CCompositeGeometry* element);
    static bool IsLineElement(const CCompositeGeometry* element);
    static bool IsRectElement(const CCompositeGeometry* element);
    /// Has a track component, at any place.
    static bool IsTrackElement(const CCompositeGeometry* element);
    static bool IsSingleTrackElement(const CCompositeGeometry* element);
    static bool IsCurvedTrack(const CCompositeGeometry* element);
    static bool IsStraightTrack(const CCompositeGeometry* element);
    static bool HasPolyHandles(const CCompositeGeometry* element);
    static bool IsAdjustableLineWidth(const CCompositeGeometry* element);
    static bool IsEditableElement(const CCompositeGeometry* element);
    /// Has a flexible track at any place.
    static bool HasFlexComponent(const CCompositeGeometry* element);
    /// At least one joint is not free.
    static bool IsConnected(CCompositeGeometry* element);
    /// On no layer that is hidden or locked.
    static bool IsSelectable(const CCompositeGeometry* element);
};
