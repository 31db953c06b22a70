#include "commands/Inquiry.h"

#include "ExitCodes.h"
#include "Interrupt.h"
#include "input/CDocumentSource.h"
#include "output/COutput.h"
#include "output/Escapes.h"

#include <algorithm>
#include <unistd.h>

bool CReport::Parse(const std::string& text, CReport& report)
{
    nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object()) {
        return false;
    }
    report = CReport(std::move(json));
    return true;
}

std::string CReport::GetText(const char* key) const
{
    return Has(key) && mJSON[key].is_string() ? mJSON[key].get<std::string>() : std::string();
}

long long CReport::GetNumber(const char* key) const
{
    return Has(key) && mJSON[key].is_number_integer() ? mJSON[key].get<long long>() : 0;
}

double CReport::GetReal(const char* key) const
{
    return Has(key) && mJSON[key].is_number() ? mJSON[key].get<double>() : 0.0;
}

bool CReport::GetFlag(const char* key) const
{
    return Has(key) && mJSON[key].is_boolean() && mJSON[key].get<bool>();
}

std::vector<CReport> CReport::GetList(const char* key) const
{
    std::vector<CReport> list;
    if (Has(key) && mJSON[key].is_array()) {
        for (const nlohmann::json& entry : mJSON[key]) {
            list.emplace_back(entry);
        }
    }
    return list;
}

std::vector<std::string> CReport::GetTexts(const char* key) const
{
    std::vector<std::string> texts;
    if (Has(key) && mJSON[key].is_array()) {
        for (const nlohmann::json& entry : mJSON[key]) {
            if (entry.is_string()) {
                texts.push_back(entry.get<std::string>());
            }
        }
    }
    return texts;
}

CReport CReport::GetObject(const char* key) const
{
    return Has(key) ? CReport(mJSON[key]) : CReport();
}

CInquiry::CInquiry(const tWorkerOptions& options, bool asksForStock)
    : mPool(
          [&] {
              tWorkerSettings settings = GetWorkerSettings(options, mCannotServe);
              settings.tellsStockFile = asksForStock;
              return settings;
          }(),
          options.timeoutSeconds, 1)
{
    tFailure failure;
    if (!mCannotServe && mPool.WaitUntilReady(failure) == CWorkerPool::eResult::kFailed) {
        mCannotServe = failure;
    }
    if (mCannotServe) {
        COutput::PrintMessage(Escapes::ForTerminal(mCannotServe->message));
    }
}

CInquiry::eResult CInquiry::Ask(eVerb verb, const std::vector<std::string>& paths, const tUse& use,
                                const tUseFailure& useFailure)
{
    CDocumentSource source(paths);
    bool failed = false;
    tInput input;
    while (!Interrupt::IsRequested() && source.Next(input)) {
        tAnswer answer;
        if (mCannotServe) {
            answer.failure = *mCannotServe;
        } else if (input.failure) {
            answer.failure = *input.failure;
        } else {
            uint64_t ticket = 0;
            mPool.Submit(mNextTicket++, {verb, {}, {}, NameOfFile(input.path)}, std::move(input.document));
            if (mPool.Collect(ticket, answer) == CWorkerPool::eResult::kInterrupted) {
                return eResult::kInterrupted;
            }
        }
        CReport report;
        if (answer.ok && !CReport::Parse(answer.report, report)) {
            answer = MakeFailure(eFailure::kCrash, "the worker's report is out of form");
        }
        if (answer.ok) {
            use(input.path, report);
            continue;
        }
        failed = true;
        if (useFailure) {
            useFailure(input.path, answer.failure);
        } else if (!mCannotServe) {
            COutput::PrintMessage(Escapes::ForTerminal(input.path + ": " + answer.failure.message));
        }
    }
    return Interrupt::IsRequested() ? eResult::kInterrupted : failed ? eResult::kFailed : eResult::kDone;
}

int FinishCommand(const std::string& text, CInquiry::eResult result)
{
    if (result == CInquiry::eResult::kInterrupted) {
        return kExitInterrupted;
    }
    COutput output(STDOUT_FILENO);
    output.Write(text);
    const bool written = output.Flush() || output.IsReaderGone();
    return written && result == CInquiry::eResult::kDone ? kExitOK : kExitFailed;
}

std::string NameOfFile(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}
