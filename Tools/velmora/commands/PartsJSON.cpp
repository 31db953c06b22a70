// The list of parts as JSON.
#include "commands/Parts.h"
#include "output/JSON.h"

namespace {
JSON::tRecord MakeEntry(const tPartsReport& report, const tParts::value_type& named)
{
    const auto& [key, part] = named;
    JSON::tRecord entry = {{"library", key.first},
                           {"number", key.second},
                           {"description", part.description},
                           {"manufacturer", part.manufacturer},
                           {"kind", part.kind},
                           {"count", part.count},
                           {"price", part.price},
                           {"sum", part.GetSum()},
                           {"currency", part.currency},
                           {"shared_number", part.shared},
                           {"unknown", part.unknown}};
    if (report.hasStock) {
        entry["in_stock"] = part.inStock;
        entry["to_buy"] = part.toBuy;
    }
    if (!part.lengths.empty()) {
        entry["lengths"] = part.lengths;
    }
    if (const tCurrency* const currency = report.currencies.Find(part.currency)) {
        entry["currency_code"] = currency->code;
        entry["decimals"] = currency->decimals;
    }
    return entry;
}

JSON::tRecord MakeSums(const tPartsReport& report, const std::map<long long, long long>& totals)
{
    JSON::tRecord sums = JSON::tRecord::array();
    for (const auto& [number, sum] : totals) {
        JSON::tRecord entry = {{"currency", number}, {"sum", sum}};
        if (const tCurrency* const currency = report.currencies.Find(number)) {
            entry["currency_code"] = currency->code;
            entry["decimals"] = currency->decimals;
        }
        sums.push_back(entry);
    }
    return sums;
}

/// What both a list and a group have behind their parts.
JSON::tRecord MakeTotals(const tPartsReport& report, const tTotals& totals)
{
    JSON::tRecord record = {{"totals", MakeSums(report, totals.needed)}};
    if (report.hasStock) {
        record["to_buy"] = MakeSums(report, totals.toBuy);
    }
    record["without_price"] = totals.withoutPrice;
    return record;
}

void PutList(CJSONObject& object, const tPartsReport& report, const tPartsList& list)
{
    std::vector<const tParts::value_type*> all;
    object.BeginList("parts");
    for (const auto& entry : list.parts) {
        all.push_back(&entry);
        if (!report.toBuyOnly || entry.second.toBuy > 0) {
            object.Add(MakeEntry(report, entry));
        }
    }
    object.EndList();
    object.PutAll(MakeTotals(report, Parts::GetTotals(all)));
    object.PutAll({{"track_length", list.trackLength}, {"elements", list.kinds}, {"scales", list.scales}});
    if (report.grouping == eGrouping::kNone) {
        return;
    }
    object.BeginList("groups");
    for (const tPartsGroup& group : Parts::GetGroups(report, list)) {
        const tTotals totals = Parts::GetTotals(group.parts);
        JSON::tRecord record = {{report.grouping == eGrouping::kLayer ? "layer" : "library", group.name},
                                {"count", totals.pieces},
                                {"parts", JSON::tRecord::array()}};
        for (const tParts::value_type* entry : group.parts) {
            record["parts"].push_back(MakeEntry(report, *entry));
        }
        record.update(MakeTotals(report, totals));
        object.Add(record);
    }
    object.EndList();
}
} // namespace

std::string Parts::FormatJSON(const tPartsReport& report)
{
    CJSONObject object;
    object.Put("ok", true);
    object.Put("layouts", report.total.layouts);
    PutList(object, report, report.total);
    if (report.perLayout) {
        object.BeginList("by_layout");
        for (const tPartsLayout& layout : report.layouts) {
            CJSONObject one;
            JSON::PutPath(one, "path", layout.path);
            one.PutAll({{"author", layout.author}, {"revision", layout.revision}});
            PutList(one, report, layout.list);
            object.Add(JSON::tRecord::parse(one.Take()));
        }
        object.EndList();
    }
    return object.Take() + "\n";
}
