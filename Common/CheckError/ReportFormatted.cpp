#include "CheckError/ReportFormatted.h"

#include <cstdio>
#include <string>

void ReportFormatted(Platform::eReportLevel level, const char* format, va_list arguments)
{
    if (!Platform::HasReportObserver()) {
        return;
    }
    va_list measured;
    va_copy(measured, arguments);
    const int length = vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) {
        return;
    }
    std::string text(static_cast<size_t>(length), '\0');
    vsnprintf(text.data(), text.size() + 1, format, arguments);
    Platform::Report(level, text.c_str());
}
