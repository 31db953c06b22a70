// What a terminal shows: how wide characters are, how much fits into a line, what stands out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// How a text for people is to look. What is set here is for a pipe or a file, where nothing is cut or broken.
struct tLook {
    static constexpr size_t kUnlimited = static_cast<size_t>(-1);
    size_t width = kUnlimited; ///< columns of a line
    bool isTerminal = false;   ///< line breaks of documents are shown as breaks, not as \n
    bool isBold = false;       ///< heads stand out
};

namespace Terminal {
/// Whether the stream is a terminal that understands control sequences: TERM is set, and not "dumb".
bool IsCapable(int descriptor);

/// The look of a text that goes to the stream. A terminal's width is what it says itself, else what COLUMNS says.
/// @param isWide  lines may be as long as they get
tLook GetLook(int descriptor, bool isWide = false);

/// Columns that a text takes: two for each wide character, none for combining ones. Characters whose width is
/// ambiguous take one. @param text  without control characters; a byte that is no UTF-8 counts as a column
size_t CountColumns(std::string_view text);

/// The end, or the beginning and the end, of a text that is too wide: … stands for what is missing.
/// @param text  without control characters
std::string CutMiddle(std::string_view text, size_t width);

/// A document's text as lines: broken where it has line breaks (\n, \r\n, \r), and between words where they would be
/// wider than `width`; other control characters are escaped. There is at least one line.
std::vector<std::string> Wrap(std::string_view text, size_t width);

/// The lines of a document's text in that look: one, with its line breaks escaped, where it is no terminal.
std::vector<std::string> ToLines(std::string_view text, const tLook& look, size_t width);

/// Breaks the lines of a text of ours that are too long. What follows goes below where the line's second column
/// begins (behind two blanks or more), or is indented where there is none; what follows "Examples:" is broken as a
/// shell understands it. Titles of sections, a word and a colon, stand out.
std::string Fit(const std::string& text, const tLook& look);

/// @return the text, so that it stands out in that look
std::string Emphasize(const std::string& text, const tLook& look);
} // namespace Terminal
