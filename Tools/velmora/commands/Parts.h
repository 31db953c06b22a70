// The list of parts, as it is made of the reports of workers, who are not trusted.
#pragma once

#include "commands/CReport.h"
#include "output/CTable.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// An article is known by its library and its number; an empty library stands for none.
using tArticleKey = std::pair<std::string, std::string>;

/// An article that is needed. Counts and sums that no number can hold are the largest there is.
struct tPart {
    std::string description;
    std::string manufacturer;
    std::string kind;
    long long count = 0;
    long long price = 0;
    long long currency = 0;
    long long inStock = 0;
    bool shared = false;  ///< another library has the same number
    bool unknown = false; ///< its library was given and does not know it

    long long GetSum() const;
    long long GetToBuy() const;
};

/// What all layouts together need.
struct tPartsList {
    std::map<tArticleKey, tPart> parts;
    double trackLength = 0.0; ///< mm
    std::map<std::string, long long> kinds;
    std::map<std::string, long long> scales;
    bool hasStock = false;
    size_t layouts = 0;
};

namespace Parts {
/// Adds what one layout needs.
void AddLayout(tPartsList& list, const CReport& report);

/// Marks the parts by what the libraries given on the command line say, and by each other.
/// @param articlesOf  numbers by library
void Mark(tPartsList& list, const std::map<std::string, std::set<std::string>>& articlesOf);

CTable MakeTable(const tPartsList& list);
/// What stands under the table, a line each; not escaped.
std::vector<std::string> Summarize(const tPartsList& list);
std::string FormatJSON(const tPartsList& list);
/// @param paths  of the layouts
std::string FormatHTML(const tPartsList& list, const std::vector<std::string>& paths);
} // namespace Parts
