// velmora serve: answers about one document after the other, for a caller that keeps the process.
#include "Bounds.h"
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "Interrupt.h"
#include "commands/CommandLine.h"
#include "commands/IndexOptions.h"
#include "commands/ServeRequest.h"
#include "index/CIndexDatabase.h"
#include "input/CDocumentSource.h"
#include "output/COutput.h"
#include "output/CReplacedFile.h"
#include "output/Escapes.h"
#include "pool/CWorkerPool.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <map>
#include <new>
#include <unistd.h>

namespace {
struct tServeOptions : tWorkerOptions {
    unsigned jobs = 0;
    std::string database; ///< the search index; empty for the user's own
};
} // namespace

static void AddServeOptions(CParser& parser, tServeOptions& options)
{
    AddJobsOption(parser, options.jobs, "Worker processes at most (default: one for each core)");
    AddDatabaseOption(parser, options.database);
    AddWorkerOptions(parser, options);
}

namespace {
/// A request that was understood so far.
struct tServed : tServeRequest {
    std::optional<std::string> record; ///< the answer, while it waits for its turn
};

/// Reads requests and writes answers until the input ends. Those with an id are answered when they are done, the others
/// in their order. Pictures need workers that may read fonts: they have a pool of their own, from the first such
/// request on.
class CServer {
public:
    /// @param makeDrawing  makes the pool of workers that draw
    /// @param database     path of the search index
    CServer(CWorkerPool& pool, std::function<std::unique_ptr<CWorkerPool>()> makeDrawing, std::string database)
        : mPools({&pool}), mMakeDrawing(std::move(makeDrawing)), mDatabase(std::move(database)),
          mLines(CDescriptor(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)), '\n'), mOutput(STDOUT_FILENO)
    {}

