// velmora doctor: whether everything that velmora needs is there and works, and whether the sandbox holds.
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "Interrupt.h"
#include "Places.h"
#include "commands/CommandLine.h"
#include "commands/SandboxTrial.h"
#include "index/CIndexDatabase.h"
#include "output/CJSONLines.h"
#include "output/COutput.h"
#include "output/CTable.h"
#include "output/Escapes.h"
#include "output/JSON.h"
#include "protocol/BuiltInDocument.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using nlohmann::ordered_json;

/// What the worker outside may map, so that the trial of the memory limit can succeed there: 1 TB.
static constexpr unsigned kMuchMemory = 1U << 20;
/// From this number on a descriptor is left open for workers to inherit.
static constexpr int kLeftOpen = 64;

namespace {
struct tDoctorOptions : tWorkerOptions {
    std::string format = "text";
    bool wide = false; ///< lines are not fitted to a terminal
};
} // namespace

static void AddDoctorOptions(CParser& parser, tDoctorOptions& options)
{
    AddFormatOption(parser, options.format, {"text", "json"}, "text (for people) or json (one object)");
    AddWideOption(parser, options.wide);
    AddWorkerOptions(parser, options);
}

namespace {
/// The examination: what was found, as JSON, and what is wrong, a line each.
class CExamination {
public:
    explicit CExamination(const tDoctorOptions& options)
        : mOptions(options), mSettings(GetWorkerSettings(options, mCannotServe))
    {}

    void Run();
    bool IsWell() const { return mProblems.empty(); }
    ordered_json GetFindings() const;
    std::string GetText(const tLook& look) const;

private:
    void ExamineSandbox();
    void ExamineImport();
    void ExaminePlugIn(const CReport& diagnosis);
    void ExamineTypes();
    void ExaminePreferences();
    void ExamineIndex();
    void Add(const std::string& problem) { mProblems.push_back(problem); }
    std::string GetTrialsText(const tLook& look) const;

    const tDoctorOptions& mOptions;
    std::optional<tFailure> mCannotServe;
    tWorkerSettings mSettings;
    long long mForeignDescriptors = 0;
    ordered_json mPlugIn = ordered_json::object();
    ordered_json mFonts = ordered_json::object();
    ordered_json mPreferences = ordered_json::object();
    ordered_json mIndex = ordered_json::object();
    ordered_json mSandbox = ordered_json::object();
    std::vector<std::string> mProblems;
};
} // namespace

static std::vector<std::string> FindAttribute(const tAnswer& answer, const char* key)
{
    for (const tAttribute& attribute : answer.attributes) {
        if (attribute.key == key) {
            return attribute.texts;
        }
    }
    return {};
}

/// Imports the built-in document as every other one is imported.
void CExamination::ExamineImport()
{
    CPatient worker(mSettings, mSettings.sandbox, mOptions.timeoutSeconds);
    tAnswer answer = MakeFailure(eFailure::kPath, "there is no memory for the built-in layout");
    if (CDescriptor document = BuiltInDocument::Open(); document.IsOpen()) {
        answer = worker.Ask(eVerb::kImport, Importer::kContentType, std::move(document));
    }
    const std::vector<std::string> content = FindAttribute(answer, "kMDItemTextContent");
    if (answer.ok &&
        (FindAttribute(answer, "kMDItemDescription") != std::vector<std::string>{BuiltInDocument::kDescription} ||
         FindAttribute(answer, "kMDItemLayerNames") != std::vector<std::string>{BuiltInDocument::kLayer} ||
         content.empty() || content.front().find(BuiltInDocument::kText) == std::string::npos)) {
        answer = MakeFailure(eFailure::kPlugIn, "its attributes are not those of the document");
    }
    mPlugIn["imports"] = answer.ok;
    if (!answer.ok) {
        Add("the built-in layout cannot be imported: " + answer.failure.message);
    }
}

void CExamination::ExaminePlugIn(const CReport& diagnosis)
{
    const CReport factories = diagnosis.GetObject("factories");
    const std::string factory = factories.GetText(Importer::kFactoryUUID);
    mPlugIn["factory"] = factory;
    if (factory.empty()) {
        Add(std::string("the plug-in has no factory ") + Importer::kFactoryUUID);
    }
}

void CExamination::ExamineTypes()
{
    CPatient worker(mSettings, mSettings.sandbox, mOptions.timeoutSeconds);
    const tAnswer answer = worker.Ask(eVerb::kSchema);
    ordered_json types = ordered_json::array();
    for (const tSchemaType& type : answer.schema.types) {
        types.push_back(type.identifier);
    }
    if (std::find(types.begin(), types.end(), Importer::kContentType) == types.end()) {
        Add(std::string("the plug-in does not take ") + Importer::kContentType);
    }
    mPlugIn["types"] = types;
}

