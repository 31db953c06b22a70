#include "commands/StockEdit.h"

#include "output/Escapes.h"

#include <algorithm>
#include <limits>

namespace {
constexpr long long kMostCount = std::numeric_limits<int>::max();
constexpr char kEnd[] = "</Velmora_Stock";
} // namespace

CStockEdit::tItem CStockEdit::MakeItem(const CReport& report)
{
    tItem item;
    item.key = {report.GetText("library"), report.GetText("number")};
    item.count = std::clamp(report.GetNumber("count"), 0LL, kMostCount);
    const std::vector<double> place = report.GetReals("place");
    if (place.size() == 3 && place[0] >= 0 && place[0] <= 1e15 && place[1] >= 0 && place[1] <= 1e15) {
        item.offset = static_cast<size_t>(place[0]);
        item.length = static_cast<size_t>(place[1]);
        item.needsTags = place[2] != 0;
    }
    return item;
}

CStockEdit::CStockEdit(std::string bytes, const CReport& report) : mBytes(std::move(bytes))
{
    report.ForEach("items", [this](const CReport& item) { mItems.push_back(MakeItem(item)); });
}

void CStockEdit::Take(const tAmounts& taken)
{
    tAmounts left = taken;
    for (tItem& item : mItems) {
        const auto wanted = left.find(item.key);
        if (wanted != left.end() && wanted->second > 0 && item.count > 0) {
            const long long pieces = std::min(wanted->second, item.count);
            item.count -= pieces;
            item.isChanged = true;
            wanted->second -= pieces;
        }
    }
}

std::string CStockEdit::Put(const tAmounts& put)
{
    tAmounts left = put;
    for (tItem& item : mItems) {
        const auto more = left.find(item.key);
        if (more == left.end()) {
            continue;
        }
        if (more->second > kMostCount - item.count) {
            return item.key.second;
        }
        item.count += more->second;
        item.isChanged = true;
        left.erase(more);
    }
    for (const auto& [key, count] : left) {
        if (count > kMostCount) {
            return key.second;
        }
        tItem item;
        item.key = key;
        item.count = count;
        item.isNew = true;
        mItems.push_back(item);
    }
    return {};
}

bool CStockEdit::Write(std::string& bytes) const
{
    bytes.clear();
    size_t at = 0;
    std::string added;
    for (const tItem& item : mItems) {
        const std::string count = std::to_string(item.count);
        if (item.isNew) {
            added += "\t<StockItem>\n\t\t<ProductNr>" + Escapes::ForXML(item.key.second) +
                     "</ProductNr>\n\t\t<Railset>" + Escapes::ForXML(item.key.first) + "</Railset>\n\t\t<Count>" +
                     count + "</Count>\n\t</StockItem>\n";
        } else if (item.isChanged) {
            if (item.offset == 0 || item.offset < at || item.offset > mBytes.size() ||
                item.length > mBytes.size() - item.offset) {
                return false;
            }
            bytes.append(mBytes, at, item.offset - at);
            bytes += item.needsTags ? "<Count>" + count + "</Count>" : count;
            at = item.offset + item.length;
        }
    }
    const size_t end = added.empty() ? mBytes.size() : mBytes.rfind(kEnd);
    if (end == std::string::npos || end < at) {
        return false;
    }
    bytes.append(mBytes, at, end - at);
    if (!added.empty()) {
        bytes += (bytes.ends_with('\n') ? "" : "\n") + added;
    }
    bytes.append(mBytes, end);
    return true;
}

bool CStockEdit::IsAsWanted(const CReport& report) const
{
    size_t at = 0;
    bool isAsWanted = report.GetCount("items") == mItems.size();
    report.ForEach("items", [&](const CReport& entry) {
        const tItem item = MakeItem(entry);
        isAsWanted = isAsWanted && item.key == mItems[at].key && item.count == mItems[at].count;
        ++at;
    });
    return isAsWanted;
}
