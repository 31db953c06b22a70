#include "output/Money.h"

#include "Bounds.h"
#include "output/Escapes.h"
#include "protocol/UTF8.h"

#include <ini.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <langinfo.h>
#include <locale.h>
#include <memory>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace {
constexpr char kForm[] = "NUMBER=CODE:DECIMALS, with a symbol if you like: 129=EUR:2:€";

/// Those that people write otherwise than by their code.
const std::map<std::string, std::string> kSymbols = {{"EUR", "€"}, {"USD", "$"},  {"GBP", "£"}, {"JPY", "¥"},
                                                     {"CNY", "¥"}, {"PLN", "zł"}, {"CZK", "Kč"}};

bool ParseNumber(const std::string& text, long long least, long long most, long long& number)
{
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && number >= least && number <= most;
}

bool IsCode(const std::string& text)
{
    return text.size() == 3 && std::all_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

bool IsSymbol(const std::string& text)
{
    return !text.empty() && text.size() <= Bounds::kMostSymbolBytes && UTF8::IsValid(text) &&
           Escapes::ForTerminal(text) == text;
}

/// A text of a locale, if it is UTF-8: those of other character sets are of no use here.
std::string LocalText(const char* text, const char* otherwise)
{
    return text != nullptr && *text != '\0' && UTF8::IsValid(text) ? text : otherwise;
}
} // namespace

tMoneyForm tMoneyForm::OfUser()
{
    tMoneyForm form;
    const locale_t locale = newlocale(LC_MONETARY_MASK | LC_NUMERIC_MASK | LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr) {
        return form;
    }
    const locale_t before = uselocale(locale); // of this thread
    const lconv& country = *localeconv();
    if (country.mon_decimal_point != nullptr && *country.mon_decimal_point != '\0') {
        form.decimalPoint = LocalText(country.mon_decimal_point, ".");
        form.separator = LocalText(country.mon_thousands_sep, "");
        form.grouping = country.mon_grouping;
        form.symbolFirst = country.p_cs_precedes == 1;
        form.hasSpace = country.p_sep_by_space != 0;
    } else { // numbers may have a country where money has none
        form.decimalPoint = LocalText(country.decimal_point, ".");
        form.separator = LocalText(country.thousands_sep, "");
        form.grouping = country.grouping;
    }
    uselocale(before);
    freelocale(locale);
    return form;
}

std::string CCurrencies::Add(const std::string& text)
{
    std::string wrong = "'" + text + "' names no currency: write " + kForm;
    const size_t equals = text.find('=');
    const size_t colon = text.find(':', equals == std::string::npos ? 0 : equals);
    if (equals == std::string::npos || colon == std::string::npos) {
        return wrong;
    }
    const size_t second = std::min(text.find(':', colon + 1), text.size());
    tCurrency currency;
    currency.code = text.substr(equals + 1, colon - equals - 1);
    long long number = 0;
    long long decimals = 0;
    if (!ParseNumber(text.substr(0, equals), INT32_MIN, INT32_MAX, number) || !IsCode(currency.code) ||
        !ParseNumber(text.substr(colon + 1, second - colon - 1), 0, Bounds::kMostDecimals, decimals)) {
        return wrong;
    }
    currency.decimals = static_cast<int>(decimals);
    const auto known = kSymbols.find(currency.code);
    currency.symbol = second < text.size()      ? text.substr(second + 1)
                      : known != kSymbols.end() ? known->second
                                                : currency.code;
    if (!IsSymbol(currency.symbol)) {
        return wrong;
    }
    mCurrencies[number] = currency;
    return {};
}

std::string CCurrencies::Load(const std::string& path)
{
    struct tReading {
        CCurrencies& currencies;
        std::string problem;
    } reading = {*this, {}};
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "re"), &fclose);
    if (!file) {
        return errno == ENOENT || errno == ENOTDIR ? std::string() : path + ": " + strerror(errno);
    }
    const auto take = [](void* user, const char* section, const char* name, const char* value) {
        tReading& now = *static_cast<tReading*>(user);
        const std::string problem = strcmp(section, "currencies") == 0
                                        ? now.currencies.Add(std::string(name) + "=" + value)
                                        : "there is no section '" + std::string(section) + "'; [currencies] is one";
        now.problem = now.problem.empty() ? problem : now.problem;
        return problem.empty() ? 1 : 0;
    };
    const int line = ini_parse_file(file.get(), take, &reading);
    if (line == 0) {
        return ferror(file.get()) != 0 ? path + ": cannot be read to its end" : std::string();
    }
    const std::string problem = reading.problem.empty() ? "is no line such as 129 = EUR:2" : reading.problem;
    return path + ", line " + std::to_string(line) + ": " + problem;
}

const tCurrency* CCurrencies::Find(long long number) const
{
    const auto found = mCurrencies.find(number);
    return found != mCurrencies.end() ? &found->second : nullptr;
}

std::string CCurrencies::Format(long long amount, long long number, const tMoneyForm& form) const
{
    const tCurrency* const currency = Find(number);
    if (currency == nullptr) {
        return std::to_string(amount);
    }
    std::string digits = std::to_string(amount);
    const bool isNegative = amount < 0;
    digits.erase(0, isNegative ? 1 : 0);
    const auto decimals = static_cast<size_t>(currency->decimals);
    digits.insert(0, digits.size() <= decimals ? decimals + 1 - digits.size() : 0, '0');
    const std::string fraction = digits.substr(digits.size() - decimals);
    digits.resize(digits.size() - decimals);
    size_t group = 0;
    size_t size = 0;
    for (size_t at = digits.size(); !form.separator.empty() && group < form.grouping.size();) {
        size = static_cast<unsigned char>(form.grouping[group]);
        if (size == 0 || size >= CHAR_MAX || size >= at) {
            break;
        }
        at -= size;
        digits.insert(at, form.separator);
        group += group + 1 < form.grouping.size() ? 1 : 0;
    }
    const std::string text = digits + (decimals > 0 ? form.decimalPoint + fraction : "");
    const std::string space = form.hasSpace ? " " : "";
    return std::string(isNegative ? "-" : "") +
           (form.symbolFirst ? currency->symbol + space + text : text + space + currency->symbol);
}
