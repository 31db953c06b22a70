#include "CPlan.h"
#include "Layouts.h"

std::unique_ptr<CPlan> MakeEmptyLayout()
{
    return std::make_unique<CPlan>("Agnès Müller-Brøndal", "Noch ohne Gleise", "0", 2400, 1200,
                                   std::initializer_list<tLayerSetting>{{"Gleise"}});
}
