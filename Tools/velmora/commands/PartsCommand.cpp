// velmora parts: the list of parts of one or more layouts, and what of it must still be bought.
#include "ExitCodes.h"
#include "Places.h"
#include "commands/Batch.h"
#include "commands/Parts.h"
#include "input/DocumentNames.h"
#include "input/LibraryFiles.h"
#include "output/CTable.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <algorithm>
#include <limits>
#include <unistd.h>

namespace {
struct tPartsOptions : tBatchOptions {
    std::string format = "text";
    std::string stock;                  ///< a stock file; empty for the user's
    bool noStock = false;               ///< not even the user's
    std::vector<std::string> libraries; ///< track library files, and folders of them
};

/// What is added up to a total.
using tAmount = long long (*)(const tPart&);

struct tTotals {
    std::map<long long, long long> byCurrency;
    size_t withoutPrice = 0;
};
} // namespace

static void AddPartsOptions(CParser& parser, tPartsOptions& options)
{
    AddBatchOptions(parser, options, "Layouts, added up; folders are searched for layouts");
    const COption stock =
        parser
            .Add("--stock", options.stock,
                 "A stock file: shows what is there and what must be bought (default: the user's, if there is "
                 "one)")
            .Named("FILE");
    parser.AddFlag("--no-stock", options.noStock, "Leave the user's stock out").Without(stock);
    parser
        .Add("--library", options.libraries,
             "A track library, or a folder of them, besides those in VELMORA_LIBRARIES and the user's "
             "library folder: marks numbers that libraries share, and parts that their library lacks")
        .TakesOne() // one path for each --library, or it would take the layouts as well
        .Named("PATH");
    AddFormatOption(parser, options.format, {"text", "csv", "json", "html"},
                    "text (for people), csv, json (one object) or html (a page to print)");
}

static std::string CheckParts(const tPartsOptions& options)
{
    return CheckBatchOptions(options, "add up");
}

using tLimits = std::numeric_limits<long long>;

/// Adds to a sum, which stops at the largest number.
static void Add(long long& sum, long long number)
{
    if (__builtin_add_overflow(sum, number, &sum)) {
        sum = number < 0 ? tLimits::min() : tLimits::max();
    }
}

static long long Times(long long one, long long other)
{
    long long product = 0;
    return !__builtin_mul_overflow(one, other, &product) ? product
           : (one < 0) != (other < 0)                    ? tLimits::min()
                                                         : tLimits::max();
}

long long tPart::GetSum() const
{
    return Times(count, price);
}

long long tPart::GetToBuy() const
{
    long long left = 0;
    return count <= inStock ? 0 : __builtin_sub_overflow(count, inStock, &left) ? tLimits::max() : left;
}

void Parts::AddLayout(tPartsList& list, const CReport& report)
{
    ++list.layouts;
    list.trackLength += report.GetReal("track_length");
    for (const char* kind : {"tracks", "accessories", "flexible_tracks", "graphics", "texts"}) {
        Add(list.kinds[kind], report.GetNumber(kind));
    }
    report.ForEach("scales", [&list](const CReport& scale) {
        Add(list.scales[scale.GetText("scale")], scale.GetNumber("count"));
    });
    report.ForEach("parts", [&list](const CReport& article) {
        tPart& part = list.parts[{article.GetText("library"), article.GetText("number")}];
        if (part.count == 0) { // the first layout's prices count
            part.description = article.GetText("description");
            part.manufacturer = article.GetText("manufacturer");
            part.kind = article.GetText("kind");
            part.price = article.GetNumber("price");
            part.currency = article.GetNumber("currency");
        }
        Add(part.count, article.GetNumber("count"));
    });
}

void Parts::Mark(tPartsList& list, const std::map<std::string, std::set<std::string>>& articlesOf)
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
    for (auto& [key, part] : list.parts) {
        part.shared = librariesOf[key.second].size() > 1;
        const auto library = articlesOf.find(key.first);
        part.unknown = library != articlesOf.end() && library->second.count(key.second) == 0;
    }
}

static tTotals GetTotals(const tPartsList& list, tAmount amount)
{
    tTotals totals;
    for (const auto& [key, part] : list.parts) {
        if (part.price == 0) {
            ++totals.withoutPrice;
        } else {
            Add(totals.byCurrency[part.currency], Times(amount(part), part.price));
        }
    }
    return totals;
}

