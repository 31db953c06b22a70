// velmora search: documents of the index, best first.
#include "ExitCodes.h"
#include "Interrupt.h"
#include "commands/IndexOptions.h"
#include "index/CIndexDatabase.h"
#include "index/CQuery.h"
#include "output/COutput.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

/// People read so many; programs get all.
static constexpr long long kDefaultLimit = 20;

namespace {
struct tSearchOptions {
    std::vector<std::string> words; ///< of the query
    std::string format = "text";
    std::string database;       ///< the search index; empty for the user's own
    std::string onlyIn;         ///< a folder; empty for everywhere
    long long limit = -1;       ///< at most so many; 0 for all, below for the default
    bool countOnly = false;     ///< how many
    bool nullSeparated = false; ///< paths alone, with zeros between
};
} // namespace

static void AddSearchOptions(CParser& parser, tSearchOptions& options)
{
    parser.SetFooter(
        "A query is words, \"several words\" in their order, and the beginnings of words (gleis*). All must be\n"
        "found, OR makes one of several do, -word excludes. author:, description:, revision:, layer:, library:,\n"
        "article:, text: and name: before a word, a phrase or a (group) look in one field only.");
    parser.Add("QUERY", options.words, "What to search for; several are joined").Named(" ");
    AddFormatOption(parser, options.format, {"text", "json"}, "text (for people) or json (an object a line)");
    parser.Add("--limit", options.limit, "At most so many; 0 for all (the default, but 20 as text)")
        .Between(0, 1000000000)
        .Named("N");
    parser.AddFlag("--count", options.countOnly, "Print how many there are, nothing else");
    parser.Add("--only-in", options.onlyIn, "Only documents in this folder and below").Named("DIR");
    parser.AddFlag("-0,--null", options.nullSeparated, "Print paths only, with a zero byte behind each");
    AddDatabaseOption(parser, options.database);
}

static std::string CheckSearch(const tSearchOptions& options)
{
    if (options.words.empty()) {
        return "nothing to search for: name words";
    }
    if (options.nullSeparated && (options.format != "text" || options.countOnly)) {
        return "--null prints paths only: it goes with neither --format json nor --count";
    }
    return {};
}

/// A text with its matches, ready to be printed.
/// @param begin, end  what stands around matches
static std::string Mark(const std::string& passage, const char* begin, const char* end, bool escape)
{
    std::string marked;
    bool inMatch = false;
    for (size_t at = 0; at <= passage.size();) {
        const size_t next = std::min(passage.find_first_of("\x02\x03", at), passage.size());
        const std::string piece = passage.substr(at, next - at);
        marked += escape ? Escapes::ForTerminal(piece) : piece;
        if (next < passage.size() && inMatch != (passage[next] == kMatchBegin)) {
            inMatch = !inMatch;
            marked += inMatch ? begin : end;
        }
        at = next + 1;
    }
    return inMatch ? marked + end : marked;
}

/// Whether standard output is a terminal that shows bold letters.
static bool IsBoldShown()
{
    const char* noColor = getenv("NO_COLOR");
    const char* terminal = getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && (noColor == nullptr || *noColor == 0) && terminal != nullptr &&
           std::string(terminal) != "dumb";
}

static void WriteText(COutput& output, const tFoundDocument& found, bool bold)
{
    output.Write(Escapes::ForTerminal(found.path) + "\n");
    const bool isDescription = Mark(found.passage, "", "", false) == found.description;
    if (!found.description.empty() && !isDescription) {
        output.Write("  " + Escapes::ForTerminal(found.description) + "\n");
    }
    if (!found.passage.empty()) {
        output.Write("  " + Mark(found.passage, bold ? "\x1B[1m" : "«", bold ? "\x1B[22m" : "»", true) + "\n");
    }
}

static void WriteJSON(COutput& output, const tFoundDocument& found)
{
    JSON::tRecord record;
    JSON::PutPath(record, "path", found.path);
    record["author"] = found.author;
    record["description"] = found.description;
    record["passage"] = Mark(found.passage, "«", "»", false);
    record["score"] = found.score;
    output.Write(JSON::ToLine(record));
}

/// Prints the documents. @return whether there were more than the limit lets through
static bool PrintFound(CIndexDatabase& index, const tSearchOptions& options, const std::string& expression,
                       const std::string& folder, COutput& output)
{
    const bool json = options.format == "json";
    const long long standard = json || options.nullSeparated ? 0 : kDefaultLimit;
    const long long limit = options.limit < 0 ? standard : options.limit;
    const bool bold = IsBoldShown();
    long long count = 0;
    bool more = false;
    index.Search(expression, folder, limit > 0 ? limit + 1 : -1, [&](const tFoundDocument& found) {
        more = limit > 0 && ++count > limit;
        if (more) {
            return false;
        }
        if (options.nullSeparated) {
            output.Write(found.path);
            output.Write(std::string_view("\0", 1));
        } else if (json) {
            WriteJSON(output, found);
        } else {
            WriteText(output, found, bold);
        }
        return output.Flush() && !Interrupt::IsRequested();
    });
    return more;
}

static int RunSearch(const tSearchOptions& options)
{
    std::string text;
    for (const std::string& word : options.words) {
        text += (text.empty() ? "" : " ") + word.substr(word.starts_with(" -") ? 1 : 0);
    }
    const std::string path = GetDatabasePath(options.database);
    try {
        if (path.empty()) {
            throw CIndexError("there is no folder for the index: name one with --database");
        }
        CIndexDatabase index(path, CIndexDatabase::eAccess::kRead);
        const CQuery query(text, [&](std::string_view word) { return index.HasWords(word); });
        if (!query.IsGood()) {
            COutput::PrintMessage("the query is wrong at character " + std::to_string(query.GetColumn()) + ": " +
                                  query.GetMessage() + "\n  " + Escapes::ForTerminal(text));
            return kExitUsage;
        }
        const std::string folder = options.onlyIn.empty() ? std::string() : ResolvePath(options.onlyIn);
        COutput output(STDOUT_FILENO);
        bool more = false;
        if (options.countOnly) {
            output.Write(std::to_string(index.Count(query.GetExpression(), folder)) + "\n");
        } else {
            more = PrintFound(index, options, query.GetExpression(), folder, output);
        }
        const bool written = output.Flush() || output.IsReaderGone();
        if (Interrupt::IsRequested()) {
            return kExitInterrupted;
        }
        if (more && options.format == "text" && !options.nullSeparated && !output.IsReaderGone()) {
            COutput::PrintMessage("there are " + std::to_string(index.Count(query.GetExpression(), folder)) +
                                  " documents; --limit 0 shows all");
        }
        return written ? kExitOK : kExitFailed;
    } catch (const CIndexError& error) {
        COutput::PrintMessage(error.what());
    } catch (const std::exception& error) {
        if (Interrupt::IsRequested()) {
            return kExitInterrupted;
        }
        COutput::PrintMessage(CIndexDatabase::Explain(path, error));
    }
    return kExitFailed;
}

const tCommand kSearchCommand = {"search", "Find layouts in the index, best first",
                                 "  velmora search turntable\n"
                                 "  velmora search author:meier layer:station -text:draft\n"
                                 "  velmora search '\"single track\" OR bergbahn*' --only-in ~/Layouts\n",
                                 CallCommand<tSearchOptions, AddSearchOptions, RunSearch, CheckSearch>, true};
