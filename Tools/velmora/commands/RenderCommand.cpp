// velmora render and velmora thumbnail: the picture of a layout.
#include "ExitCodes.h"
#include "commands/Batch.h"
#include "commands/PictureWish.h"
#include "output/CPictureNames.h"
#include "output/CReplacedFile.h"
#include "output/Escapes.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <unistd.h>

namespace {
/// What render and thumbnail have in common.
struct tPictureOptions : tBatchOptions {
    std::string outputFolder; ///< for a picture of each layout; empty for one picture
    bool json = false;        ///< say what was drawn
};

struct tRenderOptions : tPictureOptions {
    std::string output;              ///< the file the picture goes to; empty or "-" for standard output
    bool force = false;              ///< files may be there already
    std::string format;              ///< empty for what the file's name says
    std::string size;                ///< "WxH"; empty for the usual one
    std::string style;               ///< name of a track style; empty for the layout's own
    std::vector<std::string> layers; ///< names of the layers to draw; empty for the visible ones
    bool labels = false;             ///< names of the elements are drawn
    bool grid = false;               ///< a grid is drawn
};

struct tThumbnailOptions : tPictureOptions {
    std::string size = "256"; ///< of a side
};

/// What the options, or the output's name, ask for; none when the name tells nothing.
std::optional<ePictureKind> FindKind(const tRenderOptions& options)
{
    return PictureWish::FindKind(options.format, options.output);
}

bool GoesToStandardOutput(const std::string& output)
{
    return output.empty() || output == "-";
}

/// Says what the picture does not show.
void PrintLeftOut(const std::string& path, const CReport& report)
{
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

/// Writes a picture where it belongs. @return empty, or why it could not be written
std::string WritePicture(const std::string& path, const std::string& bytes, bool mayReplace, COutput& output)
{
    if (GoesToStandardOutput(path)) {
        output.Write(bytes);
        return {};
    }
    const std::string problem = CReplacedFile::Write(path, bytes, mayReplace);
    return problem.empty() ? problem : path + ": " + problem;
}

/// Makes the folder for pictures if it is not there. @return false, with what is wrong said, when it cannot be had
bool MakeFolder(const std::string& folder)
{
    std::error_code error;
    if (!folder.empty() && !std::filesystem::create_directories(folder, error) && error) {
        COutput::PrintMessage(Escapes::ForTerminal(folder) + ": the folder cannot be made: " + error.message());
        return false;
    }
    return true;
}

/// Draws each layout that the options name.
/// @param file  where the picture goes, there being one; with a folder in the options, not used
int DrawAll(const tPictureOptions& options, const tPictureWish& wish, const std::string& file, bool mayReplace)
{
    const bool isSingle = options.outputFolder.empty();
    std::error_code error;
    if (isSingle && std::filesystem::is_directory(options.paths[0], error)) {
        COutput::PrintMessage(Escapes::ForTerminal(options.paths[0]) +
                              ": is a folder, not a layout; --output-dir draws all that are in it");
        return kExitFailed;
    }
    CBatch batch(options);
    if (const std::optional<int> status = batch.Begin([](tWorkerSettings& settings) { settings.draws = true; })) {
        return *status;
    }
    if (!MakeFolder(options.outputFolder)) {
        return kExitFailed;
    }
    CPictureNames names(options.outputFolder, PictureWish::GetName(wish.kind));
    const auto chooseFile = [&](tInput& input) {
        input.note = isSingle ? file : names.Take(input);
        if (!mayReplace && !GoesToStandardOutput(input.note) && CReplacedFile::IsRegular(input.note)) {
            input.failure =
                MakeFailure(eFailure::kOutput, input.note + ": exists already; --force replaces it").failure;
        }
        return true;
    };
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    const auto use = [&](const tInput& input, tAnswer& answer, const CReport& report) {
        if (!isSingle) { // the picture of a layout in a folder below; what is wrong shows where the file is made
            std::filesystem::create_directories(std::filesystem::path(input.note).parent_path(), error);
        }
        const std::string problem = WritePicture(input.note, answer.picture, mayReplace, output);
        if (!problem.empty()) {
            answer = MakeFailure(eFailure::kOutput, problem);
        } else if (options.json) {
            lines.Write(PictureWish::Describe(input.path, input.note, wish.kind, report));
        } else {
            PrintLeftOut(input.path, report);
        }
    };
    const tRequest request = {eVerb::kRender, {}, wish};
    return FinishOutput(
        output, batch.RunForReports(request, use, output, options.json ? &lines : nullptr, "drawn", chooseFile));
}

void AddPictureOptions(CParser& parser, tPictureOptions& options, const std::string& pathHelp)
{
    AddBatchOptions(parser, options, pathHelp);
    parser.Add("--output-dir", options.outputFolder, "A folder for a picture of each layout, named like it")
        .Named("DIR");
    parser.AddFlag("--json", options.json, "Tell what was drawn: a JSON object a line for each layout");
}

/// What is wrong with the options that name documents and pictures; empty for nothing.
std::string CheckPictureOptions(const tPictureOptions& options, bool goesToStandardOutput)
{
    if (options.outputFolder.empty()) {
        return goesToStandardOutput && options.json
                   ? "--json goes to standard output, where the picture is: give it a file or --output-dir"
               : options.filesFrom.empty() ? ""
                                           : "pictures of a list of layouts need a folder: --output-dir";
    }
    if (std::find(options.paths.begin(), options.paths.end(), "-") != options.paths.end()) {
        return "standard input has no name that its picture could have";
    }
    return CheckBatchOptions(options, "draw");
}

void AddRenderOptions(CParser& parser, tRenderOptions& options)
{
    AddPictureOptions(parser, options, "The layout; - is standard input. With --output-dir layouts and folders");
    parser.Add("-o,--output", options.output, "The file to write; - is standard output, as without this option")
        .Named("FILE");
    parser.AddFlag("-f,--force", options.force, "Replace files that are there already");
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
        .OneOf(PictureWish::GetStyles())
        .Named("STYLE");
}

std::string CheckRender(const tRenderOptions& options)
{
    tPictureWish wish;
    std::string wrong = CheckPictureOptions(options, GoesToStandardOutput(options.output));
    if (!wrong.empty()) {
        return wrong;
    }
    if (options.outputFolder.empty() && options.paths.size() != 1) {
        return options.paths.empty() ? "name the layout to draw"
                                     : "a picture shows one layout; --output-dir draws one of each";
    }
    if (!options.outputFolder.empty() && !options.output.empty()) {
        return "--output is for one picture, --output-dir for many: one of them, please";
    }
    if (!options.size.empty() && !PictureWish::ParseSize(options.size, wish)) {
        return "--size: '" + Escapes::ForTerminal(options.size) + "' " + PictureWish::kNoSize;
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
    if (options.outputFolder.empty() && GoesToStandardOutput(options.output) && isatty(STDOUT_FILENO) != 0) {
        COutput::PrintMessage("a picture is nothing for a terminal; name a file with -o plan.svg");
        return kExitUsage;
    }
    if (!options.size.empty()) {
        PictureWish::ParseSize(options.size, wish);
    }
    wish.hasLabels = options.labels;
    wish.hasGrid = options.grid;
    wish.style = options.style;
    wish.layers = options.layers;
    return DrawAll(options, wish, options.output, options.force);
}

void AddThumbnailOptions(CParser& parser, tThumbnailOptions& options)
{
    AddPictureOptions(parser, options, "The layout, and the PNG file to write. With --output-dir layouts and folders");
    parser.Add("--size", options.size, "Pixels of a side, at most 2048 (default 256)").Named("N");
}

std::string CheckThumbnail(const tThumbnailOptions& options)
{
    tPictureWish wish;
    std::string wrong = CheckPictureOptions(options, false);
    if (!wrong.empty()) {
        return wrong;
    }
    if (options.outputFolder.empty() && options.paths.size() != 2) {
        return "name the layout and the file to write, or layouts and --output-dir";
    }
    return PictureWish::ParseSide(options.size, wish)
               ? ""
               : "--size: '" + Escapes::ForTerminal(options.size) + "' " + PictureWish::kNoSide;
}

int RunThumbnail(const tThumbnailOptions& options)
{
    tPictureWish wish;
    PictureWish::ParseSide(options.size, wish);
    tThumbnailOptions drawn = options;
    const std::string file = options.outputFolder.empty() ? options.paths[1] : std::string();
    if (!file.empty()) {
        drawn.paths.pop_back();
    }
    return DrawAll(drawn, wish, file, true); // a file manager has made the file already
}
} // namespace

const tCommand kRenderCommand = {"render", "Draw a layout as SVG, PNG or PDF",
                                 "  velmora render -o plan.png plan.velmora\n"
                                 "  velmora render --labels --grid --layer Track -o plan.pdf plan.velmora\n"
                                 "  velmora render --output-dir ~/Plans --format png ~/Layouts\n",
                                 CallCommand<tRenderOptions, AddRenderOptions, RunRender, CheckRender>};
const tCommand kThumbnailCommand = {"thumbnail", "Draw a layout as a small square picture, for file managers",
                                    "  velmora thumbnail --size 256 plan.velmora plan.png\n"
                                    "  velmora thumbnail --output-dir ~/Thumbnails ~/Layouts\n",
                                    CallCommand<tThumbnailOptions, AddThumbnailOptions, RunThumbnail, CheckThumbnail>};
