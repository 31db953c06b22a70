// velmora parts: the list of parts of one or more layouts, and what of it must still be bought.
#include "Bounds.h"
#include "ExitCodes.h"
#include "Places.h"
#include "commands/Batch.h"
#include "commands/Parts.h"
#include "commands/StockBalance.h"
#include "output/CReplacedFile.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <algorithm>
#include <ctime>
#include <unistd.h>

namespace {
struct tPartsOptions : tBatchOptions {
    std::string format;                  ///< empty for what the output's name says
    std::string output;                  ///< the file to write; empty or "-" for standard output
    bool force = false;                  ///< the file may be there already
    std::string stock;                   ///< a stock file; empty for the user's
    bool noStock = false;                ///< not even the user's
    std::vector<std::string> libraries;  ///< track library files, and folders of them
    std::vector<std::string> currencies; ///< "129=EUR:2"
    bool toBuy = false;                  ///< only what must be bought
    bool perLayout = false;              ///< a list for each layout, too
    std::string grouping;                ///< layer, library, or empty
    std::string separator = ",";         ///< in CSV
    bool bom = false;                    ///< CSV begins with a byte order mark
    bool wide = false;                   ///< tables are not fitted to a terminal
    bool noPicture = false;              ///< the page shows no plans
};

constexpr const char* kFormats[] = {"text", "csv", "json", "html", "xlsx"};

bool GoesToFile(const tPartsOptions& options)
{
    return !options.output.empty() && options.output != "-";
}

std::string FindFormat(const tPartsOptions& options)
{
    if (!options.format.empty()) {
        return options.format;
    }
    const auto found = std::find_if(std::begin(kFormats), std::end(kFormats), [&options](const char* format) {
        return options.output.ends_with(std::string(".") + format);
    });
    return found != std::end(kFormats) ? *found : "text";
}

char FindSeparator(const std::string& name)
{
    return name == "tab"                                                              ? '\t'
           : name.size() == 1 && std::string(",;|\t").find(name) != std::string::npos ? name[0]
                                                                                      : '\0';
}

void AddPartsOptions(CParser& parser, tPartsOptions& options)
{
    AddBatchOptions(parser, options, "Layouts, added up; folders are searched for layouts");
    parser.Add("-o,--output", options.output, "The file to write, whose ending tells the format; - is standard output")
        .Named("FILE");
    parser.AddFlag("-f,--force", options.force, "Replace the file if it is there already");
    const COption stock =
        parser
            .Add("--stock", options.stock,
                 "A stock file: shows what is there and what must be bought (default: the user's, if there is "
                 "one)")
            .Named("FILE");
    parser.AddFlag("--no-stock", options.noStock, "Leave the user's stock out").Without(stock);
    parser.AddFlag("--to-buy", options.toBuy, "Only what must be bought");
    parser.AddFlag("--per-layout", options.perLayout,
                   "A list for each layout, and the total; the stock is given out in the order of the layouts");
    parser.Add("--by", options.grouping, "Groups with subtotals: layer or library")
        .OneOf({"layer", "library"})
        .Named("GROUP");
    parser
        .Add("--library", options.libraries,
             "A track library, or a folder of them, besides those in VELMORA_LIBRARIES and the user's "
             "library folder: marks numbers that libraries share, and parts that their library lacks")
        .TakesOne() // one path for each --library, or it would take the layouts as well
        .Named("PATH");
    parser
        .Add("--currency", options.currencies,
             "What a currency of layouts is, with its decimals: 129=EUR:2; besides those of the configuration file")
        .TakesOne()
        .Named("CURRENCY");
    AddFormatOption(parser, options.format, {std::begin(kFormats), std::end(kFormats)},
                    "text (for people), csv, json (one object), html (a page to print) or xlsx (a workbook)");
    parser.Add("--separator", options.separator, "Between the cells of csv: a comma (default), ';', '|' or tab")
        .Named("SIGN");
    parser.AddFlag("--bom", options.bom, "Begin csv with a byte order mark, which some spreadsheets want");
    AddWideOption(parser, options.wide);
    parser.AddFlag("--no-picture", options.noPicture, "A page without pictures of the layouts");
}

std::string CheckParts(const tPartsOptions& options)
{
    const std::string format = FindFormat(options);
    if (FindSeparator(options.separator) == '\0') {
        return "--separator: '" + Escapes::ForTerminal(options.separator) + "' is none of , ; | tab";
    }
    if (format != "csv" && (options.bom || options.separator != ",")) {
        return "--separator and --bom are for csv: give --format csv";
    }
    if (format == "xlsx" && !GoesToFile(options) && isatty(STDOUT_FILENO) != 0) {
        return "a workbook is nothing for a terminal: give -o FILE";
    }
    CCurrencies currencies;
    for (const std::string& text : options.currencies) {
        if (const std::string problem = currencies.Add(text); !problem.empty()) {
            return "--currency: " + Escapes::ForTerminal(problem);
        }
    }
    return CheckBatchOptions(options, "add up");
}

/// The stock to compare with. @return empty for none
std::string FindStock(const tPartsOptions& options, const CBatch& batch)
{
    if (!options.stock.empty() || options.noStock) {
        return options.stock;
    }
    std::string path = StockBalance::FindUsersFile(batch);
    if (path.empty() || access(path.c_str(), F_OK) != 0) {
        return {};
    }
    COutput::PrintMessage("compared with the stock file " + Escapes::ForTerminal(path) + "; --no-stock leaves it out");
    return path;
}

/// Day of a time of a file; empty for none.
std::string DateOf(int64_t nanoseconds)
{
    const auto seconds = static_cast<time_t>(nanoseconds / 1000000000);
    tm parts = {};
    char date[32];
    const bool isGood = nanoseconds > 0 && localtime_r(&seconds, &parts) != nullptr &&
                        strftime(date, sizeof date, "%Y-%m-%d", &parts) > 0;
    return isGood ? date : "";
}

/// Gives the stock out to one list after the other: what the first ones take is not there for the others.
class CGiving {
public:
    CGiving(CBatch& batch, tAmounts stock) : mBatch(batch), mStock(std::move(stock)) {}

