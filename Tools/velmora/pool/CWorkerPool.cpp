#include "pool/CWorkerPool.h"

#include "Bounds.h"
#include "Interrupt.h"
#include "pool/MissingLibrary.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>

/// Requests are sent ahead for about this time, so that a worker does not run dry while the host is busy; what takes
/// longer is sent one by one, since what waits behind it could be done by another worker.
static constexpr double kSecondsAhead = 0.004;
/// A further process costs tens of milliseconds: it is started when this many requests wait,
/// or one has waited for a while.
static constexpr size_t kWaitingForStart = 4;
static constexpr int kMillisecondsForStart = 3;

/// How often a worker's memory is looked at.
static constexpr uint64_t kRequestsBetweenLooks = 128;

/// How many descriptors this process may have open, after it has asked for as many as it can have.
static size_t CountDescriptors()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return Bounds::kHostDescriptors;
    }
    if (limit.rlim_cur < Bounds::kHostDescriptors && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, Bounds::kHostDescriptors);
        setrlimit(RLIMIT_NOFILE, &limit);
        getrlimit(RLIMIT_NOFILE, &limit);
    }
    return static_cast<size_t>(std::min<rlim_t>(limit.rlim_cur, Bounds::kHostDescriptors));
}

CWorkerPool::CWorkerPool(tWorkerSettings settings, double timeoutSeconds, size_t workers)
    : mSettings(std::move(settings)),
      mTimeout(std::chrono::duration_cast<tClock::duration>(std::chrono::duration<double>(timeoutSeconds))),
      mTimeoutSeconds(timeoutSeconds)
{
    // Half of them for workers and documents; a walk and other things need some as well.
    const size_t descriptors = CountDescriptors() / 2;
    const size_t slots = std::clamp<size_t>(workers, 1, std::max<size_t>(descriptors / 4, 1));
    mMaxDepth = mSettings.isFresh ? 1
                                  : std::clamp<size_t>(descriptors / slots, 3, Bounds::kMostRequestsAhead + 2) -
                                        2; // each has a socket, and one waits
    for (size_t i = 0; i < slots; ++i) {
        mSlots.push_back(std::make_unique<tSlot>());
    }
}

CWorkerPool::~CWorkerPool()
{
    for (const auto& slot : mSlots) {
        slot->worker->SayGoodbye();
    }
    // Those that do not leave are waited for together.
    const tClock::time_point end = tClock::now() + std::chrono::seconds(Bounds::kLeaveSeconds);
    for (const auto& slot : mSlots) {
        for (CWorker* worker : {slot->worker.get(), slot->leaving.get()}) {
            if (worker != nullptr) {
                worker->Dismiss(std::max(tClock::duration::zero(), end - tClock::now()));
            }
        }
    }
}

CWorkerPool::eResult CWorkerPool::WaitUntilReady(tFailure& failure)
{
    tSlot& first = *mSlots.front();
    while (!mCannotServe && first.worker->GetState() != CWorker::eState::kReady) {
        if (first.worker->GetState() == CWorker::eState::kNone) {
            StartWorker(first);
            continue;
        }
        if (Wait(-1) == eResult::kInterrupted) {
            return eResult::kInterrupted;
        }
    }
    if (mCannotServe) {
        failure = *mCannotServe;
        return eResult::kFailed;
    }
    return eResult::kDone;
}

void CWorkerPool::Submit(uint64_t ticket, tRequest request, CDescriptor document)
{
    tJob& job = mQueue.emplace_back();
    job.ticket = ticket;
    job.request = std::move(request);
    job.document = std::move(document);
    if (job.document.IsOpen()) {
        fstat(job.document.Get(), &job.status);
    }
    Dispatch();
}

bool CWorkerPool::Take(uint64_t& ticket, tAnswer& answer)
{
    if (mDone.empty()) {
        return false;
    }
    ticket = mDone.front().first;
    answer = std::move(mDone.front().second);
    mDone.pop_front();
    return true;
}

CWorkerPool::eResult CWorkerPool::Collect(uint64_t& ticket, tAnswer& answer)
{
    while (!Take(ticket, answer)) {
        if (Wait(-1) == eResult::kInterrupted && mDone.empty()) {
            return eResult::kInterrupted;
        }
    }
    return eResult::kDone;
}

bool CWorkerPool::CanStart(const tSlot& slot)
{
    return slot.worker->GetState() == CWorker::eState::kNone && slot.failedStarts < Bounds::kStartAttempts;
}

bool CWorkerPool::HasReadyWorker() const
{
    return std::any_of(mSlots.begin(), mSlots.end(),
                       [](const auto& slot) { return slot->worker->GetState() == CWorker::eState::kReady; });
}

