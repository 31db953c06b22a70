#include "output/Terminal.h"

#include "output/Escapes.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <sys/ioctl.h>
#include <unistd.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace {
/// Below this nothing fits; a terminal that says so does not know its width.
constexpr size_t kNarrowest = 20;
/// Of what has no column of its own. A line that is indented by more stands in the second column of those above it.
constexpr size_t kIndentation = 6;

/// While it lives, this thread knows how wide the characters of Unicode are, whatever the user's language is.
class CWideCharacters {
public:
    CWideCharacters() : mBefore(uselocale(GetLocale())) {}
    ~CWideCharacters() { uselocale(mBefore); }
    CWideCharacters(const CWideCharacters&) = delete;
    CWideCharacters& operator=(const CWideCharacters&) = delete;

    static size_t Count(char32_t character)
    {
        if (character < 0x80 || character == UTF8::kInvalid) {
            return 1;
        }
        const int columns = wcwidth(static_cast<wchar_t>(character));
        return columns >= 0 ? static_cast<size_t>(columns) : 1;
    }

private:
    static locale_t GetLocale()
    {
        static const locale_t sLocale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return sLocale; // where it is null, uselocale changes nothing
    }

    locale_t mBefore;
};

/// Breaks a line of escaped text between words, or in a word that is wider than a line.
/// @param first  columns of the first line @param width  of those that follow
void BreakLine(std::string_view line, size_t first, size_t width, std::vector<std::string>& lines)
{
    const CWideCharacters wide;
    const auto add = [&](std::string_view piece) {
        piece.remove_suffix(piece.size() - std::min(piece.find_last_not_of(' ') + 1, piece.size()));
        lines.emplace_back(piece);
    };
    size_t room = first;
    size_t start = 0;
    size_t columns = 0;                   // from start to at
    size_t word = std::string_view::npos; // where the last word begins
    size_t columnsToWord = 0;             // from start to it
    for (size_t at = 0; at < line.size();) {
        size_t next = at;
        const size_t taken = CWideCharacters::Count(UTF8::DecodeNext(line, next));
        if (at > start && line[at - 1] == ' ' && line[at] != ' ' && line.find_first_not_of(' ', start) < at) {
            word = at;
            columnsToWord = columns;
        }
        if (columns + taken > room && taken > 0 && at > start && line[at] != ' ') {
            const bool isBetweenWords = word != std::string_view::npos;
            const size_t end = isBetweenWords ? word : at;
            add(line.substr(start, end - start));
            columns -= isBetweenWords ? columnsToWord : columns;
            start = end;
            room = width;
            word = std::string_view::npos;
            continue; // the rest may still be too wide
        }
        columns += taken;
        at = next;
    }
    add(line.substr(start));
}

/// Where the second column of a line begins: behind the first two blanks that follow something. @return 0 for none
size_t FindSecondColumn(const std::string& line)
{
    const size_t first = line.find_first_not_of(' ');
    const size_t gap = first == std::string::npos ? first : line.find("  ", first);
    const size_t second = gap == std::string::npos ? gap : line.find_first_not_of(' ', gap);
    return second == std::string::npos ? 0 : second;
}

/// Breaks an example between its words, with a backslash where it goes on, so that it can still be copied.
void BreakExample(const std::string& line, size_t width, std::string& text)
{
    size_t start = 0;
    size_t columns = 0;
    size_t blank = std::string::npos;
    bool isQuoted = false;
    for (size_t at = 0; at < line.size(); ++at, ++columns) {
        isQuoted = isQuoted != (line[at] == '\'');
        if (line[at] == ' ' && !isQuoted && line.find_first_not_of(' ') < at) {
            blank = at;
        }
        if (columns + 2 >= width && at + 1 < line.size() && blank != std::string::npos && blank > start) {
            text += line.substr(start, blank - start) + " \\\n    ";
            start = blank + 1;
            columns = at - start + 4;
            blank = std::string::npos;
        }
    }
    text += line.substr(start) + "\n";
}

