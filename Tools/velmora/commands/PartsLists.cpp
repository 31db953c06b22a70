// Lists of parts for people, and as a plain table.
#include "commands/Parts.h"

#include "output/Escapes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

namespace {
/// Different lengths that are named of one article; a plan has few, a list that goes on helps nobody.
constexpr size_t kMostLengths = 12;

/// A measure with at most one decimal, and no idle one: nobody saws finer.
std::string Millimetres(double length)
{
    char text[400];
    snprintf(text, sizeof text, "%.1f", length);
    std::string trimmed = text;
    return trimmed.ends_with(".0") ? trimmed.substr(0, trimmed.size() - 2) : trimmed;
}

std::string NameOf(const tPartsReport& report, const std::string& group)
{
    const bool isLayer = report.grouping == eGrouping::kLayer;
    return group.empty() ? (isLayer ? "no layer" : "no library") : (isLayer ? "layer " : "library ") + group;
}

bool HasUnknownCurrency(const tPartsReport& report, const tPartsGroup& group)
{
    return std::any_of(group.parts.begin(), group.parts.end(), [&report](const tParts::value_type* entry) {
        return report.currencies.Find(entry->second.currency) == nullptr;
    });
}

/// A line for each currency.
void AddTotals(std::vector<std::string>& lines, const tPartsReport& report, const std::string& label,
               const std::map<long long, long long>& totals)
{
    for (const auto& [currency, sum] : totals) {
        const bool isKnown = report.currencies.Find(currency) != nullptr;
        lines.push_back(label + (isKnown ? "" : " in currency " + std::to_string(currency)) + ": " +
                        report.currencies.Format(sum, currency, report.money));
    }
}

std::string ListAsText(const tPartsReport& report, const tPartsList& list, const tLook& look)
{
    std::string text;
    const auto addLines = [&](const std::vector<std::string>& lines) {
        for (const std::string& line : lines) {
            for (const std::string& fitting : Terminal::ToLines(line, look, look.width)) {
                text += fitting + "\n";
            }
        }
    };
    for (const tPartsGroup& group : Parts::GetGroups(report, list)) {
        const std::string heading = Parts::GetHeading(report, group);
        addLines(heading.empty() ? std::vector<std::string>() : std::vector<std::string>{heading + ":"});
        text += Parts::MakeTable(report, group).ToText(look);
        addLines(Parts::SummarizeGroup(report, group));
        text += "\n";
    }
    addLines(Parts::Summarize(report, list));
    return text;
}
} // namespace

std::string Parts::DescribeLengths(const std::vector<double>& lengths)
{
    std::map<long long, size_t, std::greater<>> pieces; // by tenths of a millimetre
    for (const double length : lengths) {
        if (std::isfinite(length)) {
            ++pieces[std::llround(std::clamp(length, 0.0, 1e12) * 10.0)];
        }
    }
    std::string text;
    size_t named = 0;
    for (const auto& [tenths, count] : pieces) {
        if (++named > kMostLengths) {
            return text + ", and " + std::to_string(pieces.size() - kMostLengths) + " other lengths";
        }
        text += (text.empty() ? "" : ", ") + (count > 1 ? std::to_string(count) + " x " : std::string()) +
                Millimetres(static_cast<double>(tenths) / 10.0);
    }
    return text;
}

std::string Parts::DescribeRemarks(const tPart& part)
{
    std::string remarks = part.shared ? "number in several libraries" : "";
    if (part.unknown) {
        remarks += std::string(remarks.empty() ? "" : ", ") + "not in its library";
    }
    return remarks;
}

std::string Parts::GetHeading(const tPartsReport& report, const tPartsGroup& group)
{
    std::string name = report.grouping == eGrouping::kNone ? std::string() : NameOf(report, group.name);
    if (!name.empty()) {
        name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    }
    return name;
}

CTable Parts::MakeTable(const tPartsReport& report, const tPartsGroup& group, bool hasBoxes)
{
    const bool hasLengths = std::any_of(group.parts.begin(), group.parts.end(),
                                        [](const tParts::value_type* entry) { return !entry->second.lengths.empty(); });
    const bool hasCurrency = HasUnknownCurrency(report, group);
    std::vector<CTable::tColumn> columns;
    const auto addColumn = [&columns](bool isShown, const char* title, bool isNumber, unsigned leaves) {
        if (isShown) {
            columns.push_back({title, isNumber, leaves});
        }
    };
    addColumn(hasBoxes, "", false, 0);
    addColumn(true, "Library", false, 4);
    addColumn(true, "Number", false, 0);
    addColumn(true, "Description", false, 1);
    addColumn(true, "Manufacturer", false, 7);
    addColumn(hasLengths, "Lengths (mm)", false, 2);
    addColumn(true, "Count", true, 0);
    addColumn(true, "Price", true, 5);
    addColumn(true, "Sum", true, 3);
    addColumn(hasCurrency, "Currency", true, 6);
    addColumn(report.hasStock, "In stock", true, 1);
    addColumn(report.hasStock, "To buy", true, 0);
    addColumn(true, "Remarks", false, 8);
    CTable table(columns);
    for (const tParts::value_type* entry : group.parts) {
        const auto& [key, part] = *entry;
        std::vector<std::string> row;
        const auto add = [&row](bool isShown, const std::string& cell) {
            if (isShown) {
                row.push_back(cell);
            }
        };
        add(hasBoxes, "☐");
        for (const std::string* text : {&key.first, &key.second, &part.description, &part.manufacturer}) {
            add(true, *text);
        }
        add(hasLengths, DescribeLengths(part.lengths));
        add(true, std::to_string(part.count));
        add(true, report.currencies.Format(part.price, part.currency, report.money));
        add(true, report.currencies.Format(part.GetSum(), part.currency, report.money));
        add(hasCurrency, std::to_string(part.currency));
        add(report.hasStock, std::to_string(part.inStock));
        add(report.hasStock, std::to_string(part.toBuy));
        add(true, DescribeRemarks(part));
        table.AddRow(row);
    }
    return table;
}