/// The ready worker with the least to do; null when all have enough.
CWorkerPool::tSlot* CWorkerPool::ChooseSlot()
{
    tSlot* chosen = nullptr;
    bool all = true;
    for (const auto& slot : mSlots) {
        const bool ready = slot->worker->GetState() == CWorker::eState::kReady;
        all = all && (ready || slot->failedStarts >= Bounds::kStartAttempts);
        if (ready && !slot->alone && !slot->leavesNext &&
            (chosen == nullptr || slot->jobs.size() < chosen->jobs.size())) {
            chosen = slot.get();
        }
    }
    // Nothing is sent ahead as long as a further process can be had for it.
    return chosen != nullptr && chosen->jobs.size() < (all ? mDepth : 1) ? chosen : nullptr;
}

/// Sends what waits to workers that have room for it.
void CWorkerPool::Dispatch()
{
    if (mCannotServe) {
        RefuseAll();
        return;
    }
    while (!mQueue.empty() && !mGraceEnd) {
        tSlot* slot = ChooseSlot();
        if (slot == nullptr) {
            break;
        }
        tJob job = std::move(mQueue.front());
        mQueue.pop_front();
        Send(*slot, std::move(job));
    }
    const bool none = std::none_of(mSlots.begin(), mSlots.end(),
                                   [](const auto& slot) { return slot->worker->GetState() != CWorker::eState::kNone; });
    if (!mGraceEnd && !mQueue.empty() && (none || mQueue.size() >= kWaitingForStart)) {
        StartFurtherWorker();
    }
}

void CWorkerPool::Send(tSlot& slot, tJob job)
{
    slot.worker->Ask(job.request, job.document.Get()); // where this fails, the next Read reports the loss
    if (slot.jobs.empty()) {
        slot.since = tClock::now();
        slot.deadline = slot.since + mTimeout;
    }
    slot.jobs.push_back(std::move(job));
}

/// @return false when all are started
bool CWorkerPool::StartFurtherWorker()
{
    for (const auto& slot : mSlots) {
        if (CanStart(*slot)) {
            StartWorker(*slot);
            return true;
        }
    }
    return false;
}

void CWorkerPool::StartWorker(tSlot& slot)
{
    while (!mCannotServe && slot.failedStarts < Bounds::kStartAttempts && !slot.worker->Start(mSettings)) {
        const std::string message = std::string("the worker process cannot be started: ") + strerror(errno);
        HandleFailedStart(slot, MakeFailure(eFailure::kPlugIn, message).failure, false);
    }
    slot.leavesNext = false;
    slot.deadline = tClock::now() + std::chrono::seconds(Bounds::kStartSeconds);
}

/// @param final  no other attempt can end differently
void CWorkerPool::HandleFailedStart(tSlot& slot, const tFailure& failure, bool final)
{
    slot.failedStarts = final ? Bounds::kStartAttempts : slot.failedStarts + 1;
    if (slot.failedStarts < Bounds::kStartAttempts) {
        return;
    }
    if (HasReadyWorker()) { // the others have to suffice
        if (slot.suspect) {
            mQueue.push_front(std::move(*slot.suspect));
            slot.suspect.reset();
        }
    } else {
        mCannotServe = failure;
        RefuseAll();
    }
}

/// With no worker to be had, what waits for one fails.
void CWorkerPool::RefuseAll()
{
    const auto refuse = [this](uint64_t ticket) {
        tAnswer answer;
        answer.failure = *mCannotServe;
        mDone.emplace_back(ticket, std::move(answer));
    };
    for (const auto& slot : mSlots) {
        if (slot->suspect) {
            refuse(slot->suspect->ticket);
            slot->suspect.reset();
        }
    }
    for (; !mQueue.empty(); mQueue.pop_front()) {
        refuse(mQueue.front().ticket);
    }
}

/// What a worker that could not start has printed, and what to do about it.
std::string CWorkerPool::DescribeComplaint(const CWorker& worker) const
{
    return worker.GetComplaint() + MissingLibrary::NameRemedy(worker.GetComplaint(), mSettings.program);
}

/// Takes what a slot's worker has sent.
void CWorkerPool::Handle(tSlot& slot)
{
    size_t answers = 0;
    for (;;) {
        const CWorker::eState before = slot.worker->GetState();
        tAnswer answer;
        switch (slot.worker->Read(answer)) {
        case CWorker::eEvent::kNothing:
            if (answers > 0) {
                AdaptDepth(slot, answers, tClock::now());
            }
            RenewIfDue(slot);
            return;
        case CWorker::eEvent::kReady:
            HandleReady(slot);
            break;
        case CWorker::eEvent::kRefused:
            if (!slot.worker->GetComplaint().empty()) {
                answer.failure.message += ": " + DescribeComplaint(*slot.worker);
            }
            HandleFailedStart(slot, answer.failure, true);
            return;
        case CWorker::eEvent::kAnswer:
            ++answers;
            HandleAnswer(slot, std::move(answer));
            break;
        case CWorker::eEvent::kLost:
            mHasLost = true;
            HandleLoss(slot, before, std::move(answer));
            return;
        }
    }
}

