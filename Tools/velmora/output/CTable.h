// Rows and columns, for people, programs and printers.
#pragma once

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

    void AddRow(std::vector<std::string> cells) { mRows.push_back(std::move(cells)); }
    bool IsEmpty() const { return mRows.empty(); }

    /// Columns side by side, with a line of titles; control characters escaped.
    std::string ToText() const;
    /// RFC 4180 with a line of titles. A text that a spreadsheet would take for a formula gets an apostrophe in front.
    /// @param isForTerminal  control characters are escaped
    std::string ToCSV(bool isForTerminal = false) const;
    /// An HTML table.
    std::string ToHTML() const;

private:
    std::vector<tColumn> mColumns;
    std::vector<std::vector<std::string>> mRows;
};
