#include "CheckError/CErr.h"

#include "CBundle/CBundle.h"
#include "CheckError/ReportFormatted.h"
#include "KVUDate/KVUDate.h"
#include "KVUSystem/KVUSystem.h"
#include "Platform/Released.h"
#include "Platform/Report.h"
#include "Platform/System.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/utsname.h>

namespace {
constexpr int kPathSize = 512;

const char kSeparator[] = "============================================================\n";

bool IsEmpty(const char* text)
{
    return text == nullptr || *text == '\0';
}

/// Copies into a buffer of `size` bytes. @return false when it does not fit; the buffer is then empty
bool CopyIfItFits(char* buffer, int size, const std::string& text)
{
    if (size <= 0) {
        return false;
    }
    buffer[0] = '\0';
    if (text.size() >= static_cast<size_t>(size)) {
        return false;
    }
    memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

std::string MessageText(short code, const char* function, const char* description, CErr::tCheckErrorAlertType kind)
{
    std::string text = " Function    :  ";
    text += function != nullptr ? function : "???";
    text += "\n Error Code  :  ";
    text += kind == CErr::kNullReference ? "<NULL>" : std::to_string(code);
    text += "\n Description :  ";
    text += description != nullptr ? description : "";
    text += "\n\n";
    return text;
}

/// The beginning of a log entry: time, process, system and application.
void WriteLogHeading(FILE* file, CErr::tCheckErrorAlertType kind)
{
    char date[64];
    KVUDate::FormatNow(date, sizeof date);
    const char* const process = KVUSystem::GetProcessName();
    if (kind == CErr::kWarning) {
        fprintf(file, "%s :  Warning logged for process '%s':\n\n", date, process);
    } else {
        fprintf(file, "%s :  Error logged for process '%s':\n\n", date, process);
    }

    utsname names = {};
    uname(&names);
    fprintf(file, "OS Version: %X (%s)\n", static_cast<unsigned>(KVUSystem::GetOSVersion()), names.sysname);
    fprintf(file, " Node Name: %s\n", names.nodename);
    fprintf(file, "   Machine: %s\n", names.machine);

    const CBundle& bundle = *CBundle::Instance();
    const std::string name = bundle.GetBundleName(); // the next text takes the same buffer
    fprintf(file, "    Bundle: %s (%s)\n", name.c_str(), bundle.GetIdentifier());
    fprintf(file, " B.Version: %s\n", bundle.GetVersionNumber());
}

Platform::tReleased<CFStringRef> CreateAlertText(const std::string& message)
{
    const CFStringRef text = CFStringCreateWithCString(kCFAllocatorDefault, message.c_str(), kCFStringEncodingUTF8);
    return Platform::tReleased<CFStringRef>(
        text != nullptr ? text
                        : CFStringCreateWithCString(kCFAllocatorDefault, message.c_str(), kCFStringEncodingMacRoman));
}
} // namespace

bool CErr::MinorError(short code, const char* function, const char* description)
{
    if (code == 0) {
        return false;
    }
    if (!IsEmpty(description)) {
        DoRequester(code, function, description, kWarning);
    }
    return true;
}

void CErr::FailWithError(short code, const char* function, const char* description)
{
    if (!IsEmpty(description)) {
        DoRequester(code, function, description, kError);
    }
    exit(0);
}

void CErr::FailWithNull(const char* function, const char* description)
{
    DoRequester(-1, function, description, kNullReference);
    exit(0);
}

void CErr::DoRequester(short code, const char* function, const char* description, tCheckErrorAlertType kind)
{
    const std::string message = MessageText(code, function, description, kind);
    Platform::Report(kind == kWarning ? Platform::eReportLevel::kMinorError : Platform::eReportLevel::kFatalError,
                     message.c_str());
    fprintf(stderr, "%s", message.c_str());
    LogToErrorFile(message.c_str(), kind);

    const CFOptionFlags level =
        kind == kWarning ? kCFUserNotificationCautionAlertLevel : kCFUserNotificationStopAlertLevel;
    const auto text = CreateAlertText(message);
    CFOptionFlags response = 0;
    // Not "occurred": users know the alert by this spelling.
    CFUserNotificationDisplayAlert(0, level, nullptr, nullptr, nullptr, CFSTR("An application error has occured."),
                                   text.get(), nullptr, nullptr, nullptr, &response);
    if (kind == kError) {
        exit(0);
    }
}

void CErr::LogToErrorFile(const char* message, tCheckErrorAlertType kind)
{
    // Describing the system may itself fail fatally; that report then goes without a log entry instead of ending here.
    static bool sWriting = false;
    if (sWriting) {
        return;
    }
    sWriting = true;
    char path[kPathSize];
    if (GetPathToErrorLog(path, sizeof path)) {
        if (FILE* const file = fopen(path, "a")) {
            WriteLogHeading(file, kind);
            fprintf(file, "\n%s\n%s%s\n\n\n\n\n", kSeparator, message, kSeparator);
            fclose(file);
        }
    }
    sWriting = false;
}

bool CErr::GetPathToErrorLog(char* path, int size)
{
    char folder[kPathSize];
    if (!GetLogFolderLocation(folder, sizeof folder)) {
        CopyIfItFits(path, size, "");
        return false;
    }
    const char* const name = CBundle::Instance()->GetBundleName();
    return CopyIfItFits(path, size, std::string(folder) + "/" + name + ".error.log");
}

bool CErr::GetLogFolderLocation(char* path, int size)
{
    const std::string folder = Platform::FolderPath(Platform::eFolder::kLogs, false);
    return CopyIfItFits(path, size, folder) && !folder.empty();
}

void CErr::DebugPrint(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    ReportFormatted(Platform::eReportLevel::kDebugPrint, format, arguments);
    va_end(arguments);
}
