#include "Elements/Utilities/UElementNameGenerator.h"

#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/ULog.h"
#include "Elements/Utilities/LocalizationStub.h"
#include "Elements/Utilities/UElementInspector.h"
#include "KVUStr/KVUStr.h"
#include "Layouts/CLayout.h"
#include "Preferences/CVLPreferences.h"
#include "UnitLength/UUnits.h"

namespace {
constexpr size_t kNameSize = 256;
constexpr char kPrefixSeparator = '-';
/// The corner of a rectangle that lies opposite to its first, which is the origin.
constexpr int kOppositeCorner = 2;

const char* UnitText(int unit)
{
    return UUnits::GetUnitStr(unit, true);
}

/// The first component as one of class tComponent, or null after a warning.
template <typename tComponent>
tComponent* FetchFirst(const CCompositeGeometry* element, const char* warning)
{
    tComponent* component = dynamic_cast<tComponent*>(element->GetBIGAtIndex(0));
    if (component == nullptr) {
        ULog::Warn("%s", warning);
    }
    return component;
}

void NameCircle(char* name, int unit, const CCompositeGeometry* element)
{
    const COvalBIG* circle = FetchFirst<COvalBIG>(element, "Sorry, the given item doesn't contain a circle component");
    if (circle != nullptr) {
        LocalizationStub::ResStrSprintf(name, "kLocStrIdx_GenericCircleName", UnitText(unit),
                                        UUnits::MM2Unit(unit, circle->GetRadX()));
    }
}

void NameRectangle(char* name, int unit, const CCompositeGeometry* element)
{
    const CPolyBIG* poly = FetchFirst<CPolyBIG>(element, "Sorry, the given item doesn't contain a polygon component");
    if (poly != nullptr) {
        const CPoint corner = poly->GetPoint(kOppositeCorner);
        LocalizationStub::ResStrSprintf(name, "kLocStrIdx_GenericRectName", UnitText(unit),
                                        UUnits::MM2Unit(unit, corner.x), UUnits::MM2Unit(unit, corner.y));
    }
}

void NameByPoints(char* name, const char* key, const CCompositeGeometry* element, const char* warning)
{
    const CPolyBIG* poly = FetchFirst<CPolyBIG>(element, warning);
    if (poly != nullptr) {
        LocalizationStub::ResStrSprintf(name, key, poly->GetNumberOfPoints());
    }
}
} // namespace

char* UElementNameGenerator::GetGenericGraphicElementName(int unit, CCompositeGeometry* element)
{
    static char sName[kNameSize] = "";
    if (UElementInspector::IsTextElement(element)) {
        LocalizationStub::ResStrSprintf(sName, "kLocStrIdx_GenericTextName");
    } else if (UElementInspector::IsCircleElement(element)) {
        NameCircle(sName, unit, element);
    } else if (UElementInspector::IsRectElement(element)) {
        NameRectangle(sName, unit, element);
    } else if (UElementInspector::IsPolyElement(element)) {
        // Not reached, nor is the line, as long as every polygon counts as a rectangle.
        NameByPoints(sName, "kLocStrIdx_GenericPolyName", element,
                     "Sorry, the given item doesn't contain a polygon component");
    } else if (UElementInspector::IsLineElement(element)) {
        NameByPoints(sName, "kLocStrIdx_GenericLineName", element,
                     "Sorry, the given item doesn't contain a (line) polygon component");
    } else {
        ULog::Warn("%s: Unrecognized element type",
                   "static char *UElementNameGenerator::GetGenericGraphicElementName(int, CCompositeGeometry *)");
        KVUStr::strncpy(sName, "???", kNameSize);
    }
    return sName;
}

char* UElementNameGenerator::GetGenericFlexElementName(int unit, double maxLength)
{
    static char sName[kNameSize] = "";
    LocalizationStub::ResStrSprintf(sName, "kLocStrIdx_GenericFlextrackName", UnitText(unit),
                                    UUnits::MM2Unit(unit, maxLength));
    return sName;
}

void UElementNameGenerator::GetPrefixedElementName(CCompositeGeometry* element, CLayout* layout, std::string& out)
{
    const bool showPrefix = layout != nullptr ? layout->HasElementLabelFlag(CLayout::kShowPrefix)
                                              : CVLPreferences::Instance()->mDefaultShowPrefix;
    std::string label;
    if (showPrefix && element->GetPrefix()[0] != '\0') {
        label = element->GetPrefix();
        label += kPrefixSeparator;
    }
    label += element->GetName();
    out = label;
}
