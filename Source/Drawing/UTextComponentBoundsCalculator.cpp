#include "Drawing/UTextComponentBoundsCalculator.h"

#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "CheckError/ULog.h"
#include "Platform/Fonts.h"
#include "Platform/MacRoman.h"

#include <CoreFoundation/CoreFoundation.h>

namespace {
/// Whether the bytes form a platform string in that encoding.
bool IsConvertible(const std::string& text, CFStringEncoding encoding)
{
    CFStringRef string = CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), encoding);
    if (string == nullptr) {
        return false;
    }
    CFRelease(string);
    return true;
}
} // namespace

bool UTextComponentBoundsCalculator::GetCharacters(CTextBIG* text, std::string& characters)
{
    characters = text->GetText();
    if (IsConvertible(characters, kCFStringEncodingUTF8)) {
        return true;
    }
    if (!IsConvertible(characters, kCFStringEncodingMacRoman)) {
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
