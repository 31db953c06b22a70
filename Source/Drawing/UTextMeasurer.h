// The size of a text.
#pragma once

#include "CRect/DRect.h"

#include <string>

class UTextMeasurer {
public:
    /// Points at which a text of no size is measured.
    static constexpr double kDefaultSize = 12.0;

    UTextMeasurer() = delete;

    /// Measures a text in a font, or the system font where that is missing, and gives the upright rectangle around the
    /// measured one from (0, 0) after a turn about (0, 0).
    /// @param bounds  stays when the text cannot be converted
    /// @return false then
    static bool CalcBounds(const std::string& text, const std::string& font, int size, DRect& bounds,
                           double angleDegrees);

    /// A text's characters in UTF-8, as they are measured and drawn. Bytes that form no UTF-8 text are taken as Mac OS
    /// Roman. @return false when it cannot be converted
    static bool GetCharacters(const std::string& text, std::string& characters);
};
