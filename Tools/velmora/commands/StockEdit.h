// A stock file with other counts in it.
#pragma once

#include "commands/CReport.h"
#include "commands/Parts.h"

#include <string>
#include <vector>

/// The entries of a stock file and its bytes, of which only those of changed counts are replaced: everything else of
/// the file stays as it is written.
class CStockEdit {
public:
    /// @param bytes   the file's
    /// @param report  a worker's, who is not trusted, about the same bytes
    CStockEdit(std::string bytes, const CReport& report);

    /// Takes pieces out, of several entries of an article where one has too few.
    /// @param taken  not more than there are
    void Take(const tAmounts& taken);
    /// Adds pieces to the first entry of their article, or a new entry at the end.
    /// @return empty, or the number of an article that would become more than a count can be
    std::string Put(const tAmounts& put);

    /// The file as it has become. @return false where it is written in a way that cannot be changed
    bool Write(std::string& bytes) const;
    /// Whether a worker's report about what was written says just what it should.
    bool IsAsWanted(const CReport& report) const;

private:
    struct tItem {
        tArticleKey key;
        long long count = 0;
        size_t offset = 0; ///< of the bytes in place of the count
        size_t length = 0;
        bool needsTags = false;
        bool isNew = false;
        bool isChanged = false;
    };
    static tItem MakeItem(const CReport& report);

    std::string mBytes;
    std::vector<tItem> mItems;
};
