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

std::string CTable::ToText() const
{
    std::vector<std::vector<std::string>> lines(1);
    for (const tColumn& column : mColumns) {
        lines[0].push_back(column.title);
    }
    for (const std::vector<std::string>& row : mRows) {
        lines.emplace_back();
        for (const std::string& cell : row) {
            lines.back().push_back(Escapes::ForTerminal(cell));
        }
    }
    std::vector<size_t> widths(mColumns.size());
    for (const std::vector<std::string>& line : lines) {
        for (size_t i = 0; i < line.size(); ++i) {
            widths[i] = std::max(widths[i], Width(line[i]));
        }
    }
    std::string text;
    for (const std::vector<std::string>& line : lines) {
        std::string row;
        for (size_t i = 0; i < line.size(); ++i) {
            const std::string filler(widths[i] - Width(line[i]), ' ');
            row += (i > 0 ? "  " : "") + (mColumns[i].isNumber ? filler + line[i] : line[i] + filler);
        }
        row.erase(row.find_last_not_of(' ') + 1);
        text += row + "\n";
    }
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
    for (const std::vector<std::string>& row : mRows) {
        addLine(row.size(), [&](size_t i) {
            return CSVCell(isForTerminal ? Escapes::ForTerminal(row[i]) : row[i], mColumns[i].isNumber);
        });
    }
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
    for (const std::vector<std::string>& row : mRows) {
        text += "<tr>";
        for (size_t i = 0; i < row.size(); ++i) {
            text += std::string("<td") + (mColumns[i].isNumber ? " class=\"number\">" : ">") + Escapes::ForXML(row[i]) +
                    "</td>";
        }
        text += "</tr>\n";
    }
    return text + "</tbody>\n</table>\n";
}
