// The workers of a run: keeps them busy and replaces those that are lost.
#pragma once

#include "pool/CWorker.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <vector>

/// Not for several threads. What is submitted comes back exactly once, in any order.
///
/// A worker is sent a few requests ahead, as long as they are answered quickly, so that it need not wait for the host.
/// When it is lost, those behind the one in work go to others. The one in work is tried once more, as the first and
/// only request of a fresh process, unless the process has said what was wrong with it or has used up its time: so
/// nothing is blamed for what another document has done to the process. A process that somebody else has killed says
/// nothing about its document: that is tried some more times.
class CWorkerPool {
public:
    enum class eResult { kDone, kFailed, kInterrupted };

    /// @param timeoutSeconds  for one request, from when a worker begins it
    /// @param workers         how many processes at most; further ones are started when there is work for them
    CWorkerPool(tWorkerSettings settings, double timeoutSeconds, size_t workers);
    ~CWorkerPool();

    /// Starts a first worker and waits until it can serve.
    /// @param failure  set when it cannot: everything submitted will fail like this
    /// @return kDone, kFailed, or kInterrupted by the user
    eResult WaitUntilReady(tFailure& failure);

    /// Starts nothing: everything submitted will fail like this.
    void Refuse(tFailure failure) { mCannotServe = std::move(failure); }

    /// What the first worker said at its start; empty before it has started.
    const tHello& GetGreeting() const { return mSlots.front()->worker->GetGreeting(); }

    /// Why nothing can be served; null when it can, as far as is known.
    const tFailure* GetRefusal() const { return mCannotServe ? &*mCannotServe : nullptr; }

    /// Whether another request would help to keep the workers busy.
    bool HasRoom() const { return mQueue.size() < mSlots.size() + 2; }

    /// Hands in a request.
    /// @param ticket  by which the answer is named
    void Submit(uint64_t ticket, tRequest request, CDescriptor document);

    /// An answer that is there. @return false when there is none
    bool Take(uint64_t& ticket, tAnswer& answer);

    /// Waits until something has happened to a worker, or for something else, and handles it.
    /// @param milliseconds  how long at most; -1 for no limit of the caller's
    /// @param descriptor    something else to wait for, until it can be read; -1 for nothing
    /// @return kDone, or kInterrupted when the user wants to end and what is in flight is answered or does not end soon
    eResult Wait(int milliseconds, int descriptor = -1) { return WaitTogether({this}, milliseconds, descriptor); }

    /// The same for several pools at a time: until something has happened in one of them.
    static eResult WaitTogether(const std::vector<CWorkerPool*>& pools, int milliseconds, int descriptor);

    /// Waits for an answer to something that was submitted.
    /// @return kDone, or kInterrupted when the user wants to end and there is no answer soon
    eResult Collect(uint64_t& ticket, tAnswer& answer);

private:
    using tClock = std::chrono::steady_clock;

    struct tJob {
        uint64_t ticket = 0;
        tRequest request;
        CDescriptor document;
        struct stat status = {}; ///< of the document before anything was read
        int losses = 0;          ///< of workers that were at it
    };

    /// A worker and what it has to do.
    struct tSlot {
        std::unique_ptr<CWorker> worker = std::make_unique<CWorker>();
        std::unique_ptr<CWorker> leaving; ///< the one before, which was renewed
        std::deque<tJob> jobs;            ///< sent, the oldest first
        std::optional<tJob> suspect;      ///< to be the first request of the next process
        bool alone = false;               ///< the suspect is what was sent
        bool leavesNext = false;          ///< gets no more requests
        tClock::time_point since;         ///< since when it has been busy, or its last answers came
        tClock::time_point deadline;      ///< for the greeting, or the oldest request
        int failedStarts = 0;             ///< in a row
        size_t firstResident = 0;         ///< memory of the process when it was ready
    };

    void Dispatch();
    tSlot* ChooseSlot();
    void Send(tSlot& slot, tJob job);
    void StartWorker(tSlot& slot);
    bool StartFurtherWorker();
    static bool CanStart(const tSlot& slot);
    bool HasReadyWorker() const;
    void Handle(tSlot& slot);
    void Finish(const tJob& job, tAnswer answer);
    void HandleReady(tSlot& slot);
    void HandleAnswer(tSlot& slot, tAnswer answer);
    void HandleLoss(tSlot& slot, CWorker::eState before, tAnswer answer);
    void HandleLateness(tSlot& slot);
    void HandleFailedStart(tSlot& slot, const tFailure& failure, bool final);
    std::string DescribeComplaint(const CWorker& worker) const;
    void GiveBack(tSlot& slot);
    void RenewIfDue(tSlot& slot);
    void AdaptDepth(tSlot& slot, size_t answers, tClock::time_point now);
    void CheckDeadline(tSlot& slot, bool readable);
    void RefuseAll();
    long long PrepareWait(std::vector<pollfd>& waits, long long milliseconds);
    eResult HandleWait(const pollfd* waits, int count);
    bool IsAnythingInFlight() const;

    tWorkerSettings mSettings;
    tClock::duration mTimeout;
    double mTimeoutSeconds;
    std::vector<std::unique_ptr<tSlot>> mSlots;
    std::deque<tJob> mQueue; ///< not yet sent
    std::deque<std::pair<uint64_t, tAnswer>> mDone;
    size_t mDepth = 1; ///< requests that a worker is sent at most, the one in work among them
    size_t mMaxDepth = 1;
    double mSecondsEach = 0.01;                  ///< for one request, about
    bool mHasLost = false;                       ///< a worker was lost or ended in this turn
    std::optional<tFailure> mCannotServe;        ///< no worker can be had
    std::optional<tClock::time_point> mGraceEnd; ///< set by the user's interrupt
    std::vector<pollfd> mWaits;                  ///< kept for its memory
    bool mMayStart = false;                      ///< a further worker, when nothing happens for a moment
};
