// Prices for people: which currencies there are, and how amounts of them are written.
#pragma once

#include <map>
#include <string>

/// How a country writes amounts. Texts are UTF-8.
struct tMoneyForm {
    std::string decimalPoint = ".";
    std::string separator;    ///< between groups of digits
    std::string grouping;     ///< sizes of the groups from the right, as bytes; the last one goes on, as in a C library
    bool symbolFirst = false; ///< before the number
    bool hasSpace = true;     ///< between both

    /// As the environment says (LC_ALL, LC_MONETARY, LC_NUMERIC, LANG); as above where it names no country whose
    /// locale is installed.
    static tMoneyForm OfUser();
};

/// What a currency of documents is. They hold a number only, whose meaning the user knows.
struct tCurrency {
    std::string code;   ///< of ISO 4217: "EUR"
    int decimals = 0;   ///< digits behind the point: an amount of 649 with 2 is 6.49
    std::string symbol; ///< what stands beside amounts
};

/// The currencies that the user has named.
class CCurrencies {
public:
    /// Takes one from a text such as "129=EUR:2" or "129=EUR:2:€"; a later one with the same number counts.
    /// @return empty, or what is wrong, for people
    std::string Add(const std::string& text);
    /// Takes those from the section "currencies" of a file with lines such as "129 = EUR:2". A file that is not there
    /// has none. @return as Add, with the file's name and line
    std::string Load(const std::string& path);

    /// @param number  as documents have it @return null for one that nobody has named
    const tCurrency* Find(long long number) const;
    /// An amount for people; of an unknown currency the whole number as it is.
    std::string Format(long long amount, long long number, const tMoneyForm& form) const;

private:
    std::map<long long, tCurrency> mCurrencies;
};
