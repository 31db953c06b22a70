#include "output/CProgress.h"

#include "output/COutput.h"
#include "output/Escapes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

/// A run that is over by then needs no bar.
static constexpr std::chrono::milliseconds kBeforeFirst(500);
static constexpr std::chrono::milliseconds kBetweenBars(100);
static constexpr std::chrono::seconds kBetweenLines(2);
/// Columns of the bar itself.
static constexpr size_t kBarWidth = 20;
/// Time left is guessed only when this much has been done.
static constexpr double kSecondsBeforeGuess = 1;

static bool IsSet(const char* variable)
{
    const char* value = getenv(variable);
    return value != nullptr && *value != '\0';
}

CProgress::eMode CProgress::Choose(const std::string& wish)
{
    if (wish == "plain") {
        return eMode::kPlain;
    }
    const char* terminal = getenv("TERM");
    const bool wanted =
        isatty(STDERR_FILENO) != 0 && !IsSet("NO_COLOR") && terminal != nullptr && std::string_view(terminal) != "dumb";
    return wish == "always" || (wish == "auto" && wanted) ? eMode::kBar : eMode::kNever;
}

static size_t TerminalWidth()
{
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
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

/// The numbers, without bar and name.
static std::string FormatNumbers(const tProgress& progress, double seconds, bool totalKnown)
{
    std::string text = std::to_string(progress.done);
    text += totalKnown ? "/" + std::to_string(*progress.total) : "";
    text += " documents";
    const double rate = static_cast<double>(progress.done) / std::max(seconds, 0.001);
    text += ", " + std::to_string(static_cast<unsigned long long>(rate)) + "/s";
    if (totalKnown && progress.done > 0 && seconds >= kSecondsBeforeGuess) {
        text += ", " + FormatDuration(static_cast<double>(*progress.total - progress.done) / rate) + " left";
    }
    if (progress.failed > 0) {
        text += ", " + std::to_string(progress.failed) + " failed";
    }
    return text;
}

std::string CProgress::FormatBar(const tProgress& progress, double seconds, size_t width)
{
    const bool totalKnown = progress.total && *progress.total >= progress.done && *progress.total > 0;
    std::string line;
    if (totalKnown) {
        const size_t filled = static_cast<size_t>(progress.done * kBarWidth / *progress.total);
        line = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] ";
    }
    line += FormatNumbers(progress, seconds, totalKnown);
    if (line.size() > width) {
        line.resize(width);
    }
    // Names are cut in front: their ends tell more. Only what is sure to be one column wide is shown of them.
    std::string name = Escapes::ForTerminal(progress.name);
    std::replace_if(
        name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, '?');
    const size_t room = width > line.size() + 2 ? width - line.size() - 2 : 0;
    if (room >= 8 && !name.empty()) {
        line += "  " + (name.size() > room ? name.substr(name.size() - room) : name);
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
            COutput::PrintMessage(FormatNumbers(progress, seconds, totalKnown));
        }
    }
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(mNext - now).count());
}

void CProgress::End()
{
    COutput::ShowStatus({});
}
