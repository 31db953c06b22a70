// velmora library: what track libraries hold.
#include "commands/Batch.h"
#include "commands/Reports.h"
#include "input/DocumentNames.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <unistd.h>
#include <utility>

namespace {
struct tListOptions : tBatchOptions {
    std::string format = "text";
    bool wide = false; ///< tables are not fitted to a terminal
};
} // namespace

static void AddListOptions(CParser& parser, tListOptions& options)
{
    AddFormatOption(parser, options.format, {"text", "json", "csv"},
                    "text (for people), json (an object a file) or csv");
    AddWideOption(parser, options.wide);
}

static void AddLibraryOptions(CParser& parser, tListOptions& options)
{
    AddBatchOptions(parser, options, "Track library files");
    AddListOptions(parser, options);
}

static std::string CheckLibrary(const tListOptions& options)
{
    return CheckBatchOptions(options, "list");
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
    CTable table({{"Library", false, 4},
                  {"Number"},
                  {"Description"},
                  {"Kind", false, 2},
                  {"Dimensions", false, 1},
                  {"Price", true, 1},
                  {"Currency", true, 3}});
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
    object.Put("ok", true);
    object.PutAll({{"name", DocumentNames::NameOfFile(path)},
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
    return DocumentNames::NameOfFile(path) + ": " + report.GetText("manufacturer") + ", " + report.GetText("scale") +
           ", " + report.GetText("content") + ", " + std::to_string(report.GetCount("articles")) + " articles";
}

static int RunLibrary(const tListOptions& options)
{
    bool hasTitles = false;
    const auto format = [&](const tInput& input, const tAnswer&, const CReport& report) {
        const std::string& path = input.path;
        const std::string name = DocumentNames::NameOfFile(path);
        if (options.format == "json") {
            return Reports::LibraryInJSON(path, report);
        }
        const CTable table = Reports::ArticleTable(name, report);
        if (options.format == "text") {
            const tLook look = Terminal::GetLook(STDOUT_FILENO, options.wide);
            std::string text;
            for (const std::string& line : Terminal::ToLines(Reports::LibraryHeading(path, report), look, look.width)) {
                text += line + "\n";
            }
            return text + table.ToText(look);
        }
        const std::string lines = table.ToCSV(isatty(STDOUT_FILENO) != 0);
        return std::exchange(hasTitles, true) ? lines.substr(lines.find('\n') + 1) : lines; // one line of titles
    };
    return PrintReports(options, eVerb::kLibrary, options.format == "json", format, "listed");
}

const tCommand kLibraryCommand = {
    "library", "List the articles of track libraries",
    "  velmora library 'Some Library'\n  velmora library --format csv *.velmora-library\n",
    CallCommand<tListOptions, AddLibraryOptions, RunLibrary, CheckLibrary>};
