// velmora import: the attributes of documents, one record per input, in the order of the inputs.
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "Places.h"
#include "commands/Batch.h"
#include "output/AttributeNames.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>
#include <string_view>
#include <unistd.h>

namespace {
struct tImportOptions : tBatchOptions {
    std::string format = "text";
    std::vector<std::string> names;    ///< of the attributes to print, in this order; empty for all
    bool raw = false;                  ///< values alone
    std::string nullMarker = "(null)"; ///< stands for a value that is not there
    unsigned detail = 0;               ///< 1 to 3; 0 for the usual record
    bool wide = false;                 ///< lines are not fitted to a terminal
};
} // namespace

static void AddImportOptions(CParser& parser, tImportOptions& options)
{
    AddBatchOptions(parser, options, "Documents, and folders to search for documents; - is standard input");
    AddFormatOption(parser, options.format, {"text", "json", "plist"},
                    "text (for people), json (an object a line) or plist");
    parser
        .Add("-n,--name", options.names,
             "Only this attribute (author, description, layers, revision, content, or its full name); several are "
             "printed in the order asked for")
        .Named("ATTRIBUTE")
        .TakesOne();
    parser.AddFlag("--raw", options.raw, "Only the values of the attributes named, with zero bytes between");
    parser.Add("--null-marker", options.nullMarker, "With --raw, stands for a value that is missing (\"(null)\")")
        .Named("TEXT");
    parser
        .Add("-d,--detail", options.detail,
             "For a test: 1 type and importer, 2 also the attributes but the text content, 3 that as well")
        .Between(1, 3)
        .Named("LEVEL");
    AddWideOption(parser, options.wide);
}

static std::string CheckImport(const tImportOptions& options)
{
    if (options.raw && options.names.empty()) {
        return "--raw needs the attributes to print: name them with --name";
    }
    if (options.raw && (options.detail > 0 || options.format != "text")) {
        return "--raw is a format of its own: it goes with neither --format nor --detail";
    }
    return CheckBatchOptions(options, "import");
}

namespace {
/// What takes most room in a record.
constexpr std::string_view kTextContent = "kMDItemTextContent";

/// Where everything fails for one reason, which has been said: people need not read it once a document.
class CSilentWriter : public CRecordWriter {
public:
    using CRecordWriter::CRecordWriter;
    void Write(const std::string&, const tAnswer&) override {}
};
} // namespace

static std::unique_ptr<CRecordWriter> MakeWriter(const tImportOptions& options, bool cannotServe, COutput& output)
{
    if (options.raw) {
        return MakeRawWriter(output, options.names, options.nullMarker);
    }
    if (options.format == "json") {
        return MakeJSONWriter(output);
    }
    if (options.format == "plist") {
        return MakePropertyListWriter(output);
    }
    return cannotServe ? std::make_unique<CSilentWriter>(output)
                       : MakeTextWriter(output, Terminal::GetLook(STDOUT_FILENO, options.wide));
}

/// Leaves what the user wants to see of a document's attributes, in the order asked for.
static void SelectAttributes(const tImportOptions& options, std::vector<tAttribute>& attributes)
{
    if (options.detail == 1) {
        attributes.clear();
    } else if (options.detail == 2) {
        attributes.erase(std::remove_if(attributes.begin(), attributes.end(),
                                        [](const tAttribute& attribute) { return attribute.key == kTextContent; }),
                         attributes.end());
    }
    if (!options.names.empty()) {
        std::vector<tAttribute> selected;
        for (const std::string& name : options.names) {
            const auto found = std::find_if(attributes.begin(), attributes.end(),
                                            [&](const tAttribute& attribute) { return attribute.key == name; });
            if (found != attributes.end()) {
                selected.push_back(std::move(*found));
                attributes.erase(found); // a name given twice is printed once
            }
        }
        attributes = std::move(selected);
    }
}

/// Replaces the names by those that attributes have. Says what is wrong.
/// @return the exit status when there is nothing of that name, or the user has interrupted
static std::optional<int> ResolveNames(CBatch& batch, std::vector<std::string>& names)
{
    tAnswer answer;
    if (names.empty() || batch.CannotServe()) {
        return std::nullopt;
    }
    if (!batch.Ask({eVerb::kSchema, {}}, answer)) {
        return kExitInterrupted;
    }
    for (std::string& name : names) {
        const std::optional<std::string> found = AttributeNames::Find(name, answer.schema.attributes);
        if (!found) {
            COutput::PrintMessage("--name: no document can have '" + Escapes::ForTerminal(name) + "'; there are " +
                                  Escapes::ForTerminal(AttributeNames::List(answer.schema.attributes)));
            return kExitUsage;
        }
        name = *found;
    }
    return std::nullopt;
}

static int RunImport(const tImportOptions& given)
{
    tImportOptions options = given;
    CBatch batch(options);
    if (const std::optional<int> status = batch.Begin()) {
        return *status;
    }
    if (const std::optional<int> status = ResolveNames(batch, options.names)) {
        return *status;
    }
    COutput output(STDOUT_FILENO);
    const std::unique_ptr<CRecordWriter> writer = MakeWriter(options, batch.CannotServe(), output);
    if (options.detail > 0) {
        writer->SetDetails({Importer::kContentType, Places::FindPlugIn(options.plugIn)});
    }
    writer->Begin();
    tRunHandlers handlers;
    handlers.take = [&](const tInput& input, tAnswer& answer) {
        SelectAttributes(options, answer.attributes);
        writer->Write(input.path, answer);
        return !output.HasFailed();
    };
    const int status = batch.Run({eVerb::kImport, Importer::kContentType}, std::move(handlers), output, "imported");
    writer->End();
    return FinishOutput(output, status);
}

const tCommand kImportCommand = {"import", "Print the search attributes of layouts",
                                 "  velmora import plan.velmora\n"
                                 "  velmora import --format json ~/Layouts > attributes.json\n"
                                 "  velmora import --name author --raw plan.velmora\n"
                                 "  find / -name '*.velmora' -print0 | velmora import --files-from - --null\n",
                                 CallCommand<tImportOptions, AddImportOptions, RunImport, CheckImport>};
