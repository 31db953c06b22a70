// Rows and columns, for people, programs and printers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A table of texts. Every row has as many cells as there are columns.
class CTable {
public:
    struct tColumn {
        std::string title;
        bool isNumber = false; ///< right-aligned; in CSV never guarded
    };

    explicit CTable(std::vector<tColumn> columns) : mColumns(std::move(columns)) {}

    void AddRow(const std::vector<std::string>& cells);
    bool IsEmpty() const { return mLengths.empty(); }

    /// Columns side by side, with a line of titles; control characters escaped.
    std::string ToText() const;
    /// RFC 4180 with a line of titles. A text that a spreadsheet would take for a formula gets an apostrophe in front.
    /// @param isForTerminal  control characters are escaped
    std::string ToCSV(bool isForTerminal = false) const;
    /// An HTML table.
    std::string ToHTML() const;

private:
    template <typename tUse>
    void ForEachRow(tUse use) const;

    std::vector<tColumn> mColumns;
    std::string mCells;             ///< one behind the other: a text each would take several times the memory
    std::vector<uint32_t> mLengths; ///< of the cells
};
