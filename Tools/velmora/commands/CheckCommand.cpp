// velmora check: what is wrong with documents, and where.
#include "commands/Batch.h"
#include "commands/CArticleCheck.h"
#include "commands/Reports.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>
#include <unistd.h>

namespace {
struct tCheckOptions : tBatchOptions {
    std::string format = "text";
    std::vector<std::string> libraries; ///< track library files, and folders of them
};
} // namespace

static void AddCheckOptions(CParser& parser, tCheckOptions& options)
{
    AddBatchOptions(parser, options, "Layouts, track libraries and stock files, and folders to search for layouts");
    AddFormatOption(parser, options.format, {"text", "json"}, "text (for people) or json (an object a line)");
    parser
        .Add("--library", options.libraries,
             "A track library, or a folder of them, besides those in VELMORA_LIBRARIES and the user's "
             "library folder: stock files are held against them")
        .TakesOne()
        .Named("PATH");
}

static std::string CheckCheck(const tCheckOptions& options)
{
    return CheckBatchOptions(options, "check");
}

/// Where a finding lies, in words.
static std::string Place(const CReport& finding)
{
    if (finding.GetNumber("line") > 0) { // of a text, where nobody counts bytes
        return "line " + std::to_string(finding.GetNumber("line"));
    }
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

std::string Reports::SummarizeDamage(const CReport& report)
{
    std::string first;
    size_t count = 0;
    report.ForEach("findings", [&](const CReport& finding) {
        if (finding.GetFlag("damage") && ++count == 1) {
            first = Place(finding) + ": " + finding.GetText("text");
        }
    });
    if (const long long code = report.GetObject("reader").GetNumber("code"); count == 0 && code != 0) {
        return "a reader answers code " + std::to_string(code);
    }
    return first + (count > 1 ? "; " + std::to_string(count - 1) + " more" : "");
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
    const std::string damage = SummarizeDamage(report);
    object.Put("ok", damage.empty());
    if (!damage.empty()) {
        object.Put("error", DescribeFailure(MakeFailure(eFailure::kDamaged, damage).failure));
    }
    object.Put("kind", report.GetText("kind"));
    object.BeginList("findings");
    report.ForEach("findings", [&object](const CReport& finding) {
        JSON::tRecord record = {
            {"offset", finding.GetNumber("offset")},   {"key", finding.GetNumber("key")},
            {"element", finding.GetNumber("element")}, {"component", finding.GetNumber("component")},
            {"damage", finding.GetFlag("damage")},     {"text", finding.GetText("text")}};
        if (finding.GetNumber("line") > 0) {
            record["line"] = finding.GetNumber("line");
        }
        object.Add(record);
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
    CArticleCheck articles(options, options.libraries);
    const auto format = [&](const tInput& input, tAnswer& answer, const CReport& first) {
        const CReport report = articles.Complete(first);
        if (const std::string damage = Reports::SummarizeDamage(report); !damage.empty()) {
            answer = MakeFailure(eFailure::kDamaged, damage);
        }
        return json ? Reports::CheckInJSON(input.path, report) : Reports::CheckAsText(input.path, report);
    };
    const int status = PrintReports(options, eVerb::kCheck, json, format, "whole");
    return std::max(status, articles.GetStatus());
}

const tCommand kCheckCommand = {"check", "Say what is wrong with documents, and where",
                                "  velmora check plan.velmora\n  velmora check --format json ~/Layouts\n",
                                CallCommand<tCheckOptions, AddCheckOptions, RunCheck, CheckCheck>};
