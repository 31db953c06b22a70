#include "BuildingBlocks/CDrawingOptions.h"

#include "BuildingBlocks/CCompositeGeometry.h"

CDrawingOptions::CDrawingOptions()
{
    mFirstColor.SetFromWhiteValue(0.75, 1.0);
    mSecondColor.SetFromWhiteValue(0.0, 1.0);
    mThirdColor.SetFromRedGreenBlueAlphaComponents(1.0, 0.0, 0.0, 1.0);
}

CDrawingOptions::CDrawingOptions(int trackStyle, bool fill) : CDrawingOptions()
{
    mTrackStyle = trackStyle;
    mFill = fill;
}

CDrawingOptions::CDrawingOptions(const CCompositeGeometry* element, int trackStyle)
    : CDrawingOptions(trackStyle, element->GetFillMode())
{
    mSelected = element->IsSelected();
    const RGBColor& color = element->GetFillColor();
    mFirstColor.SetFromRGBColorValues(color.red, color.green, color.blue);
}
