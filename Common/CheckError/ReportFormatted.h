// Formatting for the report observer, shared by CErr and ULog.
#pragma once

#include "Platform/Report.h"

#include <cstdarg>

/// Formats a message of any length and hands it to the report observer; does nothing when there is none.
void ReportFormatted(Platform::eReportLevel level, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));
