#include "BuildingBlocks/BasicGeometries/UTextComponentBoundsCalculator.h"

#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "CheckError/ULog.h"
#include "Drawing/UTextMeasurer.h"

void UTextComponentBoundsCalculator::CalcBounds(CTextBIG* text, DRect& bounds, double angleDegrees)
{
    const std::string& characters = text->GetTextReference();
    if (!UTextMeasurer::CalcBounds(characters, text->GetFontName(), text->GetTextSize(), bounds, angleDegrees)) {
        ULog::Debug("%s: Failed to create string object for '%s'",
                    "static void UTextComponentBoundsCalculator::CalcBounds(CTextBIG *, DRect &, double)",
                    characters.c_str());
    }
}
