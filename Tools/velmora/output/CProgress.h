// How far a run is, while it lasts.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// What there is to show.
struct tProgress {
    uint64_t done = 0; ///< documents, good or not
    uint64_t failed = 0;
    std::optional<uint64_t> total; ///< where it is known
    std::string name;              ///< of the document handed out last, any bytes
};

/// Shows progress on standard error: as a line that changes, or as lines for a log.
class CProgress {
public:
    enum class eMode { kNever, kBar, kPlain };

    /// @param wish  auto (a bar, on a terminal that wants such things), always, never or plain
    static eMode Choose(const std::string& wish);

    explicit CProgress(eMode mode) : mMode(mode) {}
    ~CProgress() { End(); }
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    /// Shows how far it is, if it is time. @param get  asked only then
    /// @return in how many milliseconds it is time again; -1 for never
    int Update(const std::function<tProgress()>& get);

    /// Takes the bar away.
    void End();

    /// What a bar shows, at most `width` columns. @param seconds  since the beginning
    static std::string FormatBar(const tProgress& progress, double seconds, size_t width);

private:
    using tClock = std::chrono::steady_clock;

    eMode mMode;
    tClock::time_point mStart = tClock::now();
    tClock::time_point mNext = mStart;
    bool mStarted = false;
};
