// Warnings and notes of the core.
#pragma once

/// printf-style messages; callers begin with "%s: " and their own signature text. They are only seen by the report
/// observer (Platform/Report.h): without one nothing is formatted and nothing is written anywhere.
class ULog {
public:
    /// Something in a document or the system is not as it should be, and was worked around.
    static void Warn(const char* format, ...) __attribute__((format(printf, 1, 2)));

    /// Worth knowing in normal operation.
    static void Info(const char* format, ...) __attribute__((format(printf, 1, 2)));

    /// Detail for developers.
    static void Debug(const char* format, ...) __attribute__((format(printf, 1, 2)));
};
