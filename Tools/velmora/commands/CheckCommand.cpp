// velmora check: what is wrong with documents, and where.
#include "commands/Inquiry.h"
#include "commands/Reports.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

namespace {
struct tCheckOptions : tWorkerOptions {
    std::vector<std::string> paths;
    std::string format = "text";
};
} // namespace

static void AddCheckOptions(CParser& parser, tCheckOptions& options)
{
    parser.Add("PATH", options.paths, "Layouts, track libraries and stock files, and folders to search for layouts");
    AddFormatOption(parser, options.format, {"text", "json"}, "text (for people) or json (an object a line)");
    AddWorkerOptions(parser, options);
}

static std::string CheckCheck(const tCheckOptions& options)
{
    return options.paths.empty() ? "nothing to check: name documents or folders" : "";
}

/// Where a finding lies, in words.
static std::string Place(const CReport& finding)
{
    std::string place = "byte " + std::to_string(finding.GetNumber("offset"));
    if (finding.GetNumber("element") > 0) {
        place += ", element " + std::to_string(finding.GetNumber("element"));
    }
    if (finding.GetNumber("component") > 0) {
        place += ", component " + std::to_string(finding.GetNumber("component"));
    }
    if (finding.GetNumber("key") > 0) {
        place += ", record " + std::to_string(finding.GetNumber("key"));
    }
    return place;
}

std::string Reports::CheckAsText(const std::string& path, const CReport& report)
{
    const std::string name = Escapes::ForTerminal(path);
    const CReport reader = report.GetObject("reader");
    std::string text;
    report.ForEach("findings", [&](const CReport& finding) {
        text += name + ": " + Place(finding) + ": " + Escapes::ForTerminal(finding.GetText("text")) +
                (finding.GetFlag("damage") ? "\n" : " (not damaged)\n");
    });
    text += name + ": " + Escapes::ForTerminal(report.GetText("kind")) + ", " +
            std::to_string(reader.GetNumber("elements")) +
            (report.GetText("kind") == "stock file" ? " entries" : " elements");
    if (reader.GetNumber("lost") > 0) {
        text += ", a reader loses " + std::to_string(reader.GetNumber("lost"));
    }
    if (reader.GetNumber("code") != 0) {
        text += ", a reader answers code " + std::to_string(reader.GetNumber("code"));
    }
    return text + (report.GetCount("findings") == 0 ? ", whole\n" : "\n");
}

std::string Reports::CheckInJSON(const std::string& path, const CReport& report)
{
    const CReport reader = report.GetObject("reader");
    CJSONObject object;
    JSON::PutPath(object, "path", path);
    object.Put("ok", true);
    object.Put("kind", report.GetText("kind"));
    object.BeginList("findings");
    report.ForEach("findings", [&object](const CReport& finding) {
        object.Add({{"offset", finding.GetNumber("offset")},
                    {"key", finding.GetNumber("key")},
                    {"element", finding.GetNumber("element")},
                    {"component", finding.GetNumber("component")},
                    {"damage", finding.GetFlag("damage")},
                    {"text", finding.GetText("text")}});
    });
    object.EndList();
    object.Put("reader", {{"code", reader.GetNumber("code")},
                          {"elements", reader.GetNumber("elements")},
                          {"lost", reader.GetNumber("lost")}});
    return object.Take() + "\n";
}

static int RunCheck(const tCheckOptions& options)
{
    const bool json = options.format == "json";
    std::string text;
    bool damaged = false;
    CInquiry inquiry(options);
    CInquiry::tUseFailure useFailure;
    if (json) {
        useFailure = [&text](const std::string& path, const tFailure& failure) {
            tAnswer answer;
            answer.failure = failure;
            AppendJSONRecord(text, path, answer, {});
        };
    }
    CInquiry::eResult result = inquiry.Ask(
        eVerb::kCheck, options.paths,
        [&](const std::string& path, const CReport& report) {
            report.ForEach("findings",
                           [&damaged](const CReport& finding) { damaged = damaged || finding.GetFlag("damage"); });
            text += json ? Reports::CheckInJSON(path, report) : Reports::CheckAsText(path, report);
        },
        useFailure);
    if (result == CInquiry::eResult::kDone && damaged) {
        result = CInquiry::eResult::kFailed;
    }
    return FinishCommand(text, result);
}

const tCommand kCheckCommand = {"check", "Say what is wrong with documents, and where",
                                "  velmora check plan.velmora\n  velmora check --format json ~/Layouts\n",
                                CallCommand<tCheckOptions, AddCheckOptions, RunCheck, CheckCheck>};
