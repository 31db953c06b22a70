// velmora schema: the attributes that the importer sets, and the document types it takes.
#include "ExitCodes.h"
#include "Places.h"
#include "commands/Batch.h"
#include "commands/Reports.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>

namespace {
struct tSchemaOptions : tWorkerOptions {
    std::string format = "text";
    bool wide = false; ///< lines are not fitted to a terminal
};
} // namespace

static void AddSchemaOptions(CParser& parser, tSchemaOptions& options)
{
    AddFormatOption(parser, options.format, {"text", "json"}, "text (for people) or json (one object)");
    AddWideOption(parser, options.wide);
    AddWorkerOptions(parser, options);
}

static std::string JoinTexts(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + Escapes::ForTerminal(text);
    }
    return joined;
}

/// A line with a label; nothing for an empty value.
static std::string Line(const std::string& label, const std::string& value)
{
    std::string line = "  " + label;
    line.resize(std::max<size_t>(line.size() + 1, 24), ' ');
    return value.empty() ? value : line + value + "\n";
}

std::string Reports::SchemaAsText(const tSchema& schema)
{
    std::string text = "Attributes\n";
    for (const tSchemaAttribute& attribute : schema.attributes) {
        text += Line(Escapes::ForTerminal(attribute.name), Escapes::ForTerminal(attribute.type));
        text += Line("", Escapes::ForTerminal(attribute.description));
    }
    text += "Document types\n";
    for (const tSchemaType& type : schema.types) {
        text += Line(Escapes::ForTerminal(type.identifier), Escapes::ForTerminal(type.description));
        text += Line("  extensions", JoinTexts(type.extensions));
        text += Line("  MIME types", JoinTexts(type.mimeTypes));
        text += Line("  begin with", Escapes::ForTerminal(type.magic));
    }
    return text;
}

std::string Reports::SchemaInJSON(const tSchema& schema)
{
    JSON::tRecord record;
    record["ok"] = true;
    record["attributes"] = JSON::tRecord::array();
    for (const tSchemaAttribute& attribute : schema.attributes) {
        record["attributes"].push_back(
            {{"name", attribute.name}, {"type", attribute.type}, {"description", attribute.description}});
    }
    record["types"] = JSON::tRecord::array();
    for (const tSchemaType& type : schema.types) {
        record["types"].push_back({{"identifier", type.identifier},
                                   {"description", type.description},
                                   {"extensions", type.extensions},
                                   {"mime_types", type.mimeTypes},
                                   {"magic", type.magic}});
    }
    return JSON::ToLine(record);
}

static int RunSchema(const tSchemaOptions& options)
{
    std::optional<tFailure> cannotServe;
    CWorkerPool pool(GetWorkerSettings(options, cannotServe), options.timeoutSeconds, 1);
    tAnswer answer;
    if (cannotServe) {
        answer.failure = *cannotServe;
    } else {
        uint64_t ticket = 0;
        pool.Submit(ticket, {eVerb::kSchema, {}}, CDescriptor());
        if (pool.Collect(ticket, answer) == CWorkerPool::eResult::kInterrupted) {
            return kExitInterrupted;
        }
    }
    COutput output(STDOUT_FILENO);
    if (options.format == "json") {
        CJSONLines(output).WriteLine(answer.ok
                                         ? Reports::SchemaInJSON(answer.schema)
                                         : JSON::ToLine({{"ok", false}, {"error", DescribeFailure(answer.failure)}}));
    } else if (answer.ok) {
        output.Write(
            Terminal::Fit(Reports::SchemaAsText(answer.schema), Terminal::GetLook(STDOUT_FILENO, options.wide)));
    }
    if (!answer.ok) {
        COutput::PrintMessage(Escapes::ForTerminal(answer.failure.message));
    }
    return FinishOutput(output, answer.ok ? kExitOK : kExitFailed);
}

const tCommand kSchemaCommand = {"schema", "Print the attributes the importer sets and the document types it takes",
                                 "  velmora schema\n  velmora schema --format json\n",
                                 CallCommand<tSchemaOptions, AddSchemaOptions, RunSchema>};