static long long Needed(const tPart& part)
{
    return part.count;
}

static long long ToBuy(const tPart& part)
{
    return part.GetToBuy();
}

static std::string Remarks(const tPart& part)
{
    std::string remarks = part.shared ? "number in several libraries" : "";
    if (part.unknown) {
        remarks += std::string(remarks.empty() ? "" : ", ") + "not in its library";
    }
    return remarks;
}

CTable Parts::MakeTable(const tPartsList& list)
{
    std::vector<CTable::tColumn> columns = {{"Library"},     {"Number"},      {"Description"}, {"Manufacturer"},
                                            {"Count", true}, {"Price", true}, {"Sum", true},   {"Currency", true}};
    if (list.hasStock) {
        columns.push_back({"In stock", true});
        columns.push_back({"To buy", true});
    }
    columns.push_back({"Remarks"});
    CTable table(columns);
    for (const auto& [key, part] : list.parts) {
        std::vector<std::string> row = {key.first,
                                        key.second,
                                        part.description,
                                        part.manufacturer,
                                        std::to_string(part.count),
                                        std::to_string(part.price),
                                        std::to_string(part.GetSum()),
                                        std::to_string(part.currency)};
        if (list.hasStock) {
            row.push_back(std::to_string(part.inStock));
            row.push_back(std::to_string(part.GetToBuy()));
        }
        row.push_back(Remarks(part));
        table.AddRow(row);
    }
    return table;
}