void CExamination::ExaminePreferences()
{
    const std::string path = Places::FindPreferencesFile();
    mPreferences["path"] = UTF8::MakeValid(path);
    const bool exists = !path.empty() && access(path.c_str(), F_OK) == 0;
    mPreferences["exists"] = exists;
    if (exists) {
        const bool readable = access(path.c_str(), R_OK) == 0;
        mPreferences["readable"] = readable;
        if (!readable) {
            Add("the preferences " + path + " cannot be read: " + strerror(errno));
        }
    } else if (path.empty()) {
        Add("there is no place for preferences: neither HOME nor XDG_CONFIG_HOME is an absolute path");
    }
}

void CExamination::ExamineIndex()
{
    const std::string path = Places::FindIndex();
    mIndex["path"] = UTF8::MakeValid(path);
    if (path.empty()) {
        Add("there is no place for an index: neither HOME nor XDG_DATA_HOME is an absolute path");
        return;
    }
    mIndex["exists"] = true;
    try {
        const tIndexStatus status = CIndexDatabase(path, CIndexDatabase::eAccess::kRead).GetStatus();
        mIndex["version"] = status.version;
        mIndex["documents"] = status.documents;
        mIndex["failed"] = status.failed;
    } catch (const CIndexMissing&) {
        mIndex["exists"] = false;
    } catch (const std::exception& error) {
        Add(error.what());
    }
}

void CExamination::ExamineSandbox()
{
    tWorkerSettings unlimited = mSettings;
    unlimited.memoryMegabytes = kMuchMemory;
    // What a careless caller leaves open would be inherited by every program that is started.
    const CDescriptor leftOpen(fcntl(STDERR_FILENO, F_DUPFD, kLeftOpen));
    CPatient outside(unlimited, "off", mOptions.timeoutSeconds);
    CPatient confined(mSettings, mSettings.sandbox, mOptions.timeoutSeconds);
    tFailure failure;
    if (!confined.Start(failure)) {
        Add(failure.message);
        return;
    }
    const tAnswer answer = outside.Ask(eVerb::kExamine);
    CReport diagnosis;
    if (!answer.ok || !CReport::Parse(answer.report, diagnosis)) {
        Add("the worker cannot be examined: " + answer.failure.message);
        return;
    }
    mForeignDescriptors = diagnosis.GetNumber("foreign_descriptors");
    if (mForeignDescriptors > 0) {
        Add("a worker has files open that are its caller's: " + std::to_string(mForeignDescriptors));
    }
    ExaminePlugIn(diagnosis);
    mFonts["names"] = diagnosis.GetNumber("font_names");
    mFonts["measures_texts"] = diagnosis.GetFlag("measures_texts");
    if (!diagnosis.GetFlag("measures_texts")) {
        Add("texts cannot be measured or drawn: there is no font, or the text module is missing");
    }
    const tHello& greeting = confined.GetGreeting();
    mSandbox["mode"] = mSettings.sandbox;
    mSandbox["note"] = greeting.sandboxNote;
    mSandbox["layers"] = ordered_json::array();
    for (const tSandboxLayer& layer : greeting.sandbox) {
        mSandbox["layers"].push_back({{"name", layer.name}, {"on", layer.isOn}, {"detail", layer.detail}});
        if (!layer.isOn) {
            Add("the sandbox lacks " + layer.name + ": " + layer.detail);
        }
    }
    if (greeting.sandboxNote.empty()) {
        mSandbox["trials"] =
            SandboxTrial::Try(diagnosis, mSettings, mOptions.timeoutSeconds, outside, greeting, mProblems);
    } else if (mSettings.sandbox != "off") {
        Add("there is no sandbox: " + greeting.sandboxNote);
    }
}

void CExamination::Run()
{
    ExaminePreferences();
    ExamineIndex();
    if (mCannotServe) {
        Add(mCannotServe->message);
        return;
    }
    ExamineSandbox();
    if (!mPlugIn.empty() && !Interrupt::IsRequested()) { // else the worker does not start, which has been said
        ExamineTypes();
        ExamineImport();
    }
}

ordered_json CExamination::GetFindings() const
{
    ordered_json findings = {{"version", GetVersion()}, {"ok", IsWell()}};
    findings["worker"] = {{"path", UTF8::MakeValid(mSettings.program)}, {"foreign_descriptors", mForeignDescriptors}};
    findings["plugin"] = {{"path", UTF8::MakeValid(mSettings.plugIn)}};
    findings["plugin"].update(mPlugIn);
    findings["fonts"] = mFonts;
    findings["preferences"] = mPreferences;
    findings["index"] = mIndex;
    findings["sandbox"] = mSandbox;
    findings["problems"] = ordered_json::array();
    for (const std::string& problem : mProblems) {
        findings["problems"].push_back(UTF8::MakeValid(problem));
    }
    return findings;
}