    int Run()
    {
        mOutput.Write(
            JSON::ToLine({{"schema", JSON::kSchema}, {"version", GetVersion()}, {"verbs", ServeRequest::GetVerbs()}}));
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
            const int descriptor = wait ? mLines.GetDescriptor() : -1;
            if (CWorkerPool::WaitTogether(mPools, milliseconds, descriptor) == CWorkerPool::eResult::kInterrupted) {
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
    bool HasRoom() const
    {
        return mPending.size() < Bounds::kMostServed && mWaitingBytes < Bounds::kMostWaitingBytes &&
               std::all_of(mPools.begin(), mPools.end(), [](const CWorkerPool* pool) { return pool->HasRoom(); });
    }

    /// The pool whose workers can answer such a request.
    CWorkerPool& ChoosePool(const tServeRequest& request)
    {
        if (!request.IsPicture()) {
            return *mPools.front();
        }
        if (mDrawing == nullptr) {
            mDrawing = mMakeDrawing();
            mPools.push_back(mDrawing.get());
        }
        return *mDrawing;
    }

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
        tServeRequest request;
        const std::string problem = ServeRequest::Parse(line, request);
        if (!problem.empty()) {
            Refuse(request.id, problem);
        } else if (request.verb == eServed::kSearch) {
            Search(request);
        } else {
            Submit({std::move(request), {}});
        }
    }

    void Submit(tServed served)
    {
        CWorkerPool& pool = ChoosePool(served);
        const uint64_t ticket = mNextTicket++;
        const tServeRequest& request = mPending.emplace(ticket, std::move(served)).first->second;
        tInput input;
        input.path = request.path;
        if (input.path.find('\0') != std::string::npos) {
            input.failure = MakeFailure(eFailure::kPath, "no path: it holds a zero byte").failure;
        } else if (pool.GetRefusal() != nullptr) {
            input.failure = *pool.GetRefusal();
        } else {
            CDocumentSource::OpenNamed(input);
        }
        if (input.failure) {
            tAnswer answer;
            answer.failure = *input.failure;
            Finish(ticket, std::move(answer));
            return;
        }
        static constexpr eVerb kVerbs[] = {eVerb::kImport, eVerb::kCheck, eVerb::kParts, eVerb::kRender,
                                           eVerb::kRender}; // in the order of eServed
        pool.Submit(ticket, {kVerbs[static_cast<size_t>(request.verb)], Importer::kContentType, request.picture},
                    std::move(input.document));
    }

    void TakeAnswers()
    {
        uint64_t ticket = 0;
        tAnswer answer;
        for (CWorkerPool* pool : mPools) {
            while (pool->Take(ticket, answer)) {
                Finish(ticket, std::move(answer));
            }
        }
    }

    void Finish(uint64_t ticket, tAnswer answer)
    {
        const auto found = mPending.find(ticket);
        const tServeRequest& request = found->second;
        std::string record;
        try {
            if (answer.ok && !request.output.empty()) {
                WritePicture(request, answer);
            }
            record = ServeRequest::Answer(request, std::move(answer));
        } catch (const std::bad_alloc&) {
            record = ServeRequest::Answer(request, MakeNoRoom());
        }
        Hand(found, std::move(record));
    }

    /// Writes a picture where the request wants it; where that fails, so has the request. What is no file stays alone:
    /// a pipe that nobody reads would stop everything.
    static void WritePicture(const tServeRequest& request, tAnswer& answer)
    {
        std::error_code error;
        const bool isFile = CReplacedFile::IsRegular(request.output);
        const std::string problem = isFile && !request.force ? "exists already; \"force\":true replaces it"
                                    : !isFile && std::filesystem::exists(request.output, error)
                                        ? "is no file that could be replaced"
                                        : CReplacedFile::Write(request.output, answer.picture, request.force);
        if (!problem.empty()) {
            answer = MakeFailure(eFailure::kOutput, request.output + ": " + problem);
        }
    }

    /// Answers from the index, which is opened anew each time: another one may have taken its place.
    void Search(const tServeRequest& request)
    {
        JSON::tRecord record = JSON::tRecord::object();
        if (!request.id.is_null()) {
            record["id"] = request.id;
        }
        record["ok"] = true;
        JSON::tRecord& documents = record["documents"] = JSON::tRecord::array();
        tSearchQuestion question = request.question;
        question.wish.folder = question.wish.folder.empty() ? std::string() : ResolvePath(question.wish.folder);
        std::string mistake;
        std::string failure;
        try {
            CIndexDatabase index(mDatabase, CIndexDatabase::eAccess::kRead);
            mistake = SearchRecords::Answer(index, question, [&documents](JSON::tRecord& document) {
                documents.push_back(std::move(document));
                return !Interrupt::IsRequested();
            });
        } catch (const CIndexError& error) {
            failure = error.what();
        } catch (const std::exception& error) {
            failure = CIndexDatabase::Explain(mDatabase, error);
        }
        AnswerAtOnce(request.id, !mistake.empty()   ? ServeRequest::Refuse(request.id, mistake)
                                 : !failure.empty() ? ServeRequest::Refuse(request.id, failure, "path")
                                                    : JSON::ToLine(record));
    }

    void AnswerAtOnce(const JSON::tRecord& id, std::string record)
    {
        tServed served;
        served.id = id;
        Hand(mPending.emplace(mNextTicket++, std::move(served)).first, std::move(record));
    }

    /// Answers a line that is no request.
    void Refuse(const JSON::tRecord& id, const std::string& problem)
    {
        AnswerAtOnce(id, ServeRequest::Refuse(id, problem));
    }

    /// Writes an answer whose turn it is, and those without id that have waited for it.
    void Hand(std::map<uint64_t, tServed>::iterator pending, std::string record)
    {
        if (!pending->second.id.is_null()) {
            mOutput.Write(record);
            mPending.erase(pending);
            return;
        }
        mWaitingBytes += record.size();
        pending->second.record = std::move(record);
        for (auto next = mPending.begin(); next != mPending.end();) {
            if (!next->second.id.is_null()) {
                ++next;
            } else if (next->second.record) {
                mOutput.Write(*next->second.record);
                mWaitingBytes -= next->second.record->size();
                next = mPending.erase(next);
            } else {
                break;
            }
        }
    }

    std::vector<CWorkerPool*> mPools; ///< the caller's, and that of the workers that draw, once there is one
    std::function<std::unique_ptr<CWorkerPool>()> mMakeDrawing;
    std::unique_ptr<CWorkerPool> mDrawing;
    std::string mDatabase;
    CLineReader mLines;
    COutput mOutput;
    std::map<uint64_t, tServed> mPending; ///< by ticket, so in the order of the requests
    size_t mWaitingBytes = 0;             ///< of the answers in there
    uint64_t mNextTicket = 0;
};
} // namespace

static int RunServe(const tServeOptions& options)
{
    std::optional<tFailure> cannotServe;
    tWorkerSettings settings = GetWorkerSettings(options, cannotServe);
    const size_t workers = CountWorkers(options.jobs);
    CWorkerPool pool(settings, options.timeoutSeconds, workers);
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
    settings.draws = true;
    const auto makeDrawing = [&] {
        auto drawing = std::make_unique<CWorkerPool>(settings, options.timeoutSeconds, workers);
        if (pool.GetRefusal() != nullptr) {
            drawing->Refuse(*pool.GetRefusal());
        }
        return drawing;
    };
    const int status = CServer(pool, makeDrawing, GetDatabasePath(options.database)).Run();
    return pool.GetRefusal() != nullptr && status == kExitOK ? kExitFailed : status;
}

const tCommand kServeCommand = {"serve", "Answer requests, a JSON object a line, until the input ends",
                                "  echo '{\"path\":\"plan.velmora\"}' | velmora serve\n"
                                "  echo '{\"id\":7,\"path\":\"/home/me/plan.velmora\"}' | velmora serve --jobs 1\n"
                                "  echo '{\"verb\":\"check\",\"path\":\"plan.velmora\"}' | velmora serve\n",
                                CallCommand<tServeOptions, AddServeOptions, RunServe>};
