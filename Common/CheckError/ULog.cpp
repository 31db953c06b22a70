#include "CheckError/ULog.h"

#include "CheckError/ReportFormatted.h"

#include <cstdarg>

void ULog::Warn(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    ReportFormatted(Platform::eReportLevel::kWarning, format, arguments);
    va_end(arguments);
}

void ULog::Info(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    ReportFormatted(Platform::eReportLevel::kInfo, format, arguments);
    va_end(arguments);
}

void ULog::Debug(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    ReportFormatted(Platform::eReportLevel::kDebug, format, arguments);
    va_end(arguments);
}