/// A file's place, and whether it is there.
static std::string DescribePlace(const ordered_json& file, const char* whenAbsent)
{
    const std::string path = file.value("path", "");
    return path.empty() ? "no place for it" : path + (file.value("exists", false) ? "" : whenAbsent);
}

static std::string Line(std::string label, const std::string& value)
{
    label.resize(std::max<size_t>(label.size() + 1, 14), ' ');
    return label + (value.empty() ? "-" : Escapes::ForTerminal(value)) + "\n";
}

/// A trial's outcome for a cell of the table.
static std::string Word(const ordered_json& trial)
{
    const std::string detail = trial.value("detail", "");
    const size_t signal = detail.find("signal ");
    return trial.value("result", "") + (signal != std::string::npos
                                            ? ": " + detail.substr(signal, detail.find(" (", signal) - signal)
                                        : detail.empty() ? std::string()
                                                         : ": " + detail);
}

std::string CExamination::GetTrialsText(const tLook& look) const
{
    CTable table({{"Tried in a worker"}, {"Outside", false, 2}, {"In the sandbox"}, {"By one layer alone", false, 1}});
    for (const ordered_json& trial : mSandbox["trials"]) {
        std::string layers;
        for (const auto& layer : trial["layers"].items()) {
            layers += (layers.empty() ? "" : "; ") + layer.key() + " " + Word(layer.value());
        }
        table.AddRow({trial.value("description", ""), Word(trial["outside"]), Word(trial["confined"]), layers});
    }
    return table.IsEmpty() ? std::string() : "\n" + table.ToText(look);
}

std::string CExamination::GetText(const tLook& look) const
{
    std::string text =
        Line("Version", GetVersion()) + Line("Worker", mSettings.program) + Line("Plug-in", mSettings.plugIn);
    if (!mPlugIn.empty()) {
        std::string types;
        for (const ordered_json& type : mPlugIn.value("types", ordered_json::array())) {
            types += (types.empty() ? "" : ", ") + type.get<std::string>();
        }
        text += Line("", "factory " + std::string(Importer::kFactoryUUID) + ", " + mPlugIn.value("factory", ""));
        text += Line("", "takes " + types);
        text += Line("", mPlugIn.value("imports", false) ? "imports the built-in layout" : "does not import");
        text += Line("Fonts", std::to_string(mFonts.value("names", 0LL)) + " names; texts can " +
                                  (mFonts.value("measures_texts", false) ? "" : "not ") + "be measured");
    }
    text += Line("Preferences", DescribePlace(mPreferences, " (not there: defaults)"));
    text += Line("Index", DescribePlace(mIndex, " (not there yet)"));
    if (mIndex.contains("documents")) {
        text += Line("", std::to_string(mIndex.value("documents", 0LL)) + " documents, " +
                             std::to_string(mIndex.value("failed", 0LL)) + " that could not be read");
    }
    if (mSandbox.contains("mode")) {
        const std::string note = mSandbox.value("note", "");
        text += Line("Sandbox", note.empty() ? mSandbox.value("mode", "") : "none: " + note);
    }
    for (const ordered_json& layer : mSandbox.value("layers", ordered_json::array())) {
        const std::string on = layer.value("on", false) ? "on   " : "OFF  ";
        text += Line("  " + layer.value("name", ""), on + layer.value("detail", ""));
    }
    std::string problems = mProblems.empty() ? "\nAll is well.\n" : "\nProblems:\n";
    for (const std::string& problem : mProblems) {
        problems += "  " + Escapes::ForTerminal(problem) + "\n";
    }
    return Terminal::Fit(text, look) + (mSandbox.contains("trials") ? GetTrialsText(look) : std::string()) +
           Terminal::Fit(problems, look);
}

static int RunDoctor(const tDoctorOptions& options)
{
    CExamination examination(options);
    examination.Run();
    if (Interrupt::IsRequested()) {
        return kExitInterrupted;
    }
    COutput output(STDOUT_FILENO);
    if (options.format == "json") {
        CJSONLines(output).Write(examination.GetFindings());
    } else {
        output.Write(examination.GetText(Terminal::GetLook(STDOUT_FILENO, options.wide)));
    }
    const bool written = output.Flush() || output.IsReaderGone();
    return written && examination.IsWell() ? kExitOK : kExitFailed;
}

const tCommand kDoctorCommand = {"doctor", "Check the installation, and prove that the sandbox holds",
                                 "  velmora doctor\n  velmora doctor --format json --sandbox require\n",
                                 CallCommand<tDoctorOptions, AddDoctorOptions, RunDoctor>};
