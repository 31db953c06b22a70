#include "output/CTable.h"

#include "output/Escapes.h"

#include <algorithm>

namespace {
/// Characters of a UTF-8 text; good enough for columns of numbers and Latin names.
size_t Width(const std::string& text)
{
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

std::string CSVCell(std::string cell, bool isNumber)
{
    if (!isNumber && !cell.empty() && std::string("=+-@\t\r").find(cell[0]) != std::string::npos) {
        cell.insert(0, 1, '\'');
    }
    if (cell.find_first_of(",\"\r\n") == std::string::npos) {
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

std::string CTable::ToText() const
{
    std::vector<size_t> widths;
    std::vector<std::string> titles;
    for (const tColumn& column : mColumns) {
        titles.push_back(column.title);
        widths.push_back(Width(column.title));
    }
    ForEachRow([&widths](const std::vector<std::string>& row) {
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], Width(Escapes::ForTerminal(row[i])));
        }
    });
    std::string text;
    const auto addLine = [&](const std::vector<std::string>& cells) {
        std::string line;
        for (size_t i = 0; i < cells.size(); ++i) {
            const std::string cell = Escapes::ForTerminal(cells[i]);
            const std::string filler(widths[i] - Width(cell), ' ');
            line += (i > 0 ? "  " : "") + (mColumns[i].isNumber ? filler + cell : cell + filler);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    };
    addLine(titles);
    ForEachRow(addLine);
    return text;
}

std::string CTable::ToCSV(bool isForTerminal) const
{
    std::string text;
    const auto addLine = [&text](size_t count, auto cellAt) {
        for (size_t i = 0; i < count; ++i) {
            text += (i > 0 ? "," : "") + cellAt(i);
        }
        text += "\r\n";
    };
    addLine(mColumns.size(), [this](size_t i) { return CSVCell(mColumns[i].title, true); });
    ForEachRow([&](const std::vector<std::string>& row) {
        addLine(row.size(), [&](size_t i) {
            return CSVCell(isForTerminal ? Escapes::ForTerminal(row[i]) : row[i], mColumns[i].isNumber);
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
