// Cutting a text into what the systems' text libraries can take.
// For the sources of Platform and the drawing over Cocoa.
#pragma once

#include "Utf8.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace Platform {
/// Characters measured at once; keeps widths at 100 pt far below the 2^21 points that a 32-bit count of 1/1024 holds.
inline constexpr size_t kLongestPiece = 1000;

/// Width and height of a text in points.
struct tSize {
    double width = 0;
    double height = 0;
};

/// Cuts the beginning off `text`: the rest of its first line, at most kLongestPiece characters of it. LF, CR, CR LF and
/// the line and paragraph separators end a line and are left out. The piece is made fit to be laid out: a control
/// character becomes a space, a byte that is no UTF-8 a question mark (both are among the characters of every font and
/// of those that a process lays out before its jail closes).
/// @param ends  set to whether the piece is the end of its line
/// @param more  set to whether another line follows, if only an empty one
inline std::string TakePiece(std::string_view& text, bool& ends, bool& more)
{
    std::string piece;
    for (size_t count = 0; !text.empty() && count < kLongestPiece; ++count) {
        char32_t character = 0;
        size_t length = 0;
        const bool valid = DecodeUtf8(text, character, length);
        const std::string_view bytes = text.substr(0, length);
        text.remove_prefix(length);
        if (!valid) {
            piece += '?';
        } else if (character == '\n' || character == '\r' || character == 0x2028 || character == 0x2029) {
            if (character == '\r' && text.starts_with('\n')) {
                text.remove_prefix(1);
            }
            ends = more = true;
            return piece;
        } else if (character < 0x20 || (character >= 0x7F && character < 0xA0)) {
            piece += ' ';
        } else {
            piece += bytes;
        }
    }
    ends = text.empty();
    more = false;
    return piece;
}

/// Adds up what `measure` says of the pieces: `bool measure(const std::string& piece, tSize& size)`, where an empty
/// piece has the height of a line. @return false as soon as it answers false
template <class tMeasure>
bool MeasureLines(std::string_view text, tMeasure measure, tSize& size)
{
    tSize line;
    size = {};
    bool ends = false;
    for (bool more = true; more || !ends;) {
        const std::string piece = TakePiece(text, ends, more);
        tSize part;
        if (!measure(piece, part)) {
            return false;
        }
        line.width += part.width;
        line.height = std::max(line.height, part.height);
        if (ends) {
            size.width = std::max(size.width, line.width);
            size.height += line.height;
            line = {};
        }
    }
    return true;
}
} // namespace Platform
