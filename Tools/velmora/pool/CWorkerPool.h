// The workers of a run: gives each one document at a time and replaces those that are lost.
#pragma once

#include "pool/CWorker.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

/// Not for several threads. What is submitted comes back from Collect exactly once, in any order.
class CWorkerPool {
public:
    enum class eResult { kDone, kFailed, kInterrupted };

    /// @param timeoutSeconds  for one request, from when a worker has it
    /// @param workers         how many processes at most
    CWorkerPool(tWorkerSettings settings, double timeoutSeconds, size_t workers);

    /// Starts a first worker and waits until it can serve.
    /// @param failure  set when it cannot: everything submitted will fail like this
    /// @return kDone, kFailed, or kInterrupted by the user
    eResult WaitUntilReady(tFailure& failure);

    /// What the first worker said at its start; empty before it has started.
    const tHello& GetGreeting() const { return mSlots.front()->worker.GetGreeting(); }

    /// Whether a request would be taken on at once.
    bool HasRoom() const;

    /// Hands in a request; only while HasRoom.
    /// @param ticket  by which Collect names the answer
    void Submit(uint64_t ticket, tRequest request, CDescriptor document);

    /// Waits for an answer to something that was submitted.
    /// @return kDone, or kInterrupted when the user wants to end and what is in flight does not finish soon
    eResult Collect(uint64_t& ticket, tAnswer& answer);

private:
    using tClock = std::chrono::steady_clock;

    struct tJob {
        uint64_t ticket = 0;
        tRequest request;
        CDescriptor document;
    };

    /// A worker and what it has to do.
    struct tSlot {
        CWorker worker;
        std::optional<tJob> job;
        tClock::time_point deadline; ///< for the greeting, or the answer
        int failedStarts = 0;        ///< in a row
    };

    void Serve(tSlot& slot);
    void Handle(tSlot& slot);
    void HandleLateness(tSlot& slot);
    void HandleFailedStart(tSlot& slot, const tFailure& failure, bool final);
    void Finish(tSlot& slot, tAnswer answer);
    eResult WaitForEvents();

    tWorkerSettings mSettings;
    tClock::duration mTimeout;
    double mTimeoutSeconds;
    std::vector<std::unique_ptr<tSlot>> mSlots;
    std::deque<std::pair<uint64_t, tAnswer>> mDone;
    std::optional<tFailure> mCannotServe;        ///< no worker can be had
    std::optional<tClock::time_point> mGraceEnd; ///< set by the user's interrupt
};
