// velmora library and velmora stock: what a track library or a stock file holds.
#include "commands/Inquiry.h"
#include "commands/Reports.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <unistd.h>

namespace {
struct tListOptions : tWorkerOptions {
    std::vector<std::string> paths;
    std::string format = "text";
};
} // namespace

static void AddListOptions(CParser& parser, tListOptions& options, const char* what)
{
    parser.Add("FILE", options.paths, what);
    AddFormatOption(parser, options.format, {"text", "json", "csv"},
                    "text (for people), json (an object a file) or csv");
    AddWorkerOptions(parser, options);
}

static void AddLibraryOptions(CParser& parser, tListOptions& options)
{
    AddListOptions(parser, options, "Track library files");
}

static void AddStockOptions(CParser& parser, tListOptions& options)
{
    AddListOptions(parser, options, "A stock file");
}

static std::string CheckFiles(const tListOptions& options)
{
    return options.paths.empty() ? "name the file to list" : "";
}

/// A measure with at most two decimals and no idle ones.
static std::string Millimetres(double length)
{
    char text[400];
    snprintf(text, sizeof text, "%.2f", length);
    std::string trimmed = text;
    trimmed.erase(trimmed.find_last_not_of('0') + 1);
    return trimmed.back() == '.' ? trimmed.substr(0, trimmed.size() - 1) : trimmed;
}

static std::string Dimension(const CReport& article)
{
    if (article.Has("radius")) {
        return "R " + Millimetres(article.GetReal("radius")) + " mm, " + Millimetres(article.GetReal("arc")) + "°";
    }
    if (article.Has("maximum_length")) {
        return "up to " + Millimetres(article.GetReal("maximum_length")) + " mm";
    }
    return article.Has("length") ? Millimetres(article.GetReal("length")) + " mm" : "";
}

CTable Reports::ArticleTable(const std::string& library, const CReport& report)
{
    CTable table(
        {{"Library"}, {"Number"}, {"Description"}, {"Kind"}, {"Dimensions"}, {"Price", true}, {"Currency", true}});
    report.ForEach("articles", [&](const CReport& article) {
        table.AddRow({library, article.GetText("number"), article.GetText("description"), article.GetText("kind"),
                      Dimension(article), std::to_string(article.GetNumber("price")),
                      std::to_string(article.GetNumber("currency"))});
    });
    return table;
}

std::string Reports::LibraryInJSON(const std::string& path, const CReport& report)
{
    CJSONObject object;
    JSON::PutPath(object, "path", path);
    object.PutAll({{"name", NameOfFile(path)},
                   {"manufacturer", report.GetText("manufacturer")},
                   {"scale", report.GetText("scale")},
                   {"content", report.GetText("content")},
                   {"currency", report.GetNumber("currency")},
                   {"gauge", report.GetReal("gauge")}});
    object.BeginList("articles");
    report.ForEach("articles", [&object](const CReport& article) {
        JSON::tRecord entry = {{"number", article.GetText("number")},
                               {"description", article.GetText("description")},
                               {"kind", article.GetText("kind")},
                               {"price", article.GetNumber("price")},
                               {"currency", article.GetNumber("currency")}};
        for (const char* measure : {"length", "radius", "arc", "maximum_length"}) {
            if (article.Has(measure)) {
                entry[measure] = article.GetReal(measure);
            }
        }
        object.Add(entry);
    });
    object.EndList();
    return object.Take() + "\n";
}

std::string Reports::LibraryHeading(const std::string& path, const CReport& report)
{
    return Escapes::ForTerminal(NameOfFile(path) + ": " + report.GetText("manufacturer") + ", " +
                                report.GetText("scale") + ", " + report.GetText("content") + ", " +
                                std::to_string(report.GetCount("articles")) + " articles") +
           "\n";
}

static int RunLibrary(const tListOptions& options)
{
    std::string text;
    CInquiry inquiry(options);
    const CInquiry::eResult result =
        inquiry.Ask(eVerb::kLibrary, options.paths, [&](const std::string& path, const CReport& report) {
            if (options.format == "json") {
                text += Reports::LibraryInJSON(path, report);
            } else if (options.format == "csv") {
                const std::string table =
                    Reports::ArticleTable(NameOfFile(path), report).ToCSV(isatty(STDOUT_FILENO) != 0);
                text += text.empty() ? table : table.substr(table.find('\n') + 1); // one line of titles
            } else {
                text +=
                    Reports::LibraryHeading(path, report) + Reports::ArticleTable(NameOfFile(path), report).ToText();
            }
        });
    return FinishCommand(text, result);
}

static std::string StockJSON(const std::string& path, const CReport& report)
{
    CJSONObject object;
    JSON::PutPath(object, "path", path);
    object.BeginList("items");
    report.ForEach("items", [&object](const CReport& item) {
        object.Add({{"library", item.GetText("library")},
                    {"number", item.GetText("number")},
                    {"count", item.GetNumber("count")}});
    });
    object.EndList();
    return object.Take() + "\n";
}

static int RunStock(const tListOptions& options)
{
    std::string text;
    CInquiry inquiry(options);
    const CInquiry::eResult result =
        inquiry.Ask(eVerb::kStock, options.paths, [&](const std::string& path, const CReport& report) {
            if (options.format == "json") {
                text += StockJSON(path, report);
                return;
            }
            CTable table({{"Library"}, {"Number"}, {"Count", true}});
            report.ForEach("items", [&table](const CReport& item) {
                table.AddRow(
                    {item.GetText("library"), item.GetText("number"), std::to_string(item.GetNumber("count"))});
            });
            text += options.format == "csv" ? table.ToCSV(isatty(STDOUT_FILENO) != 0) : table.ToText();
        });
    return FinishCommand(text, result);
}

const tCommand kLibraryCommand = {
    "library", "List the articles of track libraries",
    "  velmora library 'Some Library'\n  velmora library --format csv *.velmora-library\n",
    CallCommand<tListOptions, AddLibraryOptions, RunLibrary, CheckFiles>};
const tCommand kStockCommand = {"stock", "List what a stock file holds",
                                "  velmora stock Stock.xml\n  velmora stock --format json Stock.xml\n",
                                CallCommand<tListOptions, AddStockOptions, RunStock, CheckFiles>};
