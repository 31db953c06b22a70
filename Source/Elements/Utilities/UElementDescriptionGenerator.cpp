#include "Elements/Utilities/UElementDescriptionGenerator.h"

#include "Elements/Utilities/LocalizationStub.h"
#include "UnitLength/UUnits.h"

char* UElementDescriptionGenerator::GetGenericFlexElementDescription(int unit, double maxLength)
{
    static char sDescription[256] = "";
    LocalizationStub::ResStrSprintf(sDescription, "kLocStrIdx_GenericFlexDescMaxLen", UUnits::GetUnitStr(unit, true),
                                    UUnits::MM2Unit(unit, maxLength));
    return sDescription;
}
