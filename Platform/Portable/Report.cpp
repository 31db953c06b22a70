#include "Platform/Report.h"

namespace Platform {
static tReportObserver sObserver = nullptr;
static void* sContext = nullptr;

void SetReportObserver(tReportObserver observer, void* context)
{
    sObserver = observer;
    sContext = context;
}

bool HasReportObserver()
{
    return sObserver != nullptr;
}

void Report(eReportLevel level, const char* text)
{
    if (sObserver != nullptr && text != nullptr) {
        sObserver(sContext, level, text);
    }
}
} // namespace Platform
