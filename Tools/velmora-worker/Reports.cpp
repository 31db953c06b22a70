#include "Reports.h"

#include "Bounds.h"
#include "Platform/MacRoman.h"
#include "Platform/Report.h"
#include "protocol/Frames.h"

#include <string_view>

/// How the loader's warnings begin that say why it gives up, behind the function's name.
static constexpr std::string_view kFailurePrefixes[] = {": Failed to load layout, ", ": Failed to load layers, "};
/// A report in bytes of Mac OS Roman, of which each takes at most 3 in UTF-8.
static constexpr size_t kMaxReportLength = Bounds::kMostFatalReport / 3;

static int sSocket = -1;
static uint32_t sSequence = 0;
static std::string sLoadFailure;

static std::string ToReport(std::string_view text)
{
    return Platform::MacRomanToUtf8(text.substr(0, kMaxReportLength));
}

static void Observe(void*, Platform::eReportLevel level, const char* text)
{
    const std::string_view message = text;
    if (level == Platform::eReportLevel::kFatalError && !message.empty()) {
        SendFrame(sSocket, eFrameKind::kFatalReport, sSequence, ToReport(message));
    } else if (level == Platform::eReportLevel::kWarning) {
        for (const std::string_view prefix : kFailurePrefixes) {
            const size_t found = message.find(prefix);
            if (found != std::string_view::npos) {
                sLoadFailure = ToReport(message.substr(found + prefix.size()));
            }
        }
    }
}

void Reports::Begin(int socket)
{
    sSocket = socket;
    Platform::SetReportObserver(Observe, nullptr);
}

void Reports::Reset(uint32_t sequence)
{
    sSequence = sequence;
    sLoadFailure.clear();
}

std::string Reports::GetLoadFailure()
{
    return sLoadFailure;
}
