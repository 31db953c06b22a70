// The size of a text component.
#pragma once

#include "CRect/DRect.h"

#include <string>

class CTextBIG;

class UTextComponentBoundsCalculator {
public:
    /// Points at which a text of no size is measured.
    static constexpr double kDefaultSize = 12.0;

    UTextComponentBoundsCalculator() = delete;

    /// Measures the text in its font, or the system font where that is missing, and gives the upright rectangle around
    /// the measured one from (0, 0) after a turn about (0, 0). Bytes that form no UTF-8 text are taken as Mac OS Roman.
    /// @param bounds  stays when the text cannot be converted
    static void CalcBounds(CTextBIG* text, DRect& bounds, double angleDegrees);

    /// The text's characters in UTF-8, as they are measured and drawn. @return false when it cannot be converted
    static bool GetCharacters(CTextBIG* text, std::string& characters);
};
