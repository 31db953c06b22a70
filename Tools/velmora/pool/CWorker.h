// One supervised worker process.
#pragma once

#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"

#include <optional>
#include <string>
#include <sys/types.h>

/// What a worker is started with.
struct tWorkerSettings {
    std::string program;             ///< path of the worker's executable
    std::string plugIn;              ///< path of the plug-in bundle
    unsigned memoryMegabytes = 1024; ///< what it may map beyond what it maps at rest
    bool draws = false;              ///< it is to draw: it may read fonts, and loads what it needs at the start
};

/// A worker process and the conversation with it. Nothing that comes from it is trusted: whatever does not fit ends it.
/// The owner watches the socket and the clock.
class CWorker {
public:
    enum class eState {
        kNone,     ///< no process
        kStarting, ///< the greeting has not come yet
        kIdle,
        kBusy ///< asked, not answered
    };
    enum class eEvent {
        kNothing, ///< nothing complete yet
        kReady,   ///< the greeting: it is idle now
        kRefused, ///< the greeting: it cannot serve (the plug-in is missing or of another kind); it has ended
        kAnswer,  ///< the answer to what it was asked; it is idle again
        kLost     ///< it is gone, or was ended for what it sent
    };

    CWorker() = default;
    ~CWorker() { Dismiss(); }
    CWorker(const CWorker&) = delete;
    CWorker& operator=(const CWorker&) = delete;

    /// Starts the process; the greeting comes later. @return false with errno set
    bool Start(const tWorkerSettings& settings);

    eState GetState() const { return mState; }

    /// The socket to wait for; -1 without a process.
    int GetSocket() const { return mSocket.Get(); }

    /// Asks an idle worker.
    /// @param document  passed along, not owned; -1 for none
    /// @return false when it is gone without having seen the request; it has no process then
    bool Ask(const tRequest& request, int document);

    /// Takes what the socket has. @param answer  set for kAnswer; for kLost and kRefused it is the failure that says
    /// why
    eEvent Read(tAnswer& answer);

    /// Ends the process at once.
    void Kill();

    /// Ends the process in peace, if it is idle: it has a moment to leave by itself.
    void Dismiss();

private:
    eEvent HandleFrame(const tFrame& frame, tAnswer& answer);
    eEvent Lose(tAnswer& answer, const char* misbehaviour);
    std::optional<int> WaitForEnd(int milliseconds);

    eState mState = eState::kNone;
    pid_t mProcess = 0;
    CDescriptor mSocket;
    std::optional<CFrameReader> mReader;
    uint32_t mSequence = 0;
    eVerb mVerb = eVerb::kImport; ///< what it was asked
    std::string mFatalReport;     ///< what it said before it ended itself
    bool mOutOfMemory = false;
};
