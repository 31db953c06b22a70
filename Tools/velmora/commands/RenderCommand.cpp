// velmora render and velmora thumbnail: the picture of a layout.
#include "Bounds.h"
#include "ExitCodes.h"
#include "commands/CReport.h"
#include "commands/CommandLine.h"
#include "input/CDocumentSource.h"
#include "output/COutput.h"
#include "output/CReplacedFile.h"
#include "output/Escapes.h"
#include "pool/CWorkerPool.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <unistd.h>

namespace {
constexpr const char* kStyles[] = {"line", "filled", "plan", "bed", "sleepers"};

const char* const kNoSize = "--size is WIDTHxHEIGHT in pixels, each at most 16384 and 50 million together";

struct tRenderOptions : tWorkerOptions {
    std::vector<std::string> paths;  ///< of layouts; there must be one
    std::string output;              ///< the file the picture goes to; empty or "-" for standard output
    bool force = false;              ///< the file may be there already
    std::string format;              ///< empty for what the file's name says
    std::string size;                ///< "WxH"; empty for the usual one
    std::string style;               ///< name of a track style; empty for the layout's own
    std::vector<std::string> layers; ///< names of the layers to draw; empty for the visible ones
    bool labels = false;             ///< names of the elements are drawn
    bool grid = false;               ///< a grid is drawn
};

struct tThumbnailOptions : tWorkerOptions {
    std::vector<std::string> paths; ///< of the layout, and of the picture
    std::string size = "256";       ///< of a side
};

bool ParseNumber(std::string_view text, uint32_t most, uint32_t& number)
{
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && number >= 1 && number <= most;
}

bool ParseSize(const std::string& size, uint32_t& width, uint32_t& height)
{
    const std::string_view text = size;
    const size_t cross = text.find_first_of("xX");
    return cross != std::string_view::npos && ParseNumber(text.substr(0, cross), Bounds::kMostPictureSide, width) &&
           ParseNumber(text.substr(cross + 1), Bounds::kMostPictureSide, height) &&
           uint64_t{width} * height <= uint64_t{Bounds::kMostPicturePixels};
}

bool EndsWith(const std::string& path, std::string_view suffix)
{
    return path.size() >= suffix.size() &&
           std::equal(suffix.begin(), suffix.end(), path.end() - static_cast<std::ptrdiff_t>(suffix.size()),
                      [](char one, char other) { return one == (other >= 'A' && other <= 'Z' ? other + 32 : other); });
}

/// What the options, or the output's name, ask for; none when the name tells nothing.
std::optional<ePictureKind> FindKind(const tRenderOptions& options)
{
    const auto is = [&options](const std::string& name) {
        return options.format.empty() ? EndsWith(options.output, "." + name) : options.format == name;
    };
    return is("svg")   ? std::optional(ePictureKind::kSVG)
           : is("png") ? std::optional(ePictureKind::kPNG)
           : is("pdf") ? std::optional(ePictureKind::kPDF)
                       : std::nullopt;
}

bool GoesToStandardOutput(const std::string& output)
{
    return output.empty() || output == "-";
}

/// Asks a worker for the picture of one document.
/// @return an exit status; the picture and the report are set for kExitOK
int AskForPicture(const tWorkerOptions& options, const std::string& path, const tPictureWish& wish, tAnswer& answer)
{
    const auto fail = [](const std::string& message) {
        COutput::PrintMessage(Escapes::ForTerminal(message));
        return static_cast<int>(kExitFailed);
    };
    CDocumentSource source({path});
    tInput input;
    if (!source.Next(input) || input.path != path) {
        return fail(path + ": is a folder, not a layout");
    }
    if (input.failure) {
        return fail(input.path + ": " + input.failure->message);
    }
    std::optional<tFailure> cannotServe;
    tWorkerSettings settings = GetWorkerSettings(options, cannotServe);
    settings.draws = true;
    CWorkerPool pool(std::move(settings), options.timeoutSeconds, 1);
    tFailure failure;
    if (!cannotServe && pool.WaitUntilReady(failure) == CWorkerPool::eResult::kFailed) {
        cannotServe = failure;
    }
    if (cannotServe) {
        return fail(cannotServe->message);
    }
    uint64_t ticket = 0;
    tRequest request;
    request.verb = eVerb::kRender;
    request.picture = wish;
    pool.Submit(1, std::move(request), std::move(input.document));
    if (pool.Collect(ticket, answer) == CWorkerPool::eResult::kInterrupted) {
        return kExitInterrupted;
    }
    return answer.ok ? static_cast<int>(kExitOK) : fail(input.path + ": " + answer.failure.message);
}

/// Says what the picture does not show.
void PrintLeftOut(const std::string& path, const std::string& text)
{
    CReport report;
    CReport::Parse(text, report);
    const auto print = [&](long long count, const char* one, const char* many) {
        if (count > 0) {
            COutput::PrintMessage(Escapes::ForTerminal(path) + ": " + std::to_string(count) + " " +
                                  (count == 1 ? one : many));
        }
    };
    print(report.GetNumber("strays"), "element lies too far from the others to be shown",
          "elements lie too far from the others to be shown");
    print(report.GetNumber("simplified"), "element takes too much to be drawn in full, and lacks parts or points",
          "elements take too much to be drawn in full, and lack parts or points");
    print(report.GetNumber("left_out"), "element takes too much to be drawn at all",
          "elements take too much to be drawn at all");
    print(report.GetNumber("labels_left_out"), "label has no room; a larger --size may show it",
          "labels have no room; a larger --size shows more of them");
}

int WritePicture(const std::string& path, const std::string& bytes, bool mayReplace)
{
    if (GoesToStandardOutput(path)) {
        COutput output(STDOUT_FILENO);
        output.Write(bytes);
        return output.Flush() || output.IsReaderGone() ? kExitOK : kExitFailed;
    }
    const std::string problem = CReplacedFile::Write(path, bytes, mayReplace);
    if (!problem.empty()) {
        COutput::PrintMessage(Escapes::ForTerminal(path + ": " + problem));
        return kExitFailed;
    }
    return kExitOK;
}

void AddRenderOptions(CParser& parser, tRenderOptions& options)
{
    parser.Add("LAYOUT", options.paths, "The layout; - is standard input");
    parser.Add("-o,--output", options.output, "The file to write; - is standard output, as without this option")
        .Named("FILE");
    parser.AddFlag("-f,--force", options.force, "Replace the file if it is there already");
    AddFormatOption(parser, options.format, {"svg", "png", "pdf"},
                    "svg, png or pdf; by the output's name if not given, else svg");
    parser
        .Add("--size", options.size,
             "The largest picture, in pixels (default 1600x1600; for pdf, whose pixels are points, a page of A4)")
        .Named("WxH");
    parser.AddFlag("--labels", options.labels, "Draw the names of the elements");
    parser.AddFlag("--grid", options.grid, "Draw a grid and a scale");
    parser
        .Add("--layer", options.layers,
             "Draw only the elements on this layer, visible or not; may be given several times")
        .TakesOne()
        .Named("NAME");
    parser.Add("--style", options.style, "line, filled, plan, bed or sleepers; the layout's own if not given")
        .OneOf(std::vector<std::string>(std::begin(kStyles), std::end(kStyles)))
        .Named("STYLE");
    AddWorkerOptions(parser, options);
}

std::string CheckRender(const tRenderOptions& options)
{
    uint32_t width = 0;
    uint32_t height = 0;
    if (options.paths.size() != 1) {
        return options.paths.empty() ? "name the layout to draw" : "name one layout: a picture shows one";
    }
    if (!options.size.empty() && !ParseSize(options.size, width, height)) {
        return kNoSize;
    }
    if (!GoesToStandardOutput(options.output) && !FindKind(options)) {
        return "the name of the output tells no format: end it in .svg, .png or .pdf, or give --format";
    }
    return {};
}

int RunRender(const tRenderOptions& options)
{
    tPictureWish wish;
    wish.kind = FindKind(options).value_or(ePictureKind::kSVG);
    if (GoesToStandardOutput(options.output) && wish.kind != ePictureKind::kSVG && isatty(STDOUT_FILENO) != 0) {
        COutput::PrintMessage("a picture of this format is nothing for a terminal; name a file with -o");
        return kExitUsage;
    }
    if (!options.force && !GoesToStandardOutput(options.output) &&
        CReplacedFile::IsRegular(options.output)) { // said before the work is done
        COutput::PrintMessage(Escapes::ForTerminal(options.output) + ": exists already; --force replaces it");
        return kExitFailed;
    }
    if (!options.size.empty()) {
        ParseSize(options.size, wish.width, wish.height);
    }
    wish.hasLabels = options.labels;
    wish.hasGrid = options.grid;
    wish.style = options.style;
    wish.layers = options.layers;
    tAnswer answer;
    const int status = AskForPicture(options, options.paths[0], wish, answer);
    if (status != kExitOK) {
        return status;
    }
    PrintLeftOut(options.paths[0], answer.report);
    return WritePicture(options.output, answer.picture, options.force);
}

void AddThumbnailOptions(CParser& parser, tThumbnailOptions& options)
{
    parser.Add("INPUT OUTPUT", options.paths, "The layout, and the PNG file to write");
    parser.Add("--size", options.size, "Pixels of a side, at most 2048 (default 256)").Named("N");
    AddWorkerOptions(parser, options);
}

std::string CheckThumbnail(const tThumbnailOptions& options)
{
    uint32_t side = 0;
    if (options.paths.size() != 2) {
        return "name the layout and the file to write";
    }
    return ParseNumber(options.size, Bounds::kMostThumbnailSide, side) ? ""
                                                                       : "--size is a number of pixels, at most 2048";
}

int RunThumbnail(const tThumbnailOptions& options)
{
    tPictureWish wish;
    ParseNumber(options.size, Bounds::kMostThumbnailSide, wish.width);
    wish.height = wish.width;
    wish.isThumbnail = true;
    tAnswer answer;
    const int status = AskForPicture(options, options.paths[0], wish, answer);
    // A file manager has made the file already.
    return status == kExitOK ? WritePicture(options.paths[1], answer.picture, true) : status;
}
} // namespace

const tCommand kRenderCommand = {"render", "Draw a layout as SVG, PNG or PDF",
                                 "  velmora render -o plan.png plan.velmora\n"
                                 "  velmora render --labels --grid --layer Track -o plan.pdf plan.velmora\n",
                                 CallCommand<tRenderOptions, AddRenderOptions, RunRender, CheckRender>};
const tCommand kThumbnailCommand = {"thumbnail", "Draw a layout as a small square picture, for file managers",
                                    "  velmora thumbnail --size 256 plan.velmora plan.png\n",
                                    CallCommand<tThumbnailOptions, AddThumbnailOptions, RunThumbnail, CheckThumbnail>};
