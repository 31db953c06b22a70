#include "commands/SandboxTrial.h"

#include "Interrupt.h"

#include <algorithm>
#include <map>

using nlohmann::ordered_json;

CPatient::CPatient(tWorkerSettings settings, const std::string& sandbox, double timeoutSeconds)
    : mPool(
          [&] {
              settings.sandbox = sandbox;
              const bool isWhole = sandbox == "auto" || sandbox == "require";
              settings.user = isWhole ? settings.user : 0; // one layer alone may be another than that of the user
              return std::move(settings);
          }(),
          timeoutSeconds, 1)
{}

bool CPatient::Start(tFailure& failure)
{
    return mPool.WaitUntilReady(failure) == CWorkerPool::eResult::kDone;
}

tAnswer CPatient::Ask(eVerb verb, const std::string& argument, CDescriptor document)
{
    tRequest request;
    request.verb = verb;
    request.contentType = argument;
    mPool.Submit(mTicket++, std::move(request), std::move(document));
    uint64_t ticket = 0;
    tAnswer answer;
    if (mPool.Collect(ticket, answer) == CWorkerPool::eResult::kInterrupted) {
        return MakeFailure(eFailure::kTimeout, "interrupted");
    }
    return answer;
}

namespace {
/// What became of an act.
struct tTrial {
    enum class eEnd { kSucceeded, kRefused, kUnknown } end = eEnd::kUnknown;
    std::string detail; ///< how it was refused, or why that is not known
};
} // namespace

static tTrial TryAct(CPatient& worker, const std::string& act)
{
    const tAnswer answer = worker.Ask(eVerb::kExamine, act);
    CReport report;
    if (answer.ok && CReport::Parse(answer.report, report)) {
        const bool succeeded = report.GetFlag("succeeded");
        return {succeeded ? tTrial::eEnd::kSucceeded : tTrial::eEnd::kRefused, report.GetText("error")};
    }
    // A worker that was ended has not done it. One that never came up has not tried.
    return {answer.failure.kind == eFailure::kCrash ? tTrial::eEnd::kRefused : tTrial::eEnd::kUnknown,
            answer.failure.message};
}

static ordered_json Describe(const tTrial& trial)
{
    const char* const words[] = {"succeeded", "refused", "unknown"};
    ordered_json json = {{"result", words[static_cast<size_t>(trial.end)]}};
    if (!trial.detail.empty()) {
        json["detail"] = trial.detail;
    }
    return json;
}

static void AddUnknown(std::vector<std::string>& problems, const std::string& description, const std::string& reason)
{
    problems.push_back("whether a worker can " + description);
    problems.back() += " is not known: " + reason;
}

ordered_json SandboxTrial::Try(const CReport& diagnosis, const tWorkerSettings& settings, double timeoutSeconds,
                               CPatient& outside, const tHello& greeting, std::vector<std::string>& problems)
{
    CPatient confined(settings, settings.sandbox, timeoutSeconds);
    std::map<std::string, std::unique_ptr<CPatient>> alone;
    for (const tSandboxLayer& layer : greeting.sandbox) {
        if (layer.isOn) {
            alone[layer.name] = std::make_unique<CPatient>(settings, layer.name, timeoutSeconds);
        }
    }
    ordered_json trials = ordered_json::array();
    diagnosis.ForEach("acts", [&](const CReport& act) {
        if (Interrupt::IsRequested()) {
            return;
        }
        const std::string name = act.GetText("name");
        const std::string description = act.GetText("description");
        const tTrial free = TryAct(outside, name);
        ordered_json trial = {{"name", name}, {"description", description}, {"outside", Describe(free)}};
        if (free.end != tTrial::eEnd::kSucceeded) {
            AddUnknown(problems, description, "it fails without a sandbox, too (" + free.detail + ")");
        }
        const auto attempt = [&](CPatient& worker, const char* where) {
            const tTrial result = TryAct(worker, name);
            if (result.end == tTrial::eEnd::kSucceeded) {
                problems.push_back("a worker can " + description + " in spite of " + where);
            } else if (result.end == tTrial::eEnd::kUnknown) {
                AddUnknown(problems, description, result.detail);
            }
            return Describe(result);
        };
        trial["confined"] = attempt(confined, "the sandbox");
        trial["layers"] = ordered_json::object();
        for (const std::string& layer : act.GetTexts("layers")) {
            const auto found = alone.find(layer);
            if (found != alone.end()) {
                trial["layers"][layer] = attempt(*found->second, layer.c_str());
            }
        }
        trials.push_back(std::move(trial));
    });
    return trials;
}
