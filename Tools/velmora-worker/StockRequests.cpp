// Requests about stock files, and about what a stock has of a list of parts.
#include "CXMLDocument/UXMLFile.h"
#include "Requests.h"
#include "Stock/CStockChecker.h"

#include "Layouts/CLayout.h"
#include "Platform/MacRoman.h"
#include "Preferences/CVLPreferences.h"
#include "Stock/CStock.h"
#include "Stock/UStockBalance.h"
#include "protocol/CJSONObject.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>

namespace {
using tJSON = nlohmann::ordered_json;

/// Why a file is no XML, to stand behind something else; empty for a file that is.
std::string DescribeXMLProblem(const std::string& path)
{
    std::string bytes;
    UXMLFile::ReadBytes(path, bytes);
    const tXMLProblem problem = UXMLFile::FindProblem(bytes);
    return problem.text.empty()
               ? std::string()
               : ": " + (problem.line > 0 ? "line " + std::to_string(problem.line) + ": " : "") + problem.text;
}

/// Reads the entries of a stock file up to the first that is none.
/// @param entries  receives their number
/// @param problem  what is wrong with it; empty when all is well
/// @return false when the file cannot be read
bool ReadStock(const std::string& path, const CStock::tUseEntry& use, size_t& entries, std::string& problem)
{
    entries = 0;
    switch (CStock::ForEachEntry(path.c_str(), [&](const CStock::tEntry& entry) {
        ++entries;
        use(entry);
    })) {
    case CStock::eFileState::kWhole:
        break;
    case CStock::eFileState::kUnreadable:
        return false;
    case CStock::eFileState::kNoStock:
        problem = "is not a stock file" + DescribeXMLProblem(path);
        break;
    case CStock::eFileState::kBadEntry:
        problem = "entry " + std::to_string(entries + 1) + " lacks its product number or its library";
        break;
    }
    return true;
}

/// @return false for what is no list of amounts
bool ReadAmounts(const nlohmann::json& list, UStockBalance::tAmounts& amounts)
{
    for (const nlohmann::json& entry : list) {
        const auto count = entry.is_array() && entry.size() == 3 && entry[2].is_number_integer()
                               ? entry[2].get<int64_t>()
                               : int64_t{-1};
        if (count < 0 || count > std::numeric_limits<int>::max() || !entry[0].is_string() || !entry[1].is_string()) {
            return false;
        }
        amounts.push_back({entry[0].get<std::string>(), entry[1].get<std::string>(), static_cast<int>(count)});
    }
    return list.is_array();
}
} // namespace

tAnswer CheckStock(const std::string& path)
{
    CStockChecker checker;
    CJSONObject report;
    report.BeginList("entries"); // which the host looks up in the libraries that it knows
    size_t entries = 0;
    std::string problem;
    const bool isRead = ReadStock(
        path,
        [&](const CStock::tEntry& entry) {
            checker.Check(entry);
            report.Add({{"library", entry.library},
                        {"number", entry.productNumber},
                        {"line", entry.place.line},
                        {"offset", entry.place.offset}});
        },
        entries, problem);
    if (!isRead) {
        return MakeUnreadable();
    }
    report.EndList();
    if (!problem.empty()) {
        checker.ReportBad(problem);
    }
    return MakeFindingsReport(report, "stock file", checker.GetFindings(), {{"elements", entries}});
}

tAnswer AnswerStock(const std::string& path)
{
    CJSONObject report;
    report.BeginList("items");
    size_t entries = 0;
    std::string problem;
    const bool isRead = ReadStock(
        path,
        [&report](const CStock::tEntry& entry) {
            tJSON item = {
                {"library", entry.library}, {"number", entry.productNumber}, {"count", entry.GetProperCount()}};
            if (entry.state == CStock::tEntry::eCount::kWrong) {
                item["wrong_count"] = entry.countText;
                item["line"] = entry.place.line;
            }
            item["place"] = {entry.place.countOffset, entry.place.countLength, entry.place.needsTags ? 1 : 0};
            report.Add(item);
        },
        entries, problem);
    if (!isRead) {
        return MakeUnreadable();
    }
    if (!problem.empty()) {
        tAnswer failed = MakeFailure(eFailure::kLoader, problem);
        failed.failure.loaderCode = CLayout::kNoLayout;
        return failed;
    }
    report.EndList();
    return MakeReport(eVerb::kStock, report);
}

tAnswer AnswerBalance(int document)
{
    std::vector<unsigned char> bytes;
    if (!ReadWhole(document, bytes)) {
        return MakeUnreadable();
    }
    UStockBalance::tAmounts needed;
    UStockBalance::tAmounts owned;
    {
        const nlohmann::json lists = nlohmann::json::parse(bytes, nullptr, false);
        if (!lists.is_array() || lists.size() != 2 || !ReadAmounts(lists[0], needed) || !ReadAmounts(lists[1], owned)) {
            return MakeFailure(eFailure::kCrash, "the lists to compare are out of form");
        }
    }
    std::vector<int> required;
    std::vector<int> remaining;
    UStockBalance::Compare(needed, owned, required, remaining);
    CJSONObject report;
    report.Put("required", required);
    report.Put("remaining", remaining);
    return MakeReport(eVerb::kBalance, report);
}

std::string GetStockFileName()
{
    return Platform::MacRomanToUtf8(CVLPreferences::Instance()->mStockFileName);
}
