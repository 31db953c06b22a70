// The one error channel of the core: fatal checks, minor errors and the error log.
#pragma once

/// Reports errors to the user and the log, and ends the process where going on makes no sense. Nothing is locked.
///
/// A report goes to the observer of Platform/Report.h, to standard error, to the log file of the user's logs folder and
/// into a modal alert. Every fatal path ends the process with status 0.
class CErr {
public:
    /// How an error is shown.
    using tCheckErrorAlertType = int;
    enum : tCheckErrorAlertType {
        kWarning = 1,      ///< caution alert, the process goes on
        kError = 2,        ///< stop alert, DoRequester ends the process
        kNullReference = 3 ///< stop alert, CheckNull ends the process
    };

    /// Ends the process for any code but 0. With an empty or null description it ends without a word.
    /// @return the code, which then is 0
    static short CheckError(short code, const char* description) { return CheckError(code, "CheckError", description); }

    /// @param function  signature text of the reporting function; null is shown as "???"
    static short CheckError(short code, const char* function, const char* description)
    {
        if (code != 0) [[unlikely]] {
            FailWithError(code, function, description);
        }
        return code;
    }

    /// Reports a code other than 0 and goes on. With an empty or null description nothing is reported.
    /// @return true for any code but 0
    static bool MinorError(short code, const char* description) { return MinorError(code, nullptr, description); }

    /// @param function  signature text of the reporting function; null is shown as "???"
    static bool MinorError(short code, const char* function, const char* description);

    /// Ends the process with a report when `pointer` is null, whatever the description.
    static void CheckNull(const void* pointer, const char* description) { CheckNull(pointer, nullptr, description); }

    /// @param function  signature text of the reporting function; null is shown as "???"
    static void CheckNull(const void* pointer, const char* function, const char* description)
    {
        if (pointer == nullptr) [[unlikely]] {
            FailWithNull(function, description);
        }
    }

    /// Writes, logs and shows one error. Returns only for kinds other than kError, once the user dismissed the alert.
    static void DoRequester(short code, const char* function, const char* description, tCheckErrorAlertType kind);

    /// Appends one entry, with a description of the system, to the log file.
    /// A file that cannot be opened drops the entry.
    static void LogToErrorFile(const char* message, tCheckErrorAlertType kind);

    /// Path of the log file, zero-terminated, into `path` of `size` bytes.
    /// @return false when there is no logs folder or the path does not fit; `path` is then empty
    static bool GetPathToErrorLog(char* path, int size);

    /// Path of the user's logs folder, which is not made where it is missing. As GetPathToErrorLog otherwise.
    static bool GetLogFolderLocation(char* path, int size);

    /// printf for developers: seen by the report observer, nowhere else.
    static void DebugPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));

private:
    [[noreturn]] static void FailWithError(short code, const char* function, const char* description);
    [[noreturn]] static void FailWithNull(const char* function, const char* description);
};
