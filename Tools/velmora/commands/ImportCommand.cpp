// velmora import: the attributes of documents, one record per input, in the order of the inputs.
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "commands/Batch.h"
#include "output/CRecordWriter.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

static void AddImportOptions(CLI::App& app, tOptions& options)
{
    AddBatchOptions(app, options, "Documents, and folders to search for documents; - is standard input");
    app.add_option("--format", options.format, "text (for people), json (an object a line) or plist")
        ->check(CLI::IsMember({"text", "json", "plist"}))
        ->type_name("FORMAT");
}

static std::string CheckImport(const tOptions& options)
{
    return CheckBatchOptions(options, "import");
}

namespace {
/// Where everything fails for one reason, which has been said: people need not read it once a document.
class CSilentWriter : public CRecordWriter {
public:
    using CRecordWriter::CRecordWriter;
    void Write(const std::string&, const tAnswer&) override {}
};
} // namespace

static std::unique_ptr<CRecordWriter> MakeWriter(const tOptions& options, bool cannotServe, COutput& output)
{
    if (options.format == "json") {
        return MakeJSONWriter(output);
    }
    if (options.format == "plist") {
        return MakePropertyListWriter(output);
    }
    return cannotServe ? std::make_unique<CSilentWriter>(output) : MakeTextWriter(output);
}

static int RunImport(const tOptions& options)
{
    CBatch batch(options);
    if (const std::optional<int> status = batch.Begin()) {
        return *status;
    }
    COutput output(STDOUT_FILENO);
    const std::unique_ptr<CRecordWriter> writer = MakeWriter(options, batch.CannotServe(), output);
    writer->Begin();
    tRunHandlers handlers;
    handlers.take = [&](const tInput& input, const tAnswer& answer) {
        writer->Write(input.path, answer);
        return !output.HasFailed();
    };
    const int status = batch.Run({eVerb::kImport, Importer::kContentType}, std::move(handlers), output, "imported");
    writer->End();
    output.Flush();
    return status == kExitOK && output.HasFailed() && !output.IsReaderGone() ? kExitFailed : status;
}

const tCommand kImportCommand = {"import",
                                 "Print the search attributes of layouts",
                                 "  velmora import plan.velmora\n"
                                 "  velmora import --format json ~/Layouts > attributes.json\n"
                                 "  find / -name '*.velmora' -print0 | velmora import --files-from - --null\n",
                                 AddImportOptions,
                                 CheckImport,
                                 RunImport};
