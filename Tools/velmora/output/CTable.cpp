#include "output/CTable.h"

#include "output/Escapes.h"

#include <algorithm>

namespace {
/// A text is not broken into lines narrower than this as long as a column can be left out instead.
constexpr size_t kNarrowestText = 16;
/// Between columns.
constexpr size_t kGap = 2;

std::string CSVCell(std::string cell, bool isNumber, char separator)
{
    if (!isNumber && !cell.empty() && std::string("=+-@\t\r").find(cell[0]) != std::string::npos) {
        cell.insert(0, 1, '\'');
    }
    if (cell.find_first_of(std::string("\"\r\n") + separator) == std::string::npos) {
        return cell;
    }
    std::string quoted = "\"";
    for (const char character : cell) {
        quoted += character == '"' ? "\"\"" : std::string(1, character);
    }
    return quoted + '"';
}
} // namespace

void CTable::AddRow(const std::vector<std::string>& cells)
{
    for (const std::string& cell : cells) {
        mCells += cell;
        mLengths.push_back(static_cast<uint32_t>(cell.size()));
    }
}

/// Calls `use` with the cells of each row.
template <typename tUse>
void CTable::ForEachRow(tUse use) const
{
    std::vector<std::string> row(mColumns.size());
    size_t at = 0;
    for (size_t i = 0; i < mLengths.size(); ++i) {
        row[i % row.size()].assign(mCells, at, mLengths[i]);
        at += mLengths[i];
        if ((i + 1) % row.size() == 0) {
            use(row);
        }
    }
}

/// Widths of the columns, 0 for those that are left out.
std::vector<size_t> CTable::ChooseWidths(const tLook& look) const
{
    std::vector<size_t> widths;
    for (const tColumn& column : mColumns) {
        widths.push_back(Terminal::CountColumns(column.title));
    }
    ForEachRow([&](const std::vector<std::string>& row) {
        for (size_t i = 0; i < row.size(); ++i) {
            for (const std::string& line : Terminal::ToLines(row[i], look, tLook::kUnlimited)) {
                widths[i] = std::min(std::max(widths[i], Terminal::CountColumns(line)), look.width);
            }
        }
    });
    const auto add = [&](bool isLeast) {
        size_t sum = 0;
        for (size_t i = 0; i < widths.size(); ++i) {
            const bool isBroken = isLeast && !mColumns[i].isNumber;
            sum += widths[i] > 0 ? kGap + (isBroken ? std::min(widths[i], kNarrowestText) : widths[i]) : 0;
        }
        return sum - std::min(sum, kGap);
    };
    while (look.width != tLook::kUnlimited && add(true) > look.width) {
        size_t leaving = 0;
        for (size_t i = 1; i < widths.size(); ++i) {
            const auto rank = [&](size_t column) { return widths[column] > 0 ? mColumns[column].leaves : 0; };
            leaving = rank(i) > rank(leaving) ? i : leaving;
        }
        if (widths[leaving] == 0 || mColumns[leaving].leaves == 0) {
            break;
        }
        widths[leaving] = 0;
    }
    while (look.width != tLook::kUnlimited && add(false) > look.width) {
        size_t widest = 0;
        for (size_t i = 1; i < widths.size(); ++i) {
            const auto width = [&](size_t column) { return mColumns[column].isNumber ? 0 : widths[column]; };
            widest = width(i) > width(widest) ? i : widest;
        }
        if (mColumns[widest].isNumber || widths[widest] <= 1) {
            break; // too many numbers
        }
        --widths[widest];
    }
    return widths;
}

std::string CTable::ToText(const tLook& look) const
{
    const std::vector<size_t> widths = ChooseWidths(look);
    std::string text;
    const auto addRow = [&](const std::vector<std::string>& cells, bool isHead) {
        std::vector<std::vector<std::string>> lines(cells.size());
        size_t height = 0;
        for (size_t i = 0; i < cells.size(); ++i) {
            lines[i] = Terminal::ToLines(cells[i], look, std::max<size_t>(widths[i], 1));
            height = std::max(height, widths[i] > 0 ? lines[i].size() : 0);
        }
        for (size_t row = 0; row < height; ++row) {
            std::string line;
            for (size_t i = 0; i < cells.size(); ++i) {
                if (widths[i] > 0) {
                    const std::string cell = row < lines[i].size() ? lines[i][row] : std::string();
                    const std::string filler(widths[i] - std::min(widths[i], Terminal::CountColumns(cell)), ' ');
                    line += mColumns[i].isNumber ? filler + cell : cell + filler;
                    line.append(kGap, ' ');
                }
            }
            line.erase(line.find_last_not_of(' ') + 1);
            text += (isHead ? Terminal::Emphasize(line, look) : line) + "\n";
        }
    };
    std::vector<std::string> titles;
    std::string leftOut;
    for (size_t i = 0; i < mColumns.size(); ++i) {
        titles.push_back(mColumns[i].title);
        leftOut += widths[i] > 0 ? "" : (leftOut.empty() ? "" : ", ") + mColumns[i].title;
    }
    addRow(titles, true);
    ForEachRow([&](const std::vector<std::string>& row) { addRow(row, false); });
    if (!leftOut.empty()) {
        text += Terminal::Fit("(no room for: " + leftOut + "; --wide shows them)\n", look);
    }
    return text;
}

std::string CTable::ToCSV(bool isForTerminal, char separator) const
{
    std::string text;
    const auto addLine = [&text, separator](size_t count, auto cellAt) {
        for (size_t i = 0; i < count; ++i) {
            text += (i > 0 ? std::string(1, separator) : std::string()) + cellAt(i);
        }
        text += "\r\n";
    };
    addLine(mColumns.size(), [&](size_t i) { return CSVCell(mColumns[i].title, true, separator); });
    ForEachRow([&](const std::vector<std::string>& row) {
        addLine(row.size(), [&](size_t i) {
            return CSVCell(isForTerminal ? Escapes::ForTerminal(row[i]) : row[i], mColumns[i].isNumber, separator);
        });
    });
    return text;
}

std::string CTable::ToHTML() const
{
    std::string text = "<table>\n<thead><tr>";
    for (const tColumn& column : mColumns) {
        text += std::string("<th") + (column.isNumber ? " class=\"number\">" : ">") + Escapes::ForXML(column.title) +
                "</th>";
    }
    text += "</tr></thead>\n<tbody>\n";
    ForEachRow([&](const std::vector<std::string>& row) {
        text += "<tr>";
        for (size_t i = 0; i < row.size(); ++i) {
            text += std::string("<td") + (mColumns[i].isNumber ? " class=\"number\">" : ">") + Escapes::ForXML(row[i]) +
                    "</td>";
        }
        text += "</tr>\n";
    });
    return text + "</tbody>\n</table>\n";
}
