// The one place per process to which messages of the core go. The core is linked more than once into a process (a
// worker and the plug-in it loads); an observer set here sees the messages of all copies.
#pragma once

#include "Platform/Export.h"

namespace Platform {
enum class eReportLevel {
    kDebugPrint, ///< CErr::DebugPrint
    kDebug,      ///< ULog::Debug
    kInfo,       ///< ULog::Info
    kWarning,    ///< ULog::Warn
    kMinorError, ///< CErr::MinorError, before its alert
    kFatalError  ///< CErr::CheckError and CErr::CheckNull, before the alert; the process ends afterwards
};

/// Receives one finished message; `text` is only valid during the call. Must not throw.
using tReportObserver = void (*)(void* context, eReportLevel level, const char* text);

/// Installs the observer; null removes it. Not owned; one at a time. Not for several threads.
PLATFORM_EXPORT void SetReportObserver(tReportObserver observer, void* context);

/// True while an observer is installed; ask before formatting a message nobody reads.
PLATFORM_EXPORT bool HasReportObserver();

/// Hands a message to the observer; without one nothing happens.
PLATFORM_EXPORT void Report(eReportLevel level, const char* text);
} // namespace Platform
