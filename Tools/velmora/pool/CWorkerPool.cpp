#include "pool/CWorkerPool.h"

#include "Interrupt.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <poll.h>

/// From start to greeting; a cold disk takes tenths of a second.
static constexpr std::chrono::seconds kStartTime(20);
/// So often a worker may be lost while it starts, before none is expected to succeed.
static constexpr int kStartAttempts = 3;
/// After an interrupt, what is in flight has this long to finish.
static constexpr std::chrono::seconds kGrace(1);

CWorkerPool::CWorkerPool(tWorkerSettings settings, double timeoutSeconds, size_t workers)
    : mSettings(std::move(settings)),
      mTimeout(std::chrono::duration_cast<tClock::duration>(std::chrono::duration<double>(timeoutSeconds))),
      mTimeoutSeconds(timeoutSeconds)
{
    for (size_t i = 0; i < workers; ++i) {
        mSlots.push_back(std::make_unique<tSlot>());
    }
}

CWorkerPool::eResult CWorkerPool::WaitUntilReady(tFailure& failure)
{
    tSlot& first = *mSlots.front();
    while (!mCannotServe && first.worker.GetState() != CWorker::eState::kIdle) {
        Serve(first);
        if (WaitForEvents() == eResult::kInterrupted) {
            return eResult::kInterrupted;
        }
    }
    if (mCannotServe) {
        failure = *mCannotServe;
        return eResult::kFailed;
    }
    return eResult::kDone;
}

bool CWorkerPool::HasRoom() const
{
    return std::any_of(mSlots.begin(), mSlots.end(), [](const auto& slot) { return !slot->job; });
}

void CWorkerPool::Submit(uint64_t ticket, tRequest request, CDescriptor document)
{
    // A worker that runs already is better than one to be started.
    tSlot* chosen = nullptr;
    for (const auto& slot : mSlots) {
        if (!slot->job && (chosen == nullptr || slot->worker.GetState() == CWorker::eState::kIdle)) {
            chosen = slot.get();
        }
    }
    if (chosen == nullptr) { // the caller did not ask HasRoom
        mDone.emplace_back(ticket, MakeFailure(eFailure::kCrash, "no worker process is free"));
        return;
    }
    chosen->job = tJob{ticket, std::move(request), std::move(document)};
    Serve(*chosen);
}

CWorkerPool::eResult CWorkerPool::Collect(uint64_t& ticket, tAnswer& answer)
{
    while (mDone.empty()) {
        if (WaitForEvents() == eResult::kInterrupted) {
            return eResult::kInterrupted;
        }
    }
    ticket = mDone.front().first;
    answer = std::move(mDone.front().second);
    mDone.pop_front();
    return eResult::kDone;
}

void CWorkerPool::Finish(tSlot& slot, tAnswer answer)
{
    mDone.emplace_back(slot.job->ticket, std::move(answer));
    slot.job.reset();
}

/// Brings a slot forward as far as it goes without waiting: starts its worker, hands over its job.
void CWorkerPool::Serve(tSlot& slot)
{
    if (slot.job && slot.worker.GetState() == CWorker::eState::kIdle) {
        if (slot.worker.Ask(slot.job->request, slot.job->document.Get())) {
            slot.deadline = tClock::now() + mTimeout;
            return;
        }
        // Lost while it was idle: the document has not been seen, the next worker gets it.
    }
    while (!mCannotServe && slot.worker.GetState() == CWorker::eState::kNone) {
        if (slot.worker.Start(mSettings)) {
            slot.deadline = tClock::now() + kStartTime;
        } else {
            const std::string message = std::string("the worker process cannot be started: ") + strerror(errno);
            HandleFailedStart(slot, MakeFailure(eFailure::kPlugIn, message).failure, false);
        }
    }
    if (mCannotServe && slot.job && slot.worker.GetState() == CWorker::eState::kNone) {
        tAnswer answer;
        answer.failure = *mCannotServe;
        Finish(slot, std::move(answer));
    }
}

