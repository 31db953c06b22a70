// The list of parts, as it is made of the reports of workers, who are not trusted.
#pragma once

#include "commands/CReport.h"
#include "output/CTable.h"
#include "output/Money.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// An article is known by its library and its number; an empty library stands for none.
using tArticleKey = std::pair<std::string, std::string>;
/// How many of each article.
using tAmounts = std::map<tArticleKey, long long>;
/// Numbers of articles by library.
using tArticlesOf = std::map<std::string, std::set<std::string>>;

/// An article that is needed. Counts and sums that no number can hold are the largest there is.
struct tPart {
    std::string description;
    std::string manufacturer;
    std::string kind;
    long long count = 0;
    long long price = 0;
    long long currency = 0;
    long long inStock = 0;
    long long toBuy = 0;         ///< all, until a stock is known
    std::vector<double> lengths; ///< mm, of each piece of flexible track
    bool shared = false;         ///< another library has the same number
    bool unknown = false;        ///< its library was given and does not know it

    long long GetSum() const;
};
using tParts = std::map<tArticleKey, tPart>;

/// What one layout needs, or all together.
struct tPartsList {
    tParts parts;
    std::map<std::string, tParts> layers; ///< the same by the names of layers; empty if not asked for
    double trackLength = 0.0;             ///< mm
    std::map<std::string, long long> kinds;
    std::map<std::string, long long> scales;
    size_t layouts = 0;
};

/// A layout whose parts were read.
struct tPartsLayout {
    std::string path;
    std::string author;
    std::string revision;
    std::string date;    ///< of the file
    std::string picture; ///< SVG; empty for none
    tPartsList list;     ///< empty if not asked for
};

enum class eGrouping { kNone, kLayer, kLibrary };

/// All that is shown.
struct tPartsReport {
    eGrouping grouping = eGrouping::kNone;
    bool perLayout = false; ///< a list for each layout, too
    bool toBuyOnly = false; ///< what the stock has is left out
    bool hasStock = false;
    CCurrencies currencies;
    tMoneyForm money;
    tPartsList total;
    std::vector<tPartsLayout> layouts; ///< in their order; empty if not asked for
};

/// A part of a list under a heading of its own.
struct tPartsGroup {
    std::string name; ///< of the layer or library; empty for none
    std::vector<const tParts::value_type*> parts;
};

/// Money by currency.
struct tTotals {
    std::map<long long, long long> needed;
    std::map<long long, long long> toBuy;
    long long pieces = 0;
    size_t withoutPrice = 0;
};

namespace Parts {
/// Adds what one layout needs. @param layers  also by layer
void AddLayout(tPartsList& list, const CReport& report, bool layers = false);

/// Marks the parts by what the libraries given on the command line say, and by each other.
void Mark(tPartsList& list, const tArticlesOf& articlesOf);

/// What the parts are as amounts, for a balance.
tAmounts GetAmounts(const tParts& parts);
/// Takes over what is there and what a balance found to be missing of it.
void SetStock(tParts& parts, const tAmounts& stock, const tAmounts& required);

/// What is to be shown of a list, in groups; one without a name where nothing groups it.
std::vector<tPartsGroup> GetGroups(const tPartsReport& report, const tPartsList& list);
tTotals GetTotals(const std::vector<const tParts::value_type*>& parts);

/// A group's heading for people; empty without one.
std::string GetHeading(const tPartsReport& report, const tPartsGroup& group);
/// @param hasBoxes  with a box to tick in front
CTable MakeTable(const tPartsReport& report, const tPartsGroup& group, bool hasBoxes = false);
/// What stands under a group's table, and what under a list, a line each; not escaped.
std::vector<std::string> SummarizeGroup(const tPartsReport& report, const tPartsGroup& group);
std::vector<std::string> Summarize(const tPartsReport& report, const tPartsList& list);
/// What is in a list besides parts and money.
std::vector<std::string> DescribeContents(const tPartsList& list);
/// Lengths of pieces for people: "2 x 500, 230.5".
std::string DescribeLengths(const std::vector<double>& lengths);
std::string DescribeRemarks(const tPart& part);

std::string FormatText(const tPartsReport& report, const tLook& look);
/// All lists as one table with plain numbers.
CTable MakePlainTable(const tPartsReport& report);
/// An object, without a line break.
std::string FormatJSON(const tPartsReport& report);
std::string FormatHTML(const tPartsReport& report);
/// A workbook with formulas. @return empty, or why there is none
std::string MakeWorkbook(const tPartsReport& report, std::string& bytes);
} // namespace Parts