/// Breaks a line of ours.
void FitLine(const std::string& line, size_t width, std::string& text)
{
    const size_t start = std::min(line.find_first_not_of(' '), line.size());
    const size_t second = FindSecondColumn(line);
    std::string prefix = line.substr(0, second);
    size_t below = second;
    if (second > width / 2) { // a column of its own would be too narrow
        text += line.substr(0, line.find_last_not_of(' ', second - 1) + 1) + "\n";
        below = kIndentation;
        prefix.assign(below, ' ');
    } else if (second == 0) {
        const bool isInColumn = start > kIndentation;
        below = !isInColumn ? start + 2 : start > width / 2 ? kIndentation : start;
        prefix.assign(isInColumn ? below : start, ' ');
    }
    std::vector<std::string> lines;
    BreakLine(std::string_view(line).substr(std::max(start, second)), width - prefix.size(), width - below, lines);
    for (size_t i = 0; i < lines.size(); ++i) {
        text += (i > 0 ? std::string(below, ' ') : prefix) + lines[i] + "\n";
    }
}
} // namespace

bool Terminal::IsCapable(int descriptor)
{
    const char* const kind = getenv("TERM");
    return isatty(descriptor) != 0 && kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

tLook Terminal::GetLook(int descriptor, bool isWide)
{
    tLook look;
    look.isTerminal = isatty(descriptor) != 0;
    look.isBold = IsCapable(descriptor);
    if (look.isTerminal && !isWide) {
        winsize size = {};
        const char* const columns = getenv("COLUMNS");
        size_t width = ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
        if (width == 0 && columns != nullptr) {
            std::from_chars(columns, columns + std::char_traits<char>::length(columns), width);
        }
        look.width = width >= kNarrowest ? width : tLook::kUnlimited;
    }
    return look;
}

size_t Terminal::CountColumns(std::string_view text)
{
    const CWideCharacters wide;
    size_t columns = 0;
    for (size_t at = 0; at < text.size();) {
        columns += CWideCharacters::Count(UTF8::DecodeNext(text, at));
    }
    return columns;
}

std::string Terminal::CutMiddle(std::string_view text, size_t width)
{
    if (width == 0 || CountColumns(text) <= width) {
        return std::string(width == 0 ? std::string_view() : text);
    }
    // The end tells more than the beginning: it gets two thirds of what is left beside the sign.
    const CWideCharacters wide;
    const size_t before = (width - 1) / 3;
    size_t head = 0;
    for (size_t at = 0, columns = 0; at < text.size(); head = at) {
        columns += CWideCharacters::Count(UTF8::DecodeNext(text, at));
        if (columns > before) {
            break;
        }
    }
    size_t tail = text.size();
    for (size_t columns = 0; tail > head;) {
        size_t at = tail - 1;
        while (at > head && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) {
            --at;
        }
        const size_t start = at;
        columns += CWideCharacters::Count(UTF8::DecodeNext(text, at));
        if (columns > width - 1 - before) {
            break;
        }
        tail = start;
    }
    return std::string(text.substr(0, head)) + "…" + std::string(text.substr(tail));
}

std::vector<std::string> Terminal::Wrap(std::string_view text, size_t width)
{
    std::vector<std::string> lines;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find_first_of("\r\n", start), text.size());
        BreakLine(Escapes::ForTerminal(text.substr(start, end - start)), width, width, lines);
        start = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
    }
    while (lines.size() > 1 && lines.back().empty()) {
        lines.pop_back();
    }
    return lines;
}

std::vector<std::string> Terminal::ToLines(std::string_view text, const tLook& look, size_t width)
{
    return look.isTerminal ? Wrap(text, width) : std::vector<std::string>{Escapes::ForTerminal(text)};
}

std::string Terminal::Fit(const std::string& text, const tLook& look)
{
    if (!look.isTerminal) {
        return text;
    }
    std::string fitted;
    bool isExample = false;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        const bool isTitle = line.ends_with(':') && line.find(' ') == std::string::npos;
        isExample = isTitle ? line == "Examples:" : isExample && !line.empty();
        if (isTitle || CountColumns(line) <= look.width) {
            fitted += (isTitle ? Emphasize(line, look) : line) + "\n";
        } else if (isExample) {
            BreakExample(line, look.width, fitted);
        } else {
            FitLine(line, look.width, fitted);
        }
        start = end + 1;
    }
    return fitted;
}

std::string Terminal::Emphasize(const std::string& text, const tLook& look)
{
    return look.isBold && !text.empty() ? "\x1B[1m" + text + "\x1B[m" : text;
}
