#include "KVUDate/KVUDate.h"

#include <cstdio>

namespace {
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr int kMonthCount = sizeof kMonths / sizeof *kMonths;
constexpr long kFirstYear = 1900;
} // namespace

void KVUDate::Format(char* text, size_t size, const tm& time)
{
    // Not strftime: its names of months are those of LC_TIME, which the program around us may set.
    const char* const month = time.tm_mon >= 0 && time.tm_mon < kMonthCount ? kMonths[time.tm_mon] : "?";
    snprintf(text, size, "%s %2d. %ld, %02d:%02d:%02d", month, time.tm_mday, kFirstYear + time.tm_year, time.tm_hour,
             time.tm_min, time.tm_sec);
}

void KVUDate::FormatNow(char* text, size_t size)
{
    const time_t now = time(nullptr);
    tm local = {};
    if (localtime_r(&now, &local) != nullptr) {
        Format(text, size, local);
    } else if (size > 0) {
        text[0] = '\0';
    }
}