/// @param final  no other attempt can end differently
void CWorkerPool::HandleFailedStart(tSlot& slot, const tFailure& failure, bool final)
{
    if (++slot.failedStarts >= kStartAttempts || final) {
        mCannotServe = failure;
    }
}

/// Takes what a slot's worker has sent.
void CWorkerPool::Handle(tSlot& slot)
{
    const CWorker::eState before = slot.worker.GetState();
    tAnswer answer;
    switch (slot.worker.Read(answer)) {
    case CWorker::eEvent::kNothing:
        return;
    case CWorker::eEvent::kReady:
        slot.failedStarts = 0;
        break;
    case CWorker::eEvent::kRefused:
        HandleFailedStart(slot, answer.failure, true);
        break;
    case CWorker::eEvent::kAnswer:
        Finish(slot, std::move(answer));
        return;
    case CWorker::eEvent::kLost:
        if (before == CWorker::eState::kBusy) {
            Finish(slot, std::move(answer));
            return;
        }
        if (before == CWorker::eState::kStarting) {
            const std::string message = "the plug-in cannot be loaded: " + answer.failure.message;
            HandleFailedStart(slot, MakeFailure(eFailure::kPlugIn, message).failure, false);
        }
        break;
    }
    if (slot.job || before == CWorker::eState::kStarting) {
        Serve(slot);
    }
}

/// Ends a worker whose time is over.
void CWorkerPool::HandleLateness(tSlot& slot)
{
    const bool busy = slot.worker.GetState() == CWorker::eState::kBusy;
    slot.worker.Kill();
    if (busy) {
        char message[64];
        snprintf(message, sizeof message, "no answer within %g seconds", mTimeoutSeconds);
        Finish(slot, MakeFailure(eFailure::kTimeout, message));
        return;
    }
    HandleFailedStart(slot, MakeFailure(eFailure::kPlugIn, "the plug-in takes too long to load").failure, false);
    Serve(slot);
}

/// Waits until something has happened to a worker, or the time of one is over, and handles it.
CWorkerPool::eResult CWorkerPool::WaitForEvents()
{
    std::vector<pollfd> waits;
    std::vector<tSlot*> waiting;
    std::optional<tClock::time_point> next = mGraceEnd;
    for (const auto& slot : mSlots) {
        const CWorker::eState state = slot->worker.GetState();
        if (state == CWorker::eState::kStarting || state == CWorker::eState::kBusy) {
            waits.push_back({slot->worker.GetSocket(), POLLIN, 0});
            waiting.push_back(slot.get());
            next = next ? std::min(*next, slot->deadline) : slot->deadline;
        }
    }
    if (waiting.empty()) {
        return eResult::kDone;
    }
    if (!mGraceEnd && Interrupt::GetDescriptor() >= 0) {
        waits.push_back({Interrupt::GetDescriptor(), POLLIN, 0});
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - tClock::now()).count();
    const int count = poll(waits.data(), static_cast<nfds_t>(waits.size()),
                           static_cast<int>(std::clamp<long long>(left, 0, 1000000)));
    if (!mGraceEnd && Interrupt::IsRequested()) {
        mGraceEnd = tClock::now() + kGrace;
    }
    for (size_t i = 0; i < waiting.size(); ++i) {
        const tClock::time_point before = tClock::now();
        if (count > 0 && waits[i].revents != 0) {
            Handle(*waiting[i]);
        }
        const CWorker::eState state = waiting[i]->worker.GetState();
        const bool expected = state == CWorker::eState::kStarting || state == CWorker::eState::kBusy;
        if (expected && before >= waiting[i]->deadline) { // also one that keeps sending
            HandleLateness(*waiting[i]);
        }
        // Waiting for a lost process to end takes time that is not that of the other documents.
        const tClock::duration spent = tClock::now() - before;
        for (const auto& other : mSlots) {
            other->deadline += other.get() != waiting[i] ? spent : tClock::duration::zero();
        }
    }
    return mGraceEnd && tClock::now() >= *mGraceEnd && mDone.empty() ? eResult::kInterrupted : eResult::kDone;
}
