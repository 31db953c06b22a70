// A run over many documents: from where they are named to their answers, in order.
#pragma once

#include "input/CDocumentSource.h"
#include "pool/CWorkerPool.h"

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <string>

/// What has become of the documents of a run so far.
struct tRunCounts {
    uint64_t good = 0;
    uint64_t skipped = 0;                   ///< not wanted
    std::map<std::string, uint64_t> failed; ///< by code: "1" to "5", "crash", ...

    uint64_t CountFailed() const;
};

/// What the user of a run does with it. Only `take` is needed.
struct tRunHandlers {
    /// Whether a file is wanted: asked with its path and status, before anything has opened it.
    CDocumentSource::tFilter isWanted;
    /// Whether a document is wanted after all: asked once it is open, before a worker gets it. May read it (pread: its
    /// position belongs to the worker), leave a note in the input, which comes back with the answer, and set a failure,
    /// which then is the answer.
    std::function<bool(tInput& input)> isWantedOpen;
    /// Once for every input that was not skipped, in the order of the inputs. The document is not open any more.
    /// @return false to end the run
    std::function<bool(const tInput& input, tAnswer& answer)> take;
    /// Called whenever the run has handled what there is, and is about to wait.
    /// @return in how many milliseconds it wants to be called again at the latest; -1 for whenever there is something
    std::function<int()> idle;
};

/// Keeps the workers busy and hands out the answers in the order of the inputs.
///
/// Answers that wait for a slower document before them are kept, up to kMaxWaiting of them or kMaxWaitingBytes,
/// whichever comes first; until the slow one is done no further document is begun then. On top of that come the few
/// that are with the workers. So the memory of a run does not depend on the number of documents.
class CDocumentRun {
public:
    enum class eResult {
        kDone,
        kInterrupted, ///< by the user: what could be finished was handed out
        kStopped      ///< by `take`
    };

    /// @param request  what is asked about each document; a track library's name is its file's
    CDocumentRun(CDocumentSource& source, CWorkerPool& pool, tRequest request)
        : mSource(source), mPool(pool), mRequest(std::move(request))
    {}

    eResult Run(tRunHandlers handlers);

    const tRunCounts& GetCounts() const { return mCounts; }

    /// Time since the run was begun.
    double GetSeconds() const;

private:
    struct tRecord {
        tInput input;
        std::optional<tAnswer> answer;
    };
    enum class eFill { kNothingMore, kWait, kFull };

    bool HasRoom() const;
    eFill Fill();
    void Begin(tInput input);
    void KeepAnswers();
    bool HandOut();

    CDocumentSource& mSource;
    CWorkerPool& mPool;
    tRequest mRequest;
    tRunHandlers mHandlers;
    std::deque<tRecord> mRecords; ///< begun, not yet handed out
    uint64_t mFirstTicket = 0;    ///< of the first one in mRecords
    size_t mWaitingBytes = 0;     ///< of the answers in mRecords
    size_t mInFlight = 0;
    tRunCounts mCounts;
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};