std::vector<std::string> Parts::Summarize(const tPartsList& list)
{
    std::vector<std::string> lines;
    const auto addTotals = [&](const char* label, const tTotals& totals) {
        for (const auto& [currency, sum] : totals.byCurrency) {
            lines.push_back(std::string(label) + " in currency " + std::to_string(currency) + ": " +
                            std::to_string(sum));
        }
    };
    const tTotals needed = GetTotals(list, Needed);
    addTotals("Total", needed);
    if (list.hasStock) {
        addTotals("To buy", GetTotals(list, ToBuy));
    }
    if (needed.withoutPrice > 0) {
        lines.push_back("Parts without a price: " + std::to_string(needed.withoutPrice));
    }
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

std::string Parts::FormatJSON(const tPartsList& list)
{
    CJSONObject object;
    object.Put("ok", true);
    object.Put("layouts", list.layouts);
    object.BeginList("parts");
    for (const auto& [key, part] : list.parts) {
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
        if (list.hasStock) {
            entry["in_stock"] = part.inStock;
            entry["to_buy"] = part.GetToBuy();
        }
        object.Add(entry);
    }
    object.EndList();
    const auto totalsOf = [](const tTotals& totals) {
        JSON::tRecord sums = JSON::tRecord::array();
        for (const auto& [currency, sum] : totals.byCurrency) {
            sums.push_back({{"currency", currency}, {"sum", sum}});
        }
        return sums;
    };
    const tTotals needed = GetTotals(list, Needed);
    object.Put("totals", totalsOf(needed));
    if (list.hasStock) {
        object.Put("to_buy", totalsOf(GetTotals(list, ToBuy)));
    }
    object.PutAll({{"without_price", needed.withoutPrice},
                   {"track_length", list.trackLength},
                   {"elements", list.kinds},
                   {"scales", list.scales}});
    return object.Take() + "\n";
}

std::string Parts::FormatHTML(const tPartsList& list, const std::vector<std::string>& paths)
{
    std::string page =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>Parts list</title>\n"
        "<style>\n"
        "body { font: 10pt/1.4 \"DejaVu Sans\", Helvetica, Arial, sans-serif; margin: 2em; color: #222; }\n"
        "h1 { font-size: 16pt; margin: 0 0 0.2em; }\n"
        "p { margin: 0.2em 0; }\n"
        "table { border-collapse: collapse; margin: 1em 0; width: 100%; }\n"
        "th { text-align: left; border-bottom: 2px solid #444; }\n"
        "td { border-bottom: 1px solid #ccc; }\n"
        "th, td { padding: 0.25em 0.6em 0.25em 0; vertical-align: top; }\n"
        ".number { text-align: right; white-space: nowrap; }\n"
        "tr { break-inside: avoid; }\n"
        "@page { size: A4 landscape; margin: 12mm; }\n"
        "@media print { body { margin: 0; font-size: 8pt; } thead { display: table-header-group; } }\n"
        "</style>\n</head>\n<body>\n<h1>Parts list</h1>\n";
    for (const std::string& path : paths) {
        page += "<p>" + Escapes::ForXML(Escapes::ForTerminal(DocumentNames::NameOfFile(path))) + "</p>\n";
    }
    page += MakeTable(list).ToHTML();
    for (const std::string& line : Summarize(list)) {
        page += "<p>" + Escapes::ForXML(line) + "</p>\n";
    }
    return page + "</body>\n</html>\n";
}

static std::string Format(const tPartsList& list, const tPartsOptions& options)
{
    if (options.format == "csv") {
        return Parts::MakeTable(list).ToCSV(isatty(STDOUT_FILENO) != 0);
    }
    if (options.format == "html") {
        return Parts::FormatHTML(list, options.paths);
    }
    std::string text = Parts::MakeTable(list).ToText() + "\n";
    for (const std::string& line : Parts::Summarize(list)) {
        text += Escapes::ForTerminal(line) + "\n";
    }
    return text;
}

/// The stock to compare with. @param usersFile  what the user's preferences call theirs @return empty for none
static std::string FindStock(const tPartsOptions& options, const std::string& usersFile)
{
    if (!options.stock.empty() || options.noStock) {
        return options.stock;
    }
    std::string path = Places::FindStock(usersFile);
    if (path.empty() || access(path.c_str(), F_OK) != 0) {
        return {};
    }
    COutput::PrintMessage("compared with the stock file " + Escapes::ForTerminal(path) + "; --no-stock leaves it out");
    return path;
}

static int RunParts(const tPartsOptions& options)
{
    CBatch batch(options);
    const bool wantsStock = options.stock.empty() && !options.noStock;
    if (const std::optional<int> status =
            batch.Begin([&](tWorkerSettings& settings) { settings.tellsStockFile = wantsStock; })) {
        return *status;
    }
    tPartsList list;
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    CJSONLines* const linesOrNone = options.format == "json" ? &lines : nullptr;
    int worst = batch.RunForReports(
        {eVerb::kParts},
        [&list](const tInput&, const tAnswer&, const CReport& report) { Parts::AddLayout(list, report); }, output,
        linesOrNone, "read");
    const auto askBesides = [&](eVerb verb, const std::vector<std::string>& paths,
                                const std::function<void(const CReport&)>& use) {
        if (worst != kExitInterrupted && !paths.empty()) {
            worst = std::max(worst, batch.AskBesides(
                                        {verb}, paths,
                                        [&use](const tInput&, const tAnswer&, const CReport& report) { use(report); },
                                        output, linesOrNone));
        }
    };
    std::map<std::string, std::set<std::string>> articlesOf;
    askBesides(eVerb::kLibrary, LibraryFiles::Find(options.libraries), [&articlesOf](const CReport& report) {
        // Names may also be the same once the core has turned them into what layouts hold: the first counts then.
        const auto [library, isFirst] = articlesOf.try_emplace(report.GetText("name"));
        if (isFirst) {
            report.ForEach("articles", [&known = library->second](const CReport& article) {
                known.insert(article.GetText("number"));
            });
        }
    });
    const std::string stock = FindStock(options, batch.GetGreeting().stockFile);
    if (!stock.empty()) {
        askBesides(eVerb::kStock, {stock}, [&list](const CReport& report) {
            list.hasStock = true;
            report.ForEach("items", [&list](const CReport& item) {
                const auto part = list.parts.find({item.GetText("library"), item.GetText("number")});
                if (part != list.parts.end()) {
                    Add(part->second.inStock, item.GetNumber("count"));
                }
            });
        });
    }
    Parts::Mark(list, articlesOf);
    if (worst != kExitInterrupted && list.layouts > 0) { // half a sum would be none
        if (linesOrNone != nullptr) {
            lines.WriteLine(Parts::FormatJSON(list));
        } else {
            output.Write(Format(list, options));
        }
    }
    return FinishOutput(output, worst);
}

const tCommand kPartsCommand = {"parts", "List the parts of layouts, and what must be bought",
                                "  velmora parts plan.velmora\n"
                                "  velmora parts --stock Stock.xml --format html plan.velmora > parts.html\n",
                                CallCommand<tPartsOptions, AddPartsOptions, RunParts, CheckParts>};
