// One supervised worker process.
#pragma once

#include "Bounds.h"
#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <sys/types.h>

/// What a worker is started with.
struct tWorkerSettings {
    std::string program;                                 ///< path of the worker's executable
    std::string plugIn;                                  ///< path of the plug-in bundle
    unsigned memoryMegabytes = Bounds::kWorkerMegabytes; ///< what it may map beyond what it maps at rest
    std::string sandbox = "auto";  ///< "auto", "require" or "off"; or names of layers with plus signs between them
    unsigned processorSeconds = 0; ///< processor time for one request; 0 for no limit but the owner's clock
    unsigned user = 0;             ///< whom it becomes, for root; 0 for nobody else
    unsigned group = 0;            ///< and of which group
    bool isFresh = false;          ///< a process for each request
    unsigned processorLife = Bounds::kWorkerSeconds; ///< seconds that a process may use before it is to be renewed
    bool draws = false;                              ///< it may start threads and read fonts
    bool tellsStockFile = false; ///< its greeting says what the user's preferences call the stock file
};

/// That this process has not the memory to handle an answer.
tAnswer MakeNoRoom();

/// A worker process and the conversation with it. Nothing that comes from it is trusted: whatever does not fit ends it.
/// The owner watches the socket and the clock.
///
/// Several requests may be under way: the process works on the first one, the others lie in its socket.
class CWorker {
public:
    enum class eState {
        kNone,     ///< no process
        kStarting, ///< the greeting has not come yet
        kReady
    };
    enum class eEvent {
        kNothing, ///< nothing complete at the moment
        kReady,   ///< the greeting
        kRefused, ///< the greeting: it cannot serve (the plug-in is missing or of another kind); it has ended
        kAnswer,  ///< the answer to the oldest request
        kLost     ///< it is gone, or was ended for what it sent
    };

    CWorker() = default;
    ~CWorker() { Dismiss(std::chrono::seconds(2)); }
    CWorker(const CWorker&) = delete;
    CWorker& operator=(const CWorker&) = delete;

    /// Starts the process; the greeting comes later. @return false with errno set
    bool Start(const tWorkerSettings& settings);

    eState GetState() const { return mState; }

    /// The socket to wait for; -1 without a process.
    int GetSocket() const { return mSocket.Get(); }

    /// Requests sent and not yet answered.
    size_t CountUnanswered() const { return mAsked.size(); }

    /// Requests answered by this process.
    uint64_t CountAnswered() const { return mAnswered; }

    /// Sends a request to a worker that is ready.
    /// @param document  passed along, not owned; -1 for none
    /// @return false when it cannot be sent: the process is gone, or out of step; the next Read says so
    bool Ask(const tRequest& request, int document);

    /// The next thing that has arrived; to be called until there is nothing.
    /// @param answer  set for kAnswer; for kLost and kRefused it is the failure that says why
    eEvent Read(tAnswer& answer);

    /// Whether the loss just reported can only be the fault of the oldest request: the process has said so.
    bool IsFaultCertain() const { return mFaultCertain; }

    /// Whether the loss just reported was somebody else's doing: a user's or the system's SIGKILL.
    bool WasKilled() const { return mWasKilled; }

    /// Whether the process has used most of the processor time that it can ever have. It ends by that some time.
    bool IsWornOut() const { return mWornOut; }

    /// Memory that the process holds at the moment, in bytes; 0 when unknown.
    size_t GetResidentMemory() const;

    /// What the worker said at its start.
    const tHello& GetGreeting() const { return mGreeting; }

    /// The first line that the process printed on its standard error before it was ready, which is the dynamic loader's
    /// where a library is missing. Kept when it could not start; else empty.
    const std::string& GetComplaint() const { return mComplaint; }

    /// Ends the process at once.
    void Kill();

    /// Asks the process to leave, without waiting for it: closes the socket, which it notices.
    void SayGoodbye();

    /// Ends the process in peace, if nothing is under way. @param patience  how long it may take to leave by itself
    void Dismiss(std::chrono::steady_clock::duration patience);

private:
    struct tAsked {
        eVerb verb;
        uint64_t documentSize; ///< bytes
        tPictureWish picture;  ///< for kRender
    };

    eEvent ReadFrame(tAnswer& answer);
    eEvent HandleFrame(const tFrame& frame, tAnswer& answer);
    bool TakeAnswer(std::string_view payload, tAnswer& answer) const;
    eEvent Lose(tAnswer& answer, const char* misbehaviour);
    std::optional<int> WaitForEnd(int milliseconds);
    void ReadComplaint();
    void GrantProcessorTime();

    eState mState = eState::kNone;
    pid_t mProcess = 0;
    CDescriptor mSocket;
    CDescriptor mErrors;    ///< what the process prints on its standard error, until it is ready
    std::string mComplaint; ///< the first line of that
    std::optional<CFrameReader> mReader;
    uint32_t mSequence = 0; ///< of the request sent last
    uint64_t mAnswered = 0;
    std::deque<tAsked> mAsked; ///< the requests under way, the oldest first
    std::string mFatalReport;  ///< what it said before it ended itself
    bool mOutOfMemory = false;
    bool mFaultCertain = false;
    bool mWasKilled = false;
    unsigned mProcessorSeconds = 0;
    unsigned mProcessorLife = 0; ///< seconds
    bool mWornOut = false;
    time_t mGrantedAt = 0;       ///< when processor time was granted last
    size_t mGrantedRequests = 0; ///< and for how many
    tHello mGreeting;
};
