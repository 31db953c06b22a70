#include "Drawing/UTextComponentBoundsCalculator.h"

#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "CheckError/ULog.h"
#include "KVUStr/KVUStr.h"
#include "Platform/Fonts.h"
#include "Platform/MacRoman.h"

#include <CoreFoundation/CoreFoundation.h>

bool UTextComponentBoundsCalculator::GetCharacters(CTextBIG* text, std::string& characters)
{
    characters = text->GetText();
    if (KVUStr::IsConvertible(characters, kCFStringEncodingUTF8)) {
        return true;
    }
    if (!KVUStr::IsConvertible(characters, kCFStringEncodingMacRoman)) {
        return false;
    }
    characters = Platform::MacRomanToUtf8(characters);
    return true;
}

void UTextComponentBoundsCalculator::CalcBounds(CTextBIG* text, DRect& bounds, double angleDegrees)
{
    std::string characters;
    if (!GetCharacters(text, characters)) {
        ULog::Debug("%s: Failed to create string object for '%s'",
                    "static void UTextComponentBoundsCalculator::CalcBounds(CTextBIG *, DRect &, double)",
                    characters.c_str());
        return;
    }
    double width = 0.0;
    double height = 0.0;
    Platform::MeasureText(text->GetFontName(), text->GetTextSize(), characters, width, height);
    UDRect::SetDRect(bounds, 0.0, 0.0, width, height);
    UDRect::RotateDRect(bounds, angleDegrees);
}
