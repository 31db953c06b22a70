#include "UnitLength/UUnits.h"

#include "CheckError/CErr.h"
#include "KVUNum/KVUNum.h"
#include "KVUStr/KVUStr.h"
#include "Platform/Released.h"

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {
constexpr size_t kUnitSize = 32;
constexpr size_t kMeasureSize = 128;

struct tUnit {
    double millimetres;
    const char* longText;
    const char* shortText;
    bool decimal;
};

// In the order of the codes, from kMillimetre on.
constexpr tUnit kUnits[] = {
    {1.0, "mm", "mm", true},
    {10.0, "cm", "cm", true},
    {25.4, "Inch", "\"", false},
    {304.8, "Feet", "Ft", false},
};

/// Null for an unknown unit.
const tUnit* UnitOf(int code)
{
    return code >= UUnits::kMillimetre && code <= UUnits::kFoot ? &kUnits[code - UUnits::kMillimetre] : nullptr;
}

/// The text in the application's language, which the main bundle knows, as UTF-8 in a buffer of kUnitSize bytes.
void Localize(const char* text, char* localized)
{
    KVUStr::strncpy(localized, text, kUnitSize);
    using tString = Platform::tReleased<CFStringRef>;
    const tString key(CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8));
    if (!key) {
        return;
    }
    const tString found(CFBundleCopyLocalizedString(CFBundleGetMainBundle(), key.get(), key.get(), nullptr));
    if (found) { // the key stays where it does not fit
        CFStringGetCString(found.get(), localized, kUnitSize, kCFStringEncodingUTF8);
    }
}

/// Reports a text that snprintf had to cut to kMeasureSize.
void CheckLength(int length, const char* function)
{
    if (length >= static_cast<int>(kMeasureSize)) {
        constexpr int kLargestCode = std::numeric_limits<short>::max();
        CErr::MinorError(static_cast<short>(std::min(length, kLargestCode)), function, "Input parameter too long!");
    }
}
} // namespace

double UUnits::MM2Unit(int unit, double millimetres)
{
    const tUnit* const found = UnitOf(unit);
    if (found == nullptr) {
        CErr::CheckError(-1, "static double UUnits::MM2Unit(int, double)", "Unsupported Measure Unit!");
        return millimetres;
    }
    return millimetres / found->millimetres;
}

double UUnits::Unit2MM(int unit, double value)
{
    return value / MM2Unit(unit, 1.0);
}

const char* UUnits::GetUnitStr(int unit, bool shortForm)
{
    static char sText[kUnitSize];
    const tUnit* const found = UnitOf(unit);
    if (found == nullptr) {
        CErr::CheckError(-1, "static const char *UUnits::GetUnitStr(int, bool)", "Unsupported Measure Unit!");
        return nullptr;
    }
    if (unit == kInch && shortForm) {
        return found->shortText;
    }
    Localize(shortForm ? found->shortText : found->longText, sText);
    return sText;
}

const char* UUnits::BuildMeasureUnitString(int unit, double millimetres)
{
    static char sText[kMeasureSize];
    const double value = MM2Unit(unit, millimetres);
    const int length =
        snprintf(sText, sizeof sText, IsDecBased(unit) ? "%.1f %s" : "%.2f %s", value, GetUnitStr(unit, true));
    CheckLength(length, "static const char *UUnits::BuildMeasureUnitString(int, double)");
    return sText;
}

const char* UUnits::BuildMeasureUnitString(int unit, int millimetres)
{
    static char sText[kMeasureSize];
    const int value = KVUNum::d2i(MM2Unit(unit, millimetres));
    const int length = snprintf(sText, sizeof sText, "%d %s", value, GetUnitStr(unit, true));
    CheckLength(length, "static const char *UUnits::BuildMeasureUnitString(int, int)");
    return sText;
}

bool UUnits::IsDecBased(int unit)
{
    const tUnit* const found = UnitOf(unit);
    return found != nullptr && found->decimal;
}
