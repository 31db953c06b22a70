// Alerts of a process whose user cannot answer: who receives them. (On macOS the system shows them itself.)
#pragma once

#include "Platform/Export.h"

namespace Platform {
/// Receives one alert instead of standard error.
/// @param level  one of kCFUserNotification...AlertLevel
/// @param title,text  UTF-8, line breaks as they were given; only valid during the call
using tAlertHandler = void (*)(void* context, unsigned long level, const char* title, const char* text);

/// Installs the handler; null restores the line on standard error. Not owned; one at a time. Not for several threads.
PLATFORM_EXPORT void SetAlertHandler(tAlertHandler handler, void* context);
} // namespace Platform
