#include "output/CProgress.h"

#include "output/COutput.h"
#include "output/Escapes.h"
#include "output/Terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

/// A run that is over by then needs no bar.
static constexpr std::chrono::milliseconds kBeforeFirst(500);
static constexpr std::chrono::milliseconds kBetweenBars(100);
static constexpr std::chrono::seconds kBetweenLines(2);
/// Columns of the bar itself: as many as there is room for, of these.
static constexpr size_t kBarWidths[] = {20, 10};
/// Columns of a terminal that does not tell.
static constexpr size_t kUsualWidth = 80;
/// A name that is cut to less tells nothing.
static constexpr size_t kShortestName = 8;
/// Time left is guessed only when this much has been done.
static constexpr double kSecondsBeforeGuess = 1;

CProgress::eMode CProgress::Choose(const std::string& wish)
{
    if (wish == "plain") {
        return eMode::kPlain;
    }
    const bool isWanted = wish == "always" || (wish == "auto" && Terminal::IsCapable(STDERR_FILENO));
    return isWanted ? eMode::kBar : eMode::kNever;
}

/// The width is asked for each bar: a window may have changed its size.
static size_t TerminalWidth()
{
    const size_t width = Terminal::GetLook(STDERR_FILENO).width;
    return width != tLook::kUnlimited ? width : kUsualWidth;
}

static std::string FormatDuration(double seconds)
{
    char text[32];
    const auto whole = std::llround(std::clamp(seconds, 0.0, 1e9));
    if (whole < 3600) {
        snprintf(text, sizeof text, "%lld:%02llu", whole / 60, whole % 60);
    } else {
        snprintf(text, sizeof text, "%lld:%02llu:%02llu", whole / 3600, whole / 60 % 60, whole % 60);
    }
    return text;
}

namespace {
/// The numbers, without bar and name, in the order in which they are given up where there is no room, the last first.
struct tNumbers {
    std::string done;   ///< "250/1000 documents"
    std::string failed; ///< ", 3 failed", or empty, as what follows
    std::string left;
    std::string rate;

    /// @param count  of the parts that there is room for: 1 to 4
    std::string Join(size_t count = 4) const
    {
        return done + (count > 3 ? rate : "") + (count > 2 ? left : "") + (count > 1 ? failed : "");
    }
};
} // namespace

static tNumbers FormatNumbers(const tProgress& progress, double seconds, bool totalKnown)
{
    tNumbers numbers;
    numbers.done = std::to_string(progress.done);
    numbers.done += (totalKnown ? "/" + std::to_string(*progress.total) : "") + " documents";
    const double rate = static_cast<double>(progress.done) / std::max(seconds, 0.001);
    numbers.rate = ", " + std::to_string(static_cast<unsigned long long>(rate)) + "/s";
    if (totalKnown && progress.done > 0 && seconds >= kSecondsBeforeGuess) {
        numbers.left = ", " + FormatDuration(static_cast<double>(*progress.total - progress.done) / rate) + " left";
    }
    if (progress.failed > 0) {
        numbers.failed = ", " + std::to_string(progress.failed) + " failed";
    }
    return numbers;
}

std::string CProgress::FormatBar(const tProgress& progress, double seconds, size_t width)
{
    const bool totalKnown = progress.total && *progress.total >= progress.done && *progress.total > 0;
    const tNumbers numbers = FormatNumbers(progress, seconds, totalKnown);
    size_t count = 4;
    while (count > 1 && numbers.Join(count).size() > width) {
        --count;
    }
    std::string line = numbers.Join(count).substr(0, width);
    for (const size_t barWidth : kBarWidths) {
        if (totalKnown && line.size() + barWidth + 3 <= width) {
            const size_t filled = static_cast<size_t>(progress.done * barWidth / *progress.total);
            std::string bar(barWidth, '.');
            bar.replace(0, filled, filled, '#');
            line.insert(0, "[" + bar + "] ");
            break;
        }
    }
    const size_t room = width > line.size() + 2 ? width - line.size() - 2 : 0;
    if (room >= kShortestName && !progress.name.empty()) {
        line += "  " + Terminal::CutMiddle(Escapes::ForTerminal(progress.name), room);
    }
    return line;
}

int CProgress::Update(const std::function<tProgress()>& get)
{
    if (mMode == eMode::kNever) {
        return -1;
    }
    const tClock::duration between = mMode == eMode::kBar ? tClock::duration(kBetweenBars) : kBetweenLines;
    const tClock::time_point now = tClock::now();
    if (!mStarted) {
        mStarted = true;
        mNext = mStart + std::max<tClock::duration>(kBeforeFirst, mMode == eMode::kPlain ? between : kBeforeFirst);
    }
    if (now >= mNext) {
        mNext = now + between;
        const double seconds = std::chrono::duration<double>(now - mStart).count();
        const tProgress progress = get();
        if (mMode == eMode::kBar) {
            COutput::ShowStatus(FormatBar(progress, seconds, TerminalWidth() - 1));
        } else {
            const bool totalKnown = progress.total && *progress.total >= progress.done;
            COutput::PrintMessage(FormatNumbers(progress, seconds, totalKnown).Join());
        }
    }
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(mNext - now).count());
}

void CProgress::End()
{
    COutput::ShowStatus({});
}
