// velmora serve: attributes of one document after the other, for a caller that keeps the process.
#include "Bounds.h"
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "Interrupt.h"
#include "commands/CommandLine.h"
#include "input/CDocumentSource.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"
#include "pool/CWorkerPool.h"
#include "protocol/UTF8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <map>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace {
struct tServeOptions : tWorkerOptions {
    unsigned jobs = 0;
};
} // namespace

static void AddServeOptions(CLI::App& app, tServeOptions& options)
{
    AddJobsOption(app, options.jobs, "Worker processes at most (default: one for each core)");
    AddWorkerOptions(app, options);
}

namespace {
/// A request that was understood so far.
struct tServed {
    JSON::tRecord id; ///< a string or a number; null for none
    std::string path;
    std::optional<std::string> record; ///< the answer, while it waits for its turn
};

/// Reads requests and writes answers until the input ends. Those with an id are answered when they are done, the others
/// in their order.
class CServer {
public:
    explicit CServer(CWorkerPool& pool)
        : mPool(pool), mLines(CDescriptor(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)), '\n'), mOutput(STDOUT_FILENO)
    {}

    int Run()
    {
        bool more = true;
        while (more || !mPending.empty()) {
            bool wait = false;
            more = more && ReadRequests(wait);
            TakeAnswers();
            if (!mOutput.Flush()) {
                return mOutput.IsReaderGone() ? kExitOK : kExitFailed;
            }
            if (!more && mPending.empty()) {
                break;
            }
            // With all workers busy no further line is read: whoever writes them has to wait.
            const int milliseconds = more && !wait && HasRoom() ? 0 : -1;
            if (mPool.Wait(milliseconds, wait ? mLines.GetDescriptor() : -1) == CWorkerPool::eResult::kInterrupted) {
                break;
            }
        }
        TakeAnswers();
        mOutput.Flush();
        if (mLines.GetError() != 0) {
            COutput::PrintMessage(std::string("the requests cannot be read: ") + strerror(mLines.GetError()));
        }
        return Interrupt::IsRequested() ? kExitInterrupted : mLines.GetError() != 0 ? kExitFailed : kExitOK;
    }

private:
    bool HasRoom() const { return mPool.HasRoom() && mPending.size() < Bounds::kMostServed; }

    /// @param wait  set when there are no lines at the moment @return false at the end of the input
    bool ReadRequests(bool& wait)
    {
        while (!Interrupt::IsRequested() && HasRoom()) {
            std::string line;
            switch (mLines.Next(line)) {
            case CLineReader::eResult::kNotYet:
                wait = true;
                return true;
            case CLineReader::eResult::kEnd:
                return false;
            case CLineReader::eResult::kCut:
                Refuse({}, "the line is too long");
                break;
            case CLineReader::eResult::kLine:
                if (line.find_first_not_of(" \t\r") != std::string::npos) {
                    Begin(line);
                }
            }
        }
        return true;
    }

    void Begin(const std::string& line)
    {
        const nlohmann::json request = nlohmann::json::parse(line, nullptr, false);
        if (!request.is_object()) {
            Refuse({}, "the line is no JSON object");
            return;
        }
        tServed served;
        if (request.contains("id")) {
            if (!request["id"].is_string() && !request["id"].is_number()) {
                Refuse({}, "\"id\" must be a string or a number");
                return;
            }
            served.id = request["id"];
        }
        const bool encoded = request.contains("path_base64");
        const char* member = encoded ? "path_base64" : "path";
        if (!request.contains(member) || !request[member].is_string()) {
            Refuse(served.id, "there is no \"path\", or it is no string");
            return;
        }
        served.path = request[member].get<std::string>();
        std::string bytes;
        if (encoded && !Escapes::FromBase64(served.path, bytes)) {
            Refuse(served.id, "\"path_base64\" is not in base 64");
            return;
        }
        served.path = encoded ? bytes : served.path;
        Submit(std::move(served));
    }

    void Submit(tServed served)
    {
        const uint64_t ticket = mNextTicket++;
        const std::string path = served.path;
        mPending.emplace(ticket, std::move(served));
        tInput input;
        input.path = path;
        if (path.find('\0') != std::string::npos) {
            input.failure = MakeFailure(eFailure::kPath, "no path: it holds a zero byte").failure;
        } else if (mPool.GetRefusal() != nullptr) {
            input.failure = *mPool.GetRefusal();
        } else {
            CDocumentSource::OpenNamed(input);
        }
        if (input.failure) {
            tAnswer answer;
            answer.failure = *input.failure;
            Finish(ticket, answer);
        } else {
            mPool.Submit(ticket, {eVerb::kImport, Importer::kContentType}, std::move(input.document));
        }
    }

    void TakeAnswers()
    {
        uint64_t ticket = 0;
        tAnswer answer;
        while (mPool.Take(ticket, answer)) {
            Finish(ticket, answer);
        }
    }

    void Finish(uint64_t ticket, const tAnswer& answer)
    {
        const auto found = mPending.find(ticket);
        std::string record;
        AppendJSONRecord(record, found->second.path, answer, {}, found->second.id);
        Hand(found, std::move(record));
    }

    /// Answers a line that is no request.
    void Refuse(const JSON::tRecord& id, const char* message)
    {
        const auto pending = mPending.emplace(mNextTicket++, tServed{id, {}, {}}).first;
        JSON::tRecord record;
        if (!id.is_null()) {
            record["id"] = id;
        }
        record["ok"] = false;
        record["error"] = JSON::DescribeFailure("request", message);
        Hand(pending, JSON::ToLine(record));
    }

    /// Writes an answer whose turn it is, and those without id that have waited for it.
    void Hand(std::map<uint64_t, tServed>::iterator pending, std::string record)
    {
        if (!pending->second.id.is_null()) {
            mOutput.Write(record);
            mPending.erase(pending);
            return;
        }
        pending->second.record = std::move(record);
        for (auto next = mPending.begin(); next != mPending.end();) {
            if (!next->second.id.is_null()) {
                ++next;
            } else if (next->second.record) {
                mOutput.Write(*next->second.record);
                next = mPending.erase(next);
            } else {
                break;
            }
        }
    }

    CWorkerPool& mPool;
    CLineReader mLines;
    COutput mOutput;
    std::map<uint64_t, tServed> mPending; ///< by ticket, so in the order of the requests
    uint64_t mNextTicket = 0;
};
} // namespace

static int RunServe(const tServeOptions& options)
{
    std::optional<tFailure> cannotServe;
    CWorkerPool pool(GetWorkerSettings(options, cannotServe), options.timeoutSeconds, CountWorkers(options.jobs));
    if (cannotServe) {
        pool.Refuse(*cannotServe);
    }
    tFailure failure;
    switch (pool.WaitUntilReady(failure)) {
    case CWorkerPool::eResult::kDone:
        break;
    case CWorkerPool::eResult::kFailed:
        COutput::PrintMessage(Escapes::ForTerminal(failure.message));
        break;
    case CWorkerPool::eResult::kInterrupted:
        return kExitInterrupted;
    }
    const int status = CServer(pool).Run();
    return pool.GetRefusal() != nullptr && status == kExitOK ? kExitFailed : status;
}

const tCommand kServeCommand = {"serve", "Answer requests for attributes, a JSON object a line, until the input ends",
                                "  echo '{\"path\":\"plan.velmora\"}' | velmora serve\n"
                                "  echo '{\"id\":7,\"path\":\"/home/me/plan.velmora\"}' | velmora serve --jobs 1\n",
                                CallCommand<tServeOptions, AddServeOptions, RunServe>};
