#include "Drawing/UTextComponentBoundsCalculator.h"

#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "CheckError/ULog.h"
#include "Platform/Fonts.h"
#include "Platform/MacRoman.h"

#include <CoreFoundation/CoreFoundation.h>

#include <string>

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

void UTextComponentBoundsCalculator::CalcBounds(CTextBIG* text, DRect& bounds, double angleDegrees)
{
    std::string characters = text->GetText();
    if (!IsConvertible(characters, kCFStringEncodingUTF8)) {
        if (!IsConvertible(characters, kCFStringEncodingMacRoman)) {
            ULog::Debug("%s: Failed to create string object for '%s'",
                        "static void UTextComponentBoundsCalculator::CalcBounds(CTextBIG *, DRect &, double)",
                        characters.c_str());
            return;
        }
        characters = Platform::MacRomanToUtf8(characters);
    }
    double width = 0.0;
    double height = 0.0;
    Platform::MeasureText(text->GetFontName(), text->GetTextSize(), characters, width, height);
    UDRect::SetDRect(bounds, 0.0, 0.0, width, height);
    UDRect::RotateDRect(bounds, angleDegrees);
}
