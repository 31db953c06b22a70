#include "Stock/CStockChecker.h"

#include "Bounds.h"

#include <utility>

namespace {
/// A text of the file, cut to what fits into a line.
std::string Quote(const std::string& text)
{
    static constexpr size_t kMost = 60;
    size_t length = std::min(text.size(), kMost);
    while (length < text.size() && length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
        --length; // not within a character
    }
    return "'" + text.substr(0, length) + (length < text.size() ? "...'" : "'");
}

bool HasBlanksAround(const std::string& text)
{
    static const std::string kBlanks = " \t\r\n";
    return !text.empty() &&
           (kBlanks.find(text.front()) != std::string::npos || kBlanks.find(text.back()) != std::string::npos);
}
} // namespace

void CStockChecker::Check(const CStock::tEntry& entry)
{
    using eKind = tFinding::eKind;
    using eCount = CStock::tEntry::eCount;
    ++mCount;
    if (entry.state == eCount::kWrong) {
        Report(entry,
               "the count " + Quote(entry.countText) + " is no whole number from 0 to 2147483647, and taken as 0",
               eKind::kDamage);
    } else if (entry.state == eCount::kMissing) {
        Report(entry, "there is no count: it is taken as 0", eKind::kOddity);
    }
    for (const auto& [what, text] : {std::pair("product number", &entry.productNumber), {"library", &entry.library}}) {
        if (HasBlanksAround(*text)) {
            Report(entry, std::string("there are blanks around the ") + what + " " + Quote(*text), eKind::kOddity);
        }
    }
    if (entry.state == eCount::kProper && HasBlanksAround(entry.countText)) {
        Report(entry, "there are blanks around the count " + Quote(entry.countText), eKind::kOddity);
    }
    if (!mArticles.insert(entry.library + '\0' + entry.productNumber).second) {
        Report(entry, "the article is there before: the counts add up", eKind::kOddity);
    }
}

void CStockChecker::ReportBad(const std::string& problem)
{
    tFinding finding;
    finding.element = static_cast<int>(mCount) + 1;
    finding.text = problem;
    mFindings.push_back(finding);
}

void CStockChecker::Report(const CStock::tEntry& entry, const std::string& text, tFinding::eKind kind)
{
    if (mFindings.size() < Bounds::kMostFindings) {
        mFindings.push_back(
            {kind, entry.place.offset, 0, static_cast<int>(mCount), 0,
             "article " + Quote(entry.productNumber) + " of library " + Quote(entry.library) + ": " + text,
             entry.place.line});
    }
}
