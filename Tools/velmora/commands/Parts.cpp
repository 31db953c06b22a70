#include "commands/Parts.h"

#include <limits>

namespace {
using tLimits = std::numeric_limits<long long>;

/// Adds to a sum, which stops at the largest number.
void Add(long long& sum, long long number)
{
    if (__builtin_add_overflow(sum, number, &sum)) {
        sum = number < 0 ? tLimits::min() : tLimits::max();
    }
}

long long Times(long long one, long long other)
{
    long long product = 0;
    return !__builtin_mul_overflow(one, other, &product) ? product
           : (one < 0) != (other < 0)                    ? tLimits::min()
                                                         : tLimits::max();
}

/// Adds pieces of an article. @param place  the article, or the part of it on one layer: has the number of pieces
void AddPieces(tParts& parts, const CReport& article, const CReport& place)
{
    const auto [entry, isFirst] = parts.try_emplace(tArticleKey(article.GetText("library"), article.GetText("number")));
    tPart& part = entry->second;
    if (isFirst) { // the first layout's prices count
        part.description = article.GetText("description");
        part.manufacturer = article.GetText("manufacturer");
        part.kind = article.GetText("kind");
        part.price = article.GetNumber("price");
        part.currency = article.GetNumber("currency");
    }
    Add(part.count, place.GetNumber("count"));
    part.toBuy = part.count;
}
} // namespace

long long tPart::GetSum() const
{
    return Times(count, price);
}

void Parts::AddLayout(tPartsList& list, const CReport& report, bool layers)
{
    ++list.layouts;
    list.trackLength += report.GetReal("track_length");
    for (const char* kind : {"tracks", "accessories", "flexible_tracks", "graphics", "texts"}) {
        Add(list.kinds[kind], report.GetNumber(kind));
    }
    report.ForEach("scales", [&list](const CReport& scale) {
        Add(list.scales[scale.GetText("scale")], scale.GetNumber("count"));
    });
    report.ForEach("parts", [&list, layers](const CReport& article) {
        AddPieces(list.parts, article, article);
        const tArticleKey key(article.GetText("library"), article.GetText("number"));
        for (const CReport& layer : article.GetObjects("layers")) {
            const std::vector<double> lengths = layer.GetReals("lengths");
            const auto addLengths = [&](tPart& part) {
                part.lengths.insert(part.lengths.end(), lengths.begin(), lengths.end());
            };
            addLengths(list.parts[key]);
            if (layers) {
                tParts& parts = list.layers[layer.GetText("layer")];
                AddPieces(parts, article, layer);
                addLengths(parts[key]);
            }
        }
    });
}

void Parts::Mark(tPartsList& list, const tArticlesOf& articlesOf)
{
    std::map<std::string, std::set<std::string>> librariesOf; // of each number
    for (const auto& [key, part] : list.parts) {
        librariesOf[key.second].insert(key.first);
    }
    for (const auto& [library, articles] : articlesOf) {
        for (const std::string& number : articles) {
            librariesOf[number].insert(library);
        }
    }
    const auto mark = [&](tParts& parts) {
        for (auto& [key, part] : parts) {
            part.shared = librariesOf[key.second].size() > 1;
            const auto library = articlesOf.find(key.first);
            part.unknown = library != articlesOf.end() && library->second.count(key.second) == 0;
        }
    };
    mark(list.parts);
    for (auto& [name, parts] : list.layers) {
        mark(parts);
    }
}

tAmounts Parts::GetAmounts(const tParts& parts)
{
    tAmounts amounts;
    for (const auto& [key, part] : parts) {
        amounts.emplace_hint(amounts.end(), key, part.count);
    }
    return amounts;
}

void Parts::SetStock(tParts& parts, const tAmounts& stock, const tAmounts& required)
{
    for (auto& [key, part] : parts) {
        const auto owned = stock.find(key);
        part.inStock = owned != stock.end() ? owned->second : 0;
        const auto missing = required.find(key);
        part.toBuy = missing != required.end() ? missing->second : 0;
    }
}

std::vector<tPartsGroup> Parts::GetGroups(const tPartsReport& report, const tPartsList& list)
{
    std::vector<tPartsGroup> groups;
    const auto add = [&](const std::string& name, const tParts::value_type& entry) {
        if (groups.empty() || groups.back().name != name) {
            groups.push_back({name, {}});
        }
        if (!report.toBuyOnly || entry.second.toBuy > 0) {
            groups.back().parts.push_back(&entry);
        }
    };
    if (report.grouping == eGrouping::kLayer) {
        for (const auto& [layer, parts] : list.layers) {
            for (const auto& entry : parts) {
                add(layer, entry);
            }
        }
    } else {
        for (const auto& entry : list.parts) {
            add(report.grouping == eGrouping::kLibrary ? entry.first.first : std::string(), entry);
        }
    }
    std::erase_if(groups, [](const tPartsGroup& group) { return group.parts.empty(); });
    if (groups.empty()) {
        groups.emplace_back(); // a list without parts has its titles
    }
    return groups;
}

tTotals Parts::GetTotals(const std::vector<const tParts::value_type*>& parts)
{
    tTotals totals;
    for (const tParts::value_type* entry : parts) {
        const tPart& part = entry->second;
        Add(totals.pieces, part.count);
        if (part.price == 0) {
            ++totals.withoutPrice;
        } else {
            Add(totals.needed[part.currency], part.GetSum());
            Add(totals.toBuy[part.currency], Times(part.toBuy, part.price));
        }
    }
    return totals;
}
