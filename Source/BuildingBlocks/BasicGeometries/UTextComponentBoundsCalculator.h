// The size of a text component.
#pragma once

#include "CRect/DRect.h"

class CTextBIG;

class UTextComponentBoundsCalculator {
public:
    UTextComponentBoundsCalculator() = delete;

    /// Measures the component's text in its font and size: see UTextMeasurer::CalcBounds.
    /// @param bounds  stays when the text cannot be converted
    static void CalcBounds(CTextBIG* text, DRect& bounds, double angleDegrees);
};