    int Give(tParts& parts)
    {
        const tAmounts before = mStock;
        tAmounts required;
        const int status = StockBalance::Compare(mBatch, Parts::GetAmounts(parts), mStock, required);
        Parts::SetStock(parts, before, required);
        return status;
    }

private:
    CBatch& mBatch;
    tAmounts mStock;
};

/// Sets what is there and what must be bought in all lists. @return an eExitCode
int CompareAll(CBatch& batch, const tAmounts& stock, tPartsReport& report)
{
    int worst = CGiving(batch, stock).Give(report.total.parts);
    const auto giveAll = [&](auto&& lists) {
        CGiving giving(batch, stock);
        for (tParts* parts : lists) {
            worst = worst == kExitOK ? giving.Give(*parts) : worst;
        }
    };
    std::vector<tParts*> layers;
    std::vector<tParts*> layouts;
    std::vector<tParts*> layersOfLayouts;
    for (auto& [name, parts] : report.total.layers) {
        layers.push_back(&parts);
    }
    for (tPartsLayout& layout : report.layouts) {
        layouts.push_back(&layout.list.parts);
        for (auto& [name, parts] : layout.list.layers) {
            layersOfLayouts.push_back(&parts);
        }
    }
    for (const auto& lists : {layers, layouts, layersOfLayouts}) {
        giveAll(lists);
    }
    return worst;
}

/// Has the layouts drawn, if they are few. @return an eExitCode
int AddPictures(const tPartsOptions& options, tPartsReport& report)
{
    if (options.noPicture || report.layouts.size() > Bounds::kMostPlans) {
        return kExitOK;
    }
    tBatchOptions drawing = options;
    drawing.paths.clear();
    drawing.filesFrom.clear();
    drawing.jobs = 1;
    CBatch batch(drawing);
    if (const std::optional<int> status = batch.Begin([](tWorkerSettings& settings) { settings.draws = true; })) {
        return *status;
    }
    int worst = kExitOK;
    COutput output(STDOUT_FILENO); // nothing goes there
    tRequest request;
    request.verb = eVerb::kRender;
    request.picture.kind = ePictureKind::kSVG;
    for (tPartsLayout& layout : report.layouts) {
        if (layout.path != "-") { // which was read once and for all
            const auto use = [&layout](const tInput&, const tAnswer& answer, const CReport&) {
                layout.picture = answer.picture;
            };
            worst = std::max(worst, batch.AskBesides(request, {layout.path}, use, output, nullptr));
        }
    }
    return worst;
}

/// @return false, with what is wrong said, when there is nothing to be written
bool Format(const tPartsReport& report, const tPartsOptions& options, const std::string& format, std::string& text)
{
    if (format == "csv") {
        const bool isForTerminal = !GoesToFile(options) && isatty(STDOUT_FILENO) != 0;
        text = std::string(options.bom ? "\xEF\xBB\xBF" : "") +
               Parts::MakePlainTable(report).ToCSV(isForTerminal, FindSeparator(options.separator));
    } else if (format == "xlsx") {
        const std::string problem = Parts::MakeWorkbook(report, text);
        if (!problem.empty()) {
            COutput::PrintMessage("the workbook cannot be made: " + problem + "; --format csv has no such limits");
            return false;
        }
    } else {
        const tLook look = GoesToFile(options) ? tLook() : Terminal::GetLook(STDOUT_FILENO, options.wide);
        text = format == "html" ? Parts::FormatHTML(report) : Parts::FormatText(report, look);
    }
    return true;
}

int WriteFile(const tPartsOptions& options, const std::string& text)
{
    const std::string problem = CReplacedFile::Write(options.output, text, options.force);
    if (!problem.empty()) {
        COutput::PrintMessage(Escapes::ForTerminal(options.output + ": " + problem));
        return kExitFailed;
    }
    return kExitOK;
}

int RunParts(const tPartsOptions& options)
{
    tPartsReport report;
    std::string problem = report.currencies.Load(Places::FindConfiguration());
    for (const std::string& text : options.currencies) {
        problem = problem.empty() ? report.currencies.Add(text) : problem;
    }
    if (!problem.empty()) {
        COutput::PrintMessage(Escapes::ForTerminal(problem));
        return kExitUsage;
    }
    if (GoesToFile(options) && !options.force && CReplacedFile::IsRegular(options.output)) { // before work is done
        COutput::PrintMessage(Escapes::ForTerminal(options.output) + ": exists already; --force replaces it");
        return kExitFailed;
    }
    CBatch batch(options);
    const bool wantsStock = options.stock.empty() && !options.noStock;
    if (const std::optional<int> status =
            batch.Begin([&](tWorkerSettings& settings) { settings.tellsStockFile = wantsStock; })) {
        return *status;
    }
    // The stock comes first: a list without it would be half the truth.
    tAmounts stock;
    const std::string stockFile = batch.CannotServe() ? std::string() : FindStock(options, batch);
    if (!stockFile.empty()) {
        if (const int status = StockBalance::Read(batch, stockFile, stock); status != kExitOK) {
            return status;
        }
        report.hasStock = true;
    }
    const std::string format = FindFormat(options);
    report.money = tMoneyForm::OfUser();
    report.perLayout = options.perLayout;
    report.toBuyOnly = options.toBuy;
    report.grouping = options.grouping == "layer"     ? eGrouping::kLayer
                      : options.grouping == "library" ? eGrouping::kLibrary
                                                      : eGrouping::kNone;
    const bool hasLayers = report.grouping == eGrouping::kLayer;
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    CJSONLines* const linesOrNone = format == "json" && !GoesToFile(options) ? &lines : nullptr;
    int worst = batch.RunForReports(
        {eVerb::kParts},
        [&](const tInput& input, const tAnswer&, const CReport& answer) {
            Parts::AddLayout(report.total, answer, hasLayers);
            if (report.perLayout || format == "html") {
                tPartsLayout layout = {
                    input.path, answer.GetText("author"), answer.GetText("revision"), DateOf(input.status.modified), {},
                    {}};
                if (report.perLayout) {
                    Parts::AddLayout(layout.list, answer, hasLayers);
                }
                report.layouts.push_back(std::move(layout));
            }
        },
        output, linesOrNone, "read");
    const auto goOn = [&worst](auto step) { worst = worst == kExitInterrupted ? worst : std::max(worst, step()); };
    tArticlesOf articlesOf;
    goOn([&] { return KnownLibraries::Read(batch, options.libraries, articlesOf, output, linesOrNone); });
    Parts::Mark(report.total, articlesOf);
    for (tPartsLayout& layout : report.layouts) {
        Parts::Mark(layout.list, articlesOf);
    }
    if (report.hasStock && report.total.layouts > 0) {
        int compared = kExitOK;
        goOn([&] { return compared = CompareAll(batch, stock, report); });
        if (compared != kExitOK) {
            return compared;
        }
    }
    if (format == "html") {
        goOn([&] { return AddPictures(options, report); });
    }
    if (worst == kExitInterrupted || report.total.layouts == 0) { // half a sum would be none
        return FinishOutput(output, worst);
    }
    std::string text;
    if (linesOrNone != nullptr) {
        lines.WriteLine(Parts::FormatJSON(report));
    } else if (format == "json") {
        text = "{\"schema\":" + std::to_string(JSON::kSchema) + "," + Parts::FormatJSON(report).substr(1);
    } else if (!Format(report, options, format, text)) {
        return kExitFailed;
    }
    if (GoesToFile(options)) {
        return std::max(worst, WriteFile(options, text));
    }
    output.Write(text);
    return FinishOutput(output, worst);
}
} // namespace

const tCommand kPartsCommand = {"parts", "List the parts of layouts, and what must be bought",
                                "  velmora parts plan.velmora\n"
                                "  velmora parts --to-buy --by library plan.velmora\n"
                                "  velmora parts --stock Stock.xml -o parts.html plan.velmora\n",
                                CallCommand<tPartsOptions, AddPartsOptions, RunParts, CheckParts>};