std::vector<std::string> Parts::SummarizeGroup(const tPartsReport& report, const tPartsGroup& group)
{
    std::vector<std::string> lines;
    if (report.grouping != eGrouping::kNone) {
        const tTotals totals = GetTotals(group.parts);
        lines.push_back("Pieces: " + std::to_string(totals.pieces));
        AddTotals(lines, report, "Subtotal", totals.needed);
        if (report.hasStock) {
            AddTotals(lines, report, "To buy", totals.toBuy);
        }
    }
    return lines;
}

std::vector<std::string> Parts::Summarize(const tPartsReport& report, const tPartsList& list)
{
    std::vector<std::string> lines;
    tPartsGroup all;
    for (const auto& entry : list.parts) {
        all.parts.push_back(&entry);
    }
    const tTotals totals = GetTotals(all.parts);
    AddTotals(lines, report, "Total", totals.needed);
    if (report.hasStock) {
        AddTotals(lines, report, "To buy", totals.toBuy);
    }
    if (totals.withoutPrice > 0) {
        lines.push_back("Parts without a price: " + std::to_string(totals.withoutPrice));
    }
    const std::vector<std::string> contents = DescribeContents(list);
    lines.insert(lines.end(), contents.begin(), contents.end());
    return lines;
}

std::vector<std::string> Parts::DescribeContents(const tPartsList& list)
{
    std::vector<std::string> lines;
    char length[64];
    snprintf(length, sizeof length, "Track length: %.2f m", list.trackLength / 1000.0);
    lines.emplace_back(length);
    const auto kind = [&list](const char* name) { return std::to_string(list.kinds.at(name)); };
    if (!list.kinds.empty()) {
        lines.push_back("Elements: " + kind("tracks") + " tracks, " + kind("flexible_tracks") + " flexible tracks, " +
                        kind("accessories") + " accessories, " + kind("graphics") + " graphics, " + kind("texts") +
                        " texts");
    }
    for (const auto& [scale, count] : list.scales) {
        lines.push_back("Scale " + scale + ": " + std::to_string(count) + " tracks");
    }
    return lines;
}

std::string Parts::FormatText(const tPartsReport& report, const tLook& look)
{
    std::string text;
    if (report.perLayout) {
        for (const tPartsLayout& layout : report.layouts) {
            text += Escapes::ForTerminal(layout.path) + ":\n" + ListAsText(report, layout.list, look) + "\n";
        }
        text += "All layouts:\n";
    }
    return text + ListAsText(report, report.total, look);
}

CTable Parts::MakePlainTable(const tPartsReport& report)
{
    const bool hasLayers = report.grouping == eGrouping::kLayer;
    std::vector<CTable::tColumn> columns;
    if (report.perLayout) {
        columns.push_back({"Layout"});
    }
    if (hasLayers) {
        columns.push_back({"Layer"});
    }
    columns.insert(columns.end(), {{"Library"},
                                   {"Number"},
                                   {"Description"},
                                   {"Manufacturer"},
                                   {"Count", true},
                                   {"Price", true},
                                   {"Sum", true},
                                   {"Currency", true}});
    if (report.hasStock) {
        columns.insert(columns.end(), {{"In stock", true}, {"To buy", true}});
    }
    columns.insert(columns.end(), {{"Remarks"}, {"Length", true}, {"Lengths"}, {"Currency code"}});
    CTable table(columns);
    const auto addList = [&](const std::string& layout, const tPartsList& list) {
        for (const tPartsGroup& group : GetGroups(report, list)) {
            for (const tParts::value_type* entry : group.parts) {
                const auto& [key, part] = *entry;
                std::vector<std::string> row;
                if (report.perLayout) {
                    row.push_back(layout);
                }
                if (hasLayers) {
                    row.push_back(group.name);
                }
                row.insert(row.end(),
                           {key.first, key.second, part.description, part.manufacturer, std::to_string(part.count),
                            std::to_string(part.price), std::to_string(part.GetSum()), std::to_string(part.currency)});
                if (report.hasStock) {
                    row.insert(row.end(), {std::to_string(part.inStock), std::to_string(part.toBuy)});
                }
                std::string lengths;
                for (const double length : part.lengths) {
                    lengths += (lengths.empty() ? "" : " ") + Millimetres(length);
                }
                const tCurrency* const currency = report.currencies.Find(part.currency);
                const double sum = std::accumulate(part.lengths.begin(), part.lengths.end(), 0.0);
                row.insert(row.end(), {DescribeRemarks(part), part.lengths.empty() ? "" : Millimetres(sum), lengths,
                                       currency != nullptr ? currency->code : ""});
                table.AddRow(row);
            }
        }
    };
    if (report.perLayout) {
        for (const tPartsLayout& layout : report.layouts) {
            addList(layout.path, layout.list);
        }
    }
    addList("", report.total);
    return table;
}
