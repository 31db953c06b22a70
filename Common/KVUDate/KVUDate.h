// Points in time as documents and the log spell them.
#pragma once

#include <cstddef>
#include <ctime>

/// Dates as text: "Jan  5. 2026, 14:03:00", with English months whatever the locale, since files travel.
class KVUDate {
public:
    KVUDate() = delete;

    /// Writes a broken-down time, cut to `size` bytes with the zero.
    static void Format(char* text, size_t size, const tm& time);

    /// Writes the local time. An empty text where it cannot be told.
    static void FormatNow(char* text, size_t size);

    /// Reads such a date, from 1970 on. @return false for any other text; the time is then of no use
    static bool Parse(const char* text, tm& time);
};
