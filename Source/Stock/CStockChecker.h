// Says what is wrong with the entries of a stock file.
#pragma once

#include "Checks/tFinding.h"
#include "Stock/CStock.h"

#include <string>
#include <unordered_set>
#include <vector>

/// Looks at one entry after the other. A count that is no number is damage; what is written in an odd way, and what
/// adds up with an earlier entry, is not.
class CStockChecker {
public:
    void Check(const CStock::tEntry& entry);
    /// An entry that ends the reading.
    void ReportBad(const std::string& problem);
    size_t GetCount() const { return mCount; }
    const std::vector<tFinding>& GetFindings() const { return mFindings; }

private:
    void Report(const CStock::tEntry& entry, const std::string& text, tFinding::eKind kind);

    std::vector<tFinding> mFindings;
    std::unordered_set<std::string> mArticles;
    size_t mCount = 0;
};
