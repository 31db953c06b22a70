#include "KVUDate/KVUDate.h"

#include <cstdio>
#include <cstring>

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

bool KVUDate::Parse(const char* text, tm& time)
{
    time = {};
    char month[4] = "";
    int year = 0;
    int end = 0;
    // The widths keep every number within an int.
    if (sscanf(text, "%3s %2d. %4d, %2d:%2d:%2d%n", month, &time.tm_mday, &year, &time.tm_hour, &time.tm_min,
               &time.tm_sec, &end) != 6 ||
        text[end] != '\0') {
        return false;
    }
    time.tm_year = year - static_cast<int>(kFirstYear);
    while (time.tm_mon < kMonthCount && std::strcmp(month, kMonths[time.tm_mon]) != 0) {
        ++time.tm_mon;
    }
    const auto isWithin = [](int value, int least, int most) { return value >= least && value <= most; };
    return time.tm_mon < kMonthCount && isWithin(year, 1970, 9999) && isWithin(time.tm_mday, 1, 31) &&
           isWithin(time.tm_hour, 0, 23) && isWithin(time.tm_min, 0, 59) && isWithin(time.tm_sec, 0, 60);
}
