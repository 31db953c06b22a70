#include "pool/CDocumentRun.h"

#include "Bounds.h"
#include "Interrupt.h"
#include "input/DocumentNames.h"
#include "output/CRecordWriter.h"

#include <new>

/// Inputs that need no worker are taken in turns of so many, so that everything else goes on.
static constexpr uint64_t kTurn = 256;

uint64_t tRunCounts::CountFailed() const
{
    uint64_t count = 0;
    for (const auto& [code, number] : failed) {
        count += number;
    }
    return count;
}

double CDocumentRun::GetSeconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count();
}

/// What an answer occupies, about.
static size_t CountBytes(const tAnswer& answer)
{
    size_t bytes = sizeof answer + answer.report.size() + answer.picture.size() + answer.failure.message.size();
    for (const tAttribute& attribute : answer.attributes) {
        bytes += sizeof attribute + attribute.key.size();
        for (const std::string& text : attribute.texts) {
            bytes += sizeof(std::string) + text.size();
        }
    }
    for (const auto* names : {&answer.libraries, &answer.articles}) {
        for (const std::string& name : *names) {
            bytes += sizeof(std::string) + name.size();
        }
    }
    return bytes;
}

CDocumentRun::eResult CDocumentRun::Run(tRunHandlers handlers)
{
    mHandlers = std::move(handlers);
    mSource.SetFilter([this](const tInput& input) {
        const bool wanted = !mHandlers.isWanted || mHandlers.isWanted(input);
        mCounts.skipped += wanted ? 0 : 1;
        if (!wanted && mCounts.skipped % kTurn == 0 && mHandlers.idle) {
            mHandlers.idle();
        }
        return wanted;
    });
    eFill fill = eFill::kFull;
    for (;;) {
        fill = fill == eFill::kNothingMore ? fill : Fill();
        KeepAnswers();
        if (!HandOut()) {
            return eResult::kStopped;
        }
        if (fill == eFill::kNothingMore && mInFlight == 0) {
            break;
        }
        int milliseconds = mHandlers.idle ? mHandlers.idle() : -1;
        if (fill == eFill::kFull && HasRoom()) {
            milliseconds = 0;
        }
        const int descriptor = fill == eFill::kWait ? mSource.GetDescriptor() : -1;
        if (mPool.Wait(milliseconds, descriptor) == CWorkerPool::eResult::kInterrupted) {
            KeepAnswers();
            return HandOut() ? eResult::kInterrupted : eResult::kStopped;
        }
    }
    return Interrupt::IsRequested() ? eResult::kInterrupted : eResult::kDone;
}

bool CDocumentRun::HasRoom() const
{
    return mPool.HasRoom() && mRecords.size() < Bounds::kMostWaitingAnswers &&
           mWaitingBytes < Bounds::kMostWaitingBytes;
}

/// Begins documents while there is room for them, and not too many in one turn.
CDocumentRun::eFill CDocumentRun::Fill()
{
    for (uint64_t i = 0; i < kTurn && HasRoom(); ++i) {
        tInput input;
        switch (mSource.Find(input)) {
        case CDocumentSource::eResult::kEnd:
            return eFill::kNothingMore;
        case CDocumentSource::eResult::kNotYet:
            return eFill::kWait;
        case CDocumentSource::eResult::kFound:
            Begin(std::move(input));
        }
    }
    return eFill::kFull;
}

void CDocumentRun::Begin(tInput input)
{
    const tFailure* refusal = mPool.GetRefusal();
    if (refusal != nullptr) { // then not even the document is opened
        input.failure = *refusal;
    }
    mSource.Open(input);
    if (!input.failure && mHandlers.isWantedOpen && !mHandlers.isWantedOpen(input)) {
        ++mCounts.skipped;
        return;
    }
    if (input.failure) { // also one that was found by who wanted it: many may wait for their turn
        input.document.Reset();
    }
    const uint64_t ticket = mFirstTicket + mRecords.size();
    tRecord& record = mRecords.emplace_back();
    record.input = std::move(input);
    if (record.input.failure) {
        record.answer.emplace().failure = *record.input.failure;
        mWaitingBytes += CountBytes(*record.answer);
    } else {
        ++mInFlight;
        tRequest request = mRequest;
        if (request.verb == eVerb::kLibrary) {
            request.fileName = DocumentNames::NameOfFile(record.input.path);
        }
        mPool.Submit(ticket, std::move(request), std::move(record.input.document));
    }
}

/// Puts the answers that have come to their inputs.
void CDocumentRun::KeepAnswers()
{
    uint64_t ticket = 0;
    tAnswer answer;
    while (mPool.Take(ticket, answer)) {
        --mInFlight;
        mWaitingBytes += CountBytes(answer);
        mRecords[ticket - mFirstTicket].answer = std::move(answer);
    }
}

/// Hands out the answers whose turn it is. @return false when the user of the run wants no more
bool CDocumentRun::HandOut()
{
    while (!mRecords.empty() && mRecords.front().answer) {
        tRecord record = std::move(mRecords.front());
        mRecords.pop_front();
        ++mFirstTicket;
        mWaitingBytes -= CountBytes(*record.answer);
        bool goesOn = false;
        try {
            goesOn = mHandlers.take(record.input, *record.answer);
        } catch (const std::bad_alloc&) {
            record.answer = MakeNoRoom();
            goesOn = mHandlers.take(record.input, *record.answer);
        }
        if (record.answer->ok) {
            ++mCounts.good;
        } else {
            ++mCounts.failed[FailureCode(record.answer->failure)];
        }
        if (!goesOn) {
            return false;
        }
    }
    return true;
}
