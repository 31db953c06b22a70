#include "index/Figures.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <optional>

namespace {
/// What a text stands for: where it begins and where it ends when it is compared, and all that it means when alone.
struct tValue {
    tFigureRange exact;
    tFigureRange whole;
};

/// Digits that a number may have: what is left of 18 with a factor of 10^9 in 64 bits.
constexpr size_t kMostDigits = 9;

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// Takes digits. @return nothing when there are none, or too many
std::optional<int64_t> TakeNumber(std::string_view& text, size_t least, size_t most)
{
    size_t count = 0;
    int64_t number = 0;
    while (count < text.size() && count <= most && IsDigit(text[count])) {
        number = number * 10 + (text[count++] - '0');
    }
    if (count < least || count > most) {
        return std::nullopt;
    }
    text.remove_prefix(count);
    return number;
}

/// The factor of a unit of size; 0 for what is none.
int64_t FactorOf(std::string_view unit)
{
    std::string lower(unit);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char letter) { return static_cast<char>(letter | 0x20); });
    constexpr struct {
        std::string_view unit;
        int64_t factor;
    } kUnits[] = {{"", 1},          {"b", 1},         {"k", 1000},       {"kb", 1000},
                  {"m", 1000000},   {"mb", 1000000},  {"g", 1000000000}, {"gb", 1000000000},
                  {"kib", 1 << 10}, {"mib", 1 << 20}, {"gib", 1 << 30}};
    const auto known =
        std::find_if(std::begin(kUnits), std::end(kUnits), [&](const auto& entry) { return entry.unit == lower; });
    return known == std::end(kUnits) ? 0 : known->factor;
}

std::optional<tValue> ReadNumber(std::string_view text, bool hasUnit, int64_t factor)
{
    const auto whole = TakeNumber(text, 1, kMostDigits);
    double number = static_cast<double>(whole.value_or(0));
    double step = 1;
    if (whole && !text.empty() && (text.front() == '.' || text.front() == ',') && text.size() > 1 && IsDigit(text[1])) {
        text.remove_prefix(1);
        const size_t before = text.size();
        const auto decimals = TakeNumber(text, 1, kMostDigits);
        if (!decimals) {
            return std::nullopt;
        }
        step = std::pow(10.0, -static_cast<double>(before - text.size()));
        number += static_cast<double>(*decimals) * step;
    }
    factor *= hasUnit ? FactorOf(text) : text.empty() ? 1 : 0;
    if (!whole || factor == 0) {
        return std::nullopt;
    }
    const double scale = static_cast<double>(factor);
    tValue value;
    value.exact.from = std::llround(number * scale);
    value.exact.to = value.exact.from + 1;
    value.whole.from = std::max<int64_t>(std::llround((number - step / 2) * scale), 0);
    value.whole.to = std::max<int64_t>(std::llround((number + step / 2) * scale), value.exact.to);
    if (step * scale <= 1) { // finer than what is kept
        value.whole = value.exact;
    }
    return value;
}

/// The first second of a day. @param isLocal  by this computer's clock; else as if there were no time zones
int64_t SecondOf(int64_t year, int64_t month, int64_t day, bool isLocal)
{
    tm date = {};
    date.tm_year = static_cast<int>(year - 1900);
    date.tm_mon = static_cast<int>(month - 1);
    date.tm_mday = static_cast<int>(day);
    date.tm_isdst = -1;
    return isLocal ? mktime(&date) : timegm(&date);
}

/// YYYY, YYYY-MM or YYYY-MM-DD.
std::optional<tValue> ReadDate(std::string_view text, bool isLocal)
{
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int64_t parts[] = {0, 1, 1};
    size_t count = 0;
    do {
        const size_t digits = count == 0 ? 4 : 2;
        const auto number = TakeNumber(text, digits, digits);
        if (!number) {
            return std::nullopt;
        }
        parts[count++] = *number;
        if (text.empty()) {
            break;
        }
        if (count == 3 || text.front() != '-') {
            return std::nullopt;
        }
        text.remove_prefix(1);
    } while (true);
    const auto [year, month, day] = parts;
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    if (year < 1970 || month < 1 || month > 12 || day < 1 || day > kDays[month - 1] + (month == 2 && isLeap ? 1 : 0)) {
        return std::nullopt;
    }
    tValue value;
    value.exact.from = SecondOf(year, month, day, isLocal);
    value.exact.to =
        SecondOf(year + (count == 1 ? 1 : 0), month + (count == 2 ? 1 : 0), day + (count == 3 ? 1 : 0), isLocal);
    value.whole = value.exact;
    return value;
}
} // namespace

std::string Figures::Read(std::string_view text, eFigure figure, int64_t factor, tFigureRange& range)
{
    const bool isDate = figure == eFigure::kModified || figure == eFigure::kCreated;
    const auto read = [&](std::string_view part) {
        return isDate ? ReadDate(part, figure == eFigure::kModified)
                      : ReadNumber(part, figure == eFigure::kSize, factor);
    };
    std::string wrong = isDate
                            ? "a date is like 2025, 2025-03 or 2025-03-31, from 1970 on; also >2025, <2025, 2024..2025"
                        : figure == eFigure::kSize ? "a size is like 4096 or 1.5MB; also >1MB, <1MB, 10kB..1MB"
                                                   : "a number is like 100 or 12.5; also >100, <100, 100..500";
    range = {};
    if (const size_t dots = text.find(".."); dots != std::string_view::npos) {
        const std::string_view low = text.substr(0, dots);
        const std::string_view high = text.substr(dots + 2);
        const auto first = read(low);
        const auto last = read(high);
        if ((low.empty() && high.empty()) || (!low.empty() && !first) || (!high.empty() && !last)) {
            return wrong;
        }
        range.from = low.empty() ? range.from : first->exact.from;
        range.to = high.empty() ? range.to : last->exact.to;
        return range.from < range.to ? std::string() : "the second of these must not be less than the first";
    }
    const char sign = text.empty() ? '\0' : text.front();
    const bool isCompared = sign == '<' || sign == '>';
    text.remove_prefix(isCompared ? 1 : 0);
    const bool isSame = isCompared && text.starts_with('=');
    text.remove_prefix(isSame ? 1 : 0);
    const auto value = read(text);
    if (!value) {
        return wrong;
    }
    if (sign == '>') {
        range.from = isSame ? value->exact.from : value->exact.to;
    } else if (sign == '<') {
        range.to = isSame ? value->exact.to : value->exact.from;
    } else {
        range = value->whole;
    }
    return {};
}