/// @param answers  that have just come from the slot
void CWorkerPool::AdaptDepth(tSlot& slot, size_t answers, tClock::time_point now)
{
    const double seconds = std::chrono::duration<double>(now - slot.since).count() / static_cast<double>(answers);
    mSecondsEach += (seconds - mSecondsEach) * std::min(1.0, static_cast<double>(answers) / 16);
    mDepth = static_cast<size_t>(std::clamp(kSecondsAhead / mSecondsEach, 1.0, static_cast<double>(mMaxDepth)));
    slot.since = now;
    slot.deadline = now + mTimeout; // of the request that it begins now
}

void CWorkerPool::HandleReady(tSlot& slot)
{
    slot.failedStarts = 0;
    slot.firstResident = slot.worker->GetResidentMemory();
    if (slot.suspect) {
        slot.alone = true;
        Send(slot, std::move(*slot.suspect));
        slot.suspect.reset();
    }
}

static bool IsUnchanged(const struct stat& before, const struct stat& now)
{
#if defined(__APPLE__)
    const timespec& one = before.st_mtimespec;
    const timespec& other = now.st_mtimespec;
#else
    const timespec& one = before.st_mtim;
    const timespec& other = now.st_mtim;
#endif
    return before.st_size == now.st_size && one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

/// Hands out an answer. A document that was written to meanwhile has failed for that, whatever was made of it.
void CWorkerPool::Finish(const tJob& job, tAnswer answer)
{
    struct stat now = {};
    if (job.document.IsOpen() && fstat(job.document.Get(), &now) == 0 && !IsUnchanged(job.status, now)) {
        answer = MakeFailure(eFailure::kLoader, "was changed while it was read");
        answer.failure.loaderCode = 1;
    }
    mDone.emplace_back(job.ticket, std::move(answer));
}

void CWorkerPool::HandleAnswer(tSlot& slot, tAnswer answer)
{
    Finish(slot.jobs.front(), std::move(answer));
    slot.jobs.pop_front();
    slot.alone = false;
    const uint64_t answered = slot.worker->CountAnswered();
    slot.leavesNext = slot.leavesNext || mSettings.isFresh || slot.worker->IsWornOut() ||
                      answered + Bounds::kMostRequestsAhead >= Bounds::kWorkerRequests ||
                      (answered % kRequestsBetweenLooks == 0 &&
                       slot.worker->GetResidentMemory() > slot.firstResident + Bounds::kWorkerGrowth);
}

/// What was sent behind the request in work goes to whoever is free.
void CWorkerPool::GiveBack(tSlot& slot)
{
    for (; !slot.jobs.empty(); slot.jobs.pop_back()) {
        mQueue.push_front(std::move(slot.jobs.back()));
    }
    slot.alone = false;
}

void CWorkerPool::HandleLoss(tSlot& slot, CWorker::eState before, tAnswer answer)
{
    if (before == CWorker::eState::kStarting) {
        const std::string message =
            slot.worker->WasKilled()
                ? "the worker process is killed as it starts, by a user or by the system, which may "
                  "be short of memory"
            : !slot.worker->GetComplaint().empty()
                ? "the worker process cannot start: " + DescribeComplaint(*slot.worker)
                : "the plug-in cannot be loaded: " + answer.failure.message;
        HandleFailedStart(slot, MakeFailure(eFailure::kPlugIn, message).failure, false);
        if (slot.suspect) {
            StartWorker(slot);
        }
        return;
    }
    if (slot.jobs.empty()) {
        return;
    }
    tJob job = std::move(slot.jobs.front());
    slot.jobs.pop_front();
    ++job.losses;
    const bool somebodyElse = slot.worker->WasKilled() && job.losses < Bounds::kMostLosses;
    const bool certain = (slot.alone && !somebodyElse) || slot.worker->IsFaultCertain();
    GiveBack(slot);
    if (certain) {
        Finish(job, std::move(answer));
    } else {
        slot.suspect = std::move(job);
        StartWorker(slot);
    }
}

/// Ends a worker whose time is over.
void CWorkerPool::HandleLateness(tSlot& slot)
{
    mHasLost = true;
    const bool starting = slot.worker->GetState() == CWorker::eState::kStarting;
    slot.worker->Kill();
    if (starting) {
        HandleFailedStart(slot, MakeFailure(eFailure::kPlugIn, "the plug-in takes too long to load").failure, false);
        if (slot.suspect) {
            StartWorker(slot);
        }
        return;
    }
    char message[64];
    snprintf(message, sizeof message, "no answer within %g seconds", mTimeoutSeconds);
    mDone.emplace_back(slot.jobs.front().ticket, MakeFailure(eFailure::kTimeout, message));
    slot.jobs.pop_front();
    GiveBack(slot);
}

void CWorkerPool::RenewIfDue(tSlot& slot)
{
    if (slot.leavesNext && slot.jobs.empty() && slot.worker->GetState() == CWorker::eState::kReady) {
        slot.worker->SayGoodbye();
        slot.leaving = std::move(slot.worker); // the one before that is long gone
        slot.worker = std::make_unique<CWorker>();
    }
}

bool CWorkerPool::IsAnythingInFlight() const
{
    return std::any_of(mSlots.begin(), mSlots.end(),
                       [](const auto& slot) { return !slot->jobs.empty() || slot->suspect; });
}

/// Handles what has come from a slot's worker, and ends the worker when its time is over, also one that keeps sending.
void CWorkerPool::CheckDeadline(tSlot& slot, bool readable)
{
    const bool expected = slot.worker->GetState() == CWorker::eState::kStarting || !slot.jobs.empty();
    if (!readable && !expected) {
        return;
    }
    const tClock::time_point before = tClock::now();
    const tClock::time_point deadline = slot.deadline;
    mHasLost = false;
    if (readable) {
        Handle(slot);
    }
    if (expected && before >= deadline && slot.deadline == deadline && slot.worker->GetSocket() >= 0) {
        HandleLateness(slot);
    }
    if (mHasLost) { // waiting for a lost process to end takes time that is not that of the other documents
        for (const auto& other : mSlots) {
            other->deadline += other.get() != &slot ? tClock::now() - before : tClock::duration::zero();
        }
    }
}

/// Sends what waits, and adds the sockets to wait for. @return in how many milliseconds something is due
long long CWorkerPool::PrepareWait(std::vector<pollfd>& waits, long long milliseconds)
{
    Dispatch();
    long long left = mDone.empty() ? milliseconds : 0;
    std::optional<tClock::time_point> next = mGraceEnd;
    bool startable = false;
    for (const auto& slot : mSlots) { // poll passes over the sockets that are not there
        waits.push_back({slot->worker->GetSocket(), POLLIN, 0});
        startable = startable || CanStart(*slot);
        if (slot->worker->GetState() == CWorker::eState::kStarting || !slot->jobs.empty()) {
            next = next ? std::min(*next, slot->deadline) : slot->deadline;
        }
    }
    if (next) {
        const auto untilNext = std::chrono::ceil<std::chrono::milliseconds>(*next - tClock::now()).count();
        left = std::clamp<long long>(untilNext, 0, left);
    }
    mMayStart = startable && !mQueue.empty() && !mGraceEnd && !mCannotServe && left > kMillisecondsForStart;
    return mMayStart ? kMillisecondsForStart : left;
}

/// @param waits  what PrepareWait has added @param count  of everything that has happened
CWorkerPool::eResult CWorkerPool::HandleWait(const pollfd* waits, int count)
{
    if (count == 0 && mMayStart) {
        StartFurtherWorker();
    }
    if (!mGraceEnd && Interrupt::IsRequested()) {
        mGraceEnd = tClock::now() + std::chrono::seconds(Bounds::kInterruptSeconds);
    }
    for (size_t i = 0; i < mSlots.size(); ++i) {
        tSlot& slot = *mSlots[i];
        CheckDeadline(slot, count > 0 && waits[i].revents != 0 && slot.worker->GetSocket() == waits[i].fd);
    }
    Dispatch();
    const bool isOver = mGraceEnd && (!IsAnythingInFlight() || tClock::now() >= *mGraceEnd);
    return isOver ? eResult::kInterrupted : eResult::kDone;
}

CWorkerPool::eResult CWorkerPool::WaitTogether(const std::vector<CWorkerPool*>& pools, int milliseconds, int descriptor)
{
    std::vector<pollfd>& waits = pools.front()->mWaits;
    waits.clear();
    long long left = milliseconds < 0 ? 1000000 : milliseconds;
    bool isEnding = false;
    for (CWorkerPool* pool : pools) {
        left = pool->PrepareWait(waits, left);
        isEnding = isEnding || pool->mGraceEnd;
    }
    waits.push_back({isEnding ? -1 : Interrupt::GetDescriptor(), POLLIN, 0});
    waits.push_back({descriptor, POLLIN, 0});
    const int count = poll(waits.data(), static_cast<nfds_t>(waits.size()), static_cast<int>(left));
    eResult result = eResult::kInterrupted;
    size_t first = 0;
    for (CWorkerPool* pool : pools) {
        const eResult one = pool->HandleWait(waits.data() + first, count);
        result = one == eResult::kDone ? one : result; // as long as one of them is not at its end
        first += pool->mSlots.size();
    }
    return result;
}
