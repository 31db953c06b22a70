// velmora search: documents of the index, best first.
#include "ExitCodes.h"
#include "Interrupt.h"
#include "commands/IndexOptions.h"
#include "commands/SearchRecords.h"
#include "index/CIndexDatabase.h"
#include "output/CJSONLines.h"
#include "output/COutput.h"
#include "output/Escapes.h"
#include "output/Terminal.h"

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

/// People read so many; programs get all.
static constexpr long long kDefaultLimit = 20;

namespace {
struct tSearchOptions {
    std::vector<std::string> words; ///< of the query
    std::string format = "text";
    std::string database;           ///< the search index; empty for the user's own
    std::string onlyIn;             ///< a folder; empty for everywhere
    long long limit = -1;           ///< at most so many; 0 for all, below for the default
    long long offset = 0;           ///< so many are passed over
    std::string sort = "relevance"; ///< or name, modified, author
    bool exact = false;             ///< only whole words
    bool countOnly = false;         ///< how many
    bool nullSeparated = false;     ///< paths alone, with zeros between
    bool wide = false;              ///< lines are not fitted to a terminal
};
} // namespace

static void AddSearchOptions(CParser& parser, tSearchOptions& options)
{
    parser.SetFooter(
        "A query is words, also parts of words (whole words come first), \"several words\" in their order, and with *\n"
        "what begins (gleis*), ends (*bahn) or goes on at both ends. All must be found, OR makes one of several do,\n"
        "-word excludes. author:, description:, revision:, layer:, library:, article:, text:, name: and folder: "
        "before\n"
        "a word, a phrase or a (group) look in one field only. size:>1MB, elements:100..500, tracks:>12.5 (metres),\n"
        "gauge:H0, modified:2025-03 and created:<2020 ask for figures.");
    parser.Add("QUERY", options.words, "What to search for; several are joined").Named(" ");
    AddFormatOption(parser, options.format, {"text", "json"}, "text (for people) or json (an object a line)");
    parser.Add("--limit", options.limit, "At most so many; 0 for all (the default, but 20 as text)")
        .Between(0, 1000000000)
        .Named("N");
    parser.Add("--offset", options.offset, "Pass over so many").Between(0, 1000000000).Named("N");
    parser.Add("--sort", options.sort, "relevance (the usual), name, modified (the latest first) or author")
        .OneOf({"relevance", "name", "modified", "author"})
        .Named("ORDER");
    parser.AddFlag("--exact", options.exact, "Only whole words, where no * says otherwise");
    parser.AddFlag("--count", options.countOnly, "Print how many there are, nothing else");
    parser.Add("--only-in", options.onlyIn, "Only documents in this folder and below").Named("DIR");
    parser.AddFlag("-0,--null", options.nullSeparated, "Print paths only, with a zero byte behind each");
    AddWideOption(parser, options.wide);
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

/// How hits are shown: what a terminal can, beyond text.
struct tHitLook {
    tLook text;
    bool isLinked = false; ///< paths can be clicked
    std::string here;      ///< paths below this folder are shown from there, unless it is empty
    std::string host;      ///< of the links
};

static tHitLook GetHitLook(bool isWide)
{
    tHitLook look;
    look.text = Terminal::GetLook(STDOUT_FILENO, isWide);
    if (!look.text.isTerminal) { // scripts get whole paths
        return look;
    }
    look.isLinked = Terminal::IsCapable(STDOUT_FILENO);
    std::error_code ignored;
    look.here = std::filesystem::current_path(ignored).string();
    look.here += look.here.ends_with('/') ? "" : "/";
    char host[HOST_NAME_MAX + 1] = "";
    look.host = gethostname(host, sizeof host - 1) == 0 ? host : "";
    return look;
}

static constexpr size_t kIndent = 2;

static std::string Replaced(std::string text, std::string_view what, std::string_view with)
{
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

/// A text of a document below its path, in as many lines as it takes.
static std::string ShowText(std::string_view text, const tLook& look)
{
    const size_t width = look.width == tLook::kUnlimited ? look.width : look.width - kIndent;
    std::string shown;
    for (const std::string& line : Terminal::ToLines(text, look, width)) {
        shown += std::string(kIndent, ' ') + line + "\n";
    }
    return shown;
}

/// A passage with its matches, ready to be printed.
static std::string ShowPassage(const tPassage& passage, const tLook& look)
{
    // While lines are broken, matches stand between characters without width that no text needs.
    constexpr std::string_view kMarks[] = {"\uFE00", "\uFE01"};
    const auto part = [&](size_t from, size_t to) {
        return Replaced(Replaced(passage.text.substr(from, to - from), kMarks[0], ""), kMarks[1], "");
    };
    std::string marked;
    size_t at = 0;
    for (const tPassage::tMatch& match : passage.matches) {
        marked.append(part(at, match.start)).append(kMarks[0]).append(part(match.start, match.end)).append(kMarks[1]);
        at = match.end;
    }
    const std::string shown = ShowText(marked + part(at, passage.text.size()), look);
    return Replaced(Replaced(shown, kMarks[0], look.isBold ? "\x1B[1m" : "«"), kMarks[1], look.isBold ? "\x1B[m" : "»");
}

/// The path as it is shown, as a link to the document where the terminal knows such.
static std::string ShowPath(const std::string& path, const tHitLook& look)
{
    const bool isBelow = look.here.size() > 1 && path.starts_with(look.here);
    const std::string shown = Escapes::ForTerminal(isBelow ? path.substr(look.here.size()) : path);
    return look.isLinked ? "\x1B]8;;file://" + Escapes::ForURL(look.host) + Escapes::ForURL(path) + "\x1B\\" + shown +
                               "\x1B]8;;\x1B\\"
                         : shown;
}

static void WriteText(COutput& output, const tFoundDocument& found, bool isReachable, const tHitLook& look)
{
    std::string text = ShowPath(found.path, look) + (isReachable ? "\n" : " (not reachable)\n");
    const std::string revision = found.revision.empty() ? "" : "revision " + found.revision;
    const std::string origin = found.author + (found.author.empty() || revision.empty() ? "" : ", ") + revision;
    const bool isPassage = found.passage.field == "description";
    text += found.description.empty() || isPassage ? "" : ShowText(found.description, look.text);
    text += origin.empty() ? "" : ShowText(origin, look.text);
    text += found.passage.text.empty() ? "" : ShowPassage(found.passage, look.text);
    output.Write(text);
}

/// What people read beside the results.
static void PrintRemarks(CIndexSearch& search, const tSearchOptions& options, bool hasFound, bool isMore,
                         const std::string& folder)
{
    if (isMore) {
        COutput::PrintMessage("there are " + std::to_string(search.Count(folder)) +
                              " documents; --limit 0 shows all, --offset the next ones");
    }
    for (const std::string& note : search.GetNotes()) {
        COutput::PrintMessage(Escapes::ForTerminal(note));
    }
    if (!hasFound && options.offset == 0 && isatty(STDOUT_FILENO) != 0 && isatty(STDERR_FILENO) != 0) {
        const std::string suggestion = search.Suggest();
        COutput::PrintMessage("nothing found" +
                              (suggestion.empty() ? "" : "; did you mean: " + Escapes::ForTerminal(suggestion)));
    }
}

/// Prints the documents. @return an eExitCode
static int PrintFound(CIndexDatabase& index, CIndexSearch& search, const tSearchOptions& options, tSearchWish wish)
{
    const bool isJSON = options.format == "json";
    const bool isForPeople = !isJSON && !options.nullSeparated;
    wish.limit = options.limit >= 0 ? options.limit : isForPeople ? kDefaultLimit : 0;
    wish.hasPassages = !options.nullSeparated;
    const tHitLook look = GetHitLook(options.wide);
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    bool hasFound = false;
    const bool isMore = search.Find(wish, [&](const tFoundDocument& found) {
        if (options.nullSeparated) {
            output.Write(found.path);
            output.Write(std::string_view("\0", 1));
        } else if (isJSON) {
            lines.Write(SearchRecords::Make(found, index.IsReachable(found.path)));
        } else {
            WriteText(output, found, index.IsReachable(found.path), look);
        }
        hasFound = true;
        return output.Flush() && !Interrupt::IsRequested();
    });
    const bool written = output.Flush() || output.IsReaderGone();
    if (Interrupt::IsRequested()) {
        return kExitInterrupted;
    }
    if (isForPeople && !output.IsReaderGone()) {
        PrintRemarks(search, options, hasFound, isMore, wish.folder);
    }
    return written ? kExitOK : kExitFailed;
}

static int Search(CIndexDatabase& index, const tSearchOptions& options, const std::string& text)
{
    CIndexSearch search(index, text, options.exact);
    if (!search.GetQuery().IsGood()) {
        COutput::PrintMessage(SearchRecords::DescribeMistake(search.GetQuery(), text));
        return kExitUsage;
    }
    tSearchWish wish;
    wish.folder = options.onlyIn.empty() ? std::string() : ResolvePath(options.onlyIn);
    wish.offset = options.offset;
    wish.order = options.sort == "name"       ? eSearchOrder::kName
                 : options.sort == "modified" ? eSearchOrder::kModified
                 : options.sort == "author"   ? eSearchOrder::kAuthor
                                              : eSearchOrder::kRelevance;
    if (!options.countOnly) {
        return PrintFound(index, search, options, wish);
    }
    COutput output(STDOUT_FILENO);
    output.Write(std::to_string(search.Count(wish.folder)) + "\n");
    return output.Flush() || output.IsReaderGone() ? kExitOK : kExitFailed;
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
        return Search(index, options, text);
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
                                 "  velmora search 'elements:>100' gauge:H0 --only-in ~/Layouts\n",
                                 CallCommand<tSearchOptions, AddSearchOptions, RunSearch, CheckSearch>, true};
