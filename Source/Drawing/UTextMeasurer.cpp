#include "Drawing/UTextMeasurer.h"

#include "KVUStr/KVUStr.h"
#include "Platform/Fonts.h"
#include "Platform/MacRoman.h"

#include <CoreFoundation/CoreFoundation.h>

bool UTextMeasurer::GetCharacters(const std::string& text, std::string& characters)
{
    if (KVUStr::IsConvertible(text, kCFStringEncodingUTF8)) {
        characters = text;
        return true;
    }
    if (!KVUStr::IsConvertible(text, kCFStringEncodingMacRoman)) {
        return false;
    }
    characters = Platform::MacRomanToUtf8(text);
    return true;
}

bool UTextMeasurer::CalcBounds(const std::string& text, const std::string& font, int size, DRect& bounds,
                               double angleDegrees)
{
    std::string characters;
    if (!GetCharacters(text, characters)) {
        return false;
    }
    double width = 0.0;
    double height = 0.0;
    Platform::MeasureText(font, size, characters, width, height);
    UDRect::SetDRect(bounds, 0.0, 0.0, width, height);
    UDRect::RotateDRect(bounds, angleDegrees);
    return true;
}
