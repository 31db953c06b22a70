// Numbers and dates in a query: "12.5", ">1MB", "100..500", "2025-03".
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

/// What documents can be asked for by number.
enum class eFigure {
    kSize,     ///< of the file, in bytes
    kElements, ///< how many
    kTracks,   ///< length of all tracks, in mm
    kGauge,    ///< in hundredths of a mm
    kModified, ///< the file, in seconds since 1970
    kCreated   ///< the document, by itself: seconds of its own clock since its 1970
};

/// From the first up to, not including, the last.
struct tFigureRange {
    int64_t from = std::numeric_limits<int64_t>::min();
    int64_t to = std::numeric_limits<int64_t>::max();
};

namespace Figures {
/// Reads what stands behind a field's colon. A number alone stands for all that are rounded to it; a year or month for
/// all its days, those of a file in local time. Sizes may have a unit: k, M, G for thousands, also with B or iB.
/// @param factor  from the number's unit to the figure's
/// @return empty, or what is wrong; the range is then of no use
std::string Read(std::string_view text, eFigure figure, int64_t factor, tFigureRange& range);
} // namespace Figures
