// Rows and columns, for people, programs and printers.
#pragma once

#include "output/Terminal.h"

#include <cstdint>
#include <string>
#include <vector>

/// A table of texts. Every row has as many cells as there are columns.
class CTable {
public:
    struct tColumn {
        std::string title;
        bool isNumber = false; ///< right-aligned; in CSV never guarded
        /// Where a line does not hold all columns those with the highest number go first; one with 0 stays.
        unsigned leaves = 0;
    };

    explicit CTable(std::vector<tColumn> columns) : mColumns(std::move(columns)) {}

    void AddRow(const std::vector<std::string>& cells);
    bool IsEmpty() const { return mLengths.empty(); }

    /// Columns side by side, with a line of titles; control characters escaped. Where that is too wide for the look,
    /// texts are broken into lines, the widest column's first; where they get too narrow, columns are left out, and a
    /// last line names them. Numbers are shown whole.
    std::string ToText(const tLook& look = {}) const;
    /// RFC 4180 with a line of titles. A text that a spreadsheet would take for a formula gets an apostrophe in front.
    /// @param isForTerminal  control characters are escaped
    /// @param separator      between cells
    std::string ToCSV(bool isForTerminal = false, char separator = ',') const;
    /// An HTML table.
    std::string ToHTML() const;

private:
    template <typename tUse>
    void ForEachRow(tUse use) const;
    std::vector<size_t> ChooseWidths(const tLook& look) const;

    std::vector<tColumn> mColumns;
    std::string mCells;             ///< one behind the other: a text each would take several times the memory
    std::vector<uint32_t> mLengths; ///< of the cells
};
