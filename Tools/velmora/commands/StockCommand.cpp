// velmora stock: what a stock file holds; and pieces that go out of it and come back.
#include "ExitCodes.h"
#include "Interrupt.h"
#include "Places.h"
#include "commands/Batch.h"
#include "commands/Parts.h"
#include "commands/StockBalance.h"
#include "commands/StockEdit.h"
#include "output/CReplacedFile.h"
#include "output/Escapes.h"
#include "output/JSON.h"
#include "protocol/NamelessFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
struct tStockOptions : tBatchOptions {
    std::string format = "text";
    std::vector<std::string> take; ///< layouts whose parts go out
    std::vector<std::string> put;  ///< layouts whose parts come back
    bool partial = false;          ///< what is missing does not matter
    bool dryRun = false;           ///< nothing is written
    bool wide = false;             ///< tables are not fitted to a terminal

    bool Moves() const { return !take.empty() || !put.empty(); }
};

/// What becomes of a stock.
struct tMove {
    std::string file;
    tAmounts moved;
    tAmounts left; ///< in stock, of the articles concerned
    tAmounts missing;
    size_t withoutLibrary = 0; ///< articles that no stock can hold
    std::string problem;       ///< why nothing was written, for people; empty if it was
};

constexpr char kEmptyStock[] = "<?xml version=\"1.0\"?>\n<Velmora_Stock>\n</Velmora_Stock>\n";

void AddStockOptions(CParser& parser, tStockOptions& options)
{
    parser.Add("FILE", options.paths, "A stock file; with --take and --put the user's if none is named");
    const COption take =
        parser
            .Add("--take", options.take,
                 "Take the parts of this layout out of the stock; may be given several times, as a folder, too")
            .TakesOne()
            .Named("LAYOUT");
    parser.Add("--put", options.put, "Put the parts of this layout back; may be given several times")
        .TakesOne()
        .Named("LAYOUT")
        .Without(take);
    parser.AddFlag("--partial", options.partial, "Take what is there even if something is missing");
    parser.AddFlag("--dry-run", options.dryRun, "Say what would be moved, and write nothing");
    AddFormatOption(parser, options.format, {"text", "json", "csv"},
                    "text (for people), json (an object a file) or csv");
    AddWideOption(parser, options.wide);
    AddWorkerOptions(parser, options);
}

std::string CheckStock(const tStockOptions& options)
{
    if (options.Moves() ? options.paths.size() > 1 : options.paths.empty()) {
        return options.Moves() ? "name one stock file" : "name the file to list";
    }
    if (options.partial && options.take.empty()) {
        return "--partial goes with --take";
    }
    return options.dryRun && !options.Moves() ? "--dry-run goes with --take or --put" : "";
}

std::string Show(const tStockOptions& options, const CTable& table)
{
    return options.format == "csv" ? table.ToCSV(isatty(STDOUT_FILENO) != 0)
                                   : table.ToText(Terminal::GetLook(STDOUT_FILENO, options.wide));
}

std::string StockJSON(const std::string& path, const CReport& report)
{
    CJSONObject object;
    JSON::PutPath(object, "path", path);
    object.Put("ok", true);
    object.BeginList("items");
    report.ForEach("items", [&object](const CReport& item) {
        JSON::tRecord entry = {{"library", item.GetText("library")},
                               {"number", item.GetText("number")},
                               {"count", item.GetNumber("count")}};
        if (item.Has("wrong_count")) {
            entry["wrong_count"] = item.GetText("wrong_count");
        }
        object.Add(entry);
    });
    object.EndList();
    return object.Take() + "\n";
}

int List(const tStockOptions& options)
{
    const bool json = options.format == "json";
    const auto format = [&](const tInput& input, const tAnswer&, const CReport& report) {
        StockBalance::SayWrongCounts(input.path, report);
        if (json) {
            return StockJSON(input.path, report);
        }
        CTable table({{"Library"}, {"Number"}, {"Count", true}});
        report.ForEach("items", [&table](const CReport& item) {
            table.AddRow({item.GetText("library"), item.GetText("number"), std::to_string(item.GetNumber("count"))});
        });
        return Show(options, table);
    };
    return PrintReports(options, eVerb::kStock, json, format, "listed");
}

/// Reads a whole file. @return empty, or why it cannot be read
std::string ReadAll(int file, std::string& bytes)
{
    bytes.clear();
    char block[65536];
    for (;;) {
        const ssize_t got = pread(file, block, sizeof block, static_cast<off_t>(bytes.size()));
        if (got <= 0) {
            return got == 0 ? std::string() : std::string("cannot be read: ") + strerror(errno);
        }
        bytes.append(block, static_cast<size_t>(got));
    }
}

/// Opens a stock file and keeps others from changing it as long as it is open.
/// @param mayBeMissing  a file that is not there is none to be refused: the descriptor stays closed
/// @return empty, or what is wrong
std::string Lock(const std::string& path, bool mayBeMissing, CDescriptor& file)
{
    file.Reset(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen()) {
        return errno == ENOENT && mayBeMissing ? std::string() : std::string("cannot be read: ") + strerror(errno);
    }
    struct stat opened = {};
    struct stat named = {};
    if (fstat(file.Get(), &opened) != 0 || !S_ISREG(opened.st_mode)) {
        return "is no file";
    }
    // The one who has replaced the file meanwhile has locked another one.
    const bool isLocked = flock(file.Get(), LOCK_EX | LOCK_NB) == 0;
    if (!isLocked || stat(path.c_str(), &named) != 0 || named.st_ino != opened.st_ino) {
        return "another velmora is changing it; try again when it has ended";
    }
    return {};
}

/// The parts of the layouts that a stock can hold.
int AddUp(CBatch& batch, const std::vector<std::string>& layouts, tMove& move, tAmounts& needed, COutput& output,
          CJSONLines* lines)
{
    tPartsList list;
    const int status = batch.AskBesides(
        {eVerb::kParts}, layouts,
        [&list](const tInput&, const tAnswer&, const CReport& report) { Parts::AddLayout(list, report); }, output,
        lines);
    for (const auto& [key, count] : Parts::GetAmounts(list.parts)) {
        if (key.first.empty()) {
            ++move.withoutLibrary;
        } else {
            needed[key] = count;
        }
    }
    if (status == kExitOK && list.layouts == 0) {
        COutput::PrintMessage("there is no layout: nothing is moved");
        return kExitFailed;
    }
    return status;
}

/// Works out what is moved. @return an eExitCode; what failed has been said
int WorkOut(CBatch& batch, const tStockOptions& options, const tAmounts& needed, const tAmounts& owned,
            CStockEdit& edit, tMove& move)
{
    move.left = owned;
    if (!options.put.empty()) {
        move.moved = needed;
        for (const auto& [key, count] : needed) {
            move.left[key] += count;
        }
        const std::string tooMany = edit.Put(needed);
        move.problem = tooMany.empty() ? "" : "more than 2147483647 pieces of '" + tooMany + "' are no count";
        return kExitOK;
    }
    if (const int status = StockBalance::Compare(batch, needed, move.left, move.missing); status != kExitOK) {
        return status;
    }
    std::erase_if(move.missing, [](const auto& entry) { return entry.second == 0; });
    for (const auto& [key, count] : needed) {
        const auto before = owned.find(key);
        if (before != owned.end() && before->second > move.left[key]) {
            move.moved[key] = before->second - move.left[key];
        }
    }
    edit.Take(move.moved);
    if (!move.missing.empty() && !options.partial) {
        move.problem = std::to_string(move.missing.size()) +
                       " articles are missing, and nothing was taken; --partial takes what is there";
    }
    return kExitOK;
}

/// Whether a worker reads out of the new bytes what they are meant to say.
bool IsSound(CBatch& batch, const CStockEdit& edit, const std::string& bytes)
{
    const CDescriptor file = MakeNamelessFile();
    if (!file.IsOpen() || write(file.Get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        return false;
    }
    bool isSound = false;
    COutput output(STDOUT_FILENO); // nothing goes there
    batch.AskBesides(
        {eVerb::kStock}, {"/dev/fd/" + std::to_string(file.Get())},
        [&](const tInput&, const tAnswer&, const CReport& report) { isSound = edit.IsAsWanted(report); }, output,
        nullptr);
    return isSound;
}

/// Puts the new file in the place of the old one, which stays beside it. @return empty, or what is wrong
std::string Replace(const std::string& path, const CDescriptor& file, const std::string& before,
                    const std::string& bytes)
{
    if (!file.IsOpen()) {
        return CReplacedFile::Write(path, bytes, false);
    }
    std::string now;
    struct stat status = {};
    if (!ReadAll(file.Get(), now).empty() || now != before || fstat(file.Get(), &status) != 0) {
        return "was changed meanwhile; try again";
    }
    const std::string backup = path + "~";
    std::string problem = CReplacedFile::Write(backup, before, true);
    if (!problem.empty()) {
        return "the backup " + backup + " " + problem;
    }
    chmod(backup.c_str(), status.st_mode & 07777); // as private as the file itself
    return CReplacedFile::Write(path, bytes, true);
}

std::string MoveJSON(const tStockOptions& options, const tMove& move)
{
    CJSONObject object;
    JSON::PutPath(object, "path", move.file);
    object.Put("ok", move.problem.empty());
    if (!move.problem.empty()) {
        object.Put("error", JSON::DescribeFailure("stock", move.problem));
    }
    object.PutAll({{"action", options.take.empty() ? "put" : "take"},
                   {"written", move.problem.empty() && !options.dryRun},
                   {"without_library", move.withoutLibrary}});
    const auto putList = [&object](const char* key, const tAmounts& amounts, const tAmounts& left) {
        object.BeginList(key);
        for (const auto& [article, count] : amounts) {
            JSON::tRecord entry = {{"library", article.first}, {"number", article.second}, {"count", count}};
            if (const auto found = left.find(article); found != left.end()) {
                entry["left"] = found->second;
            }
            object.Add(entry);
        }
        object.EndList();
    };
    putList("moved", move.moved, move.left);
    putList("missing", move.missing, {});
    return object.Take() + "\n";
}

CTable MoveTable(const tMove& move)
{
    CTable table({{"Library"}, {"Number"}, {"Moved", true}, {"Left", true}, {"Missing", true}});
    tAmounts all = move.moved;
    all.insert(move.missing.begin(), move.missing.end());
    const auto find = [](const tAmounts& amounts, const tArticleKey& key) {
        const auto found = amounts.find(key);
        return std::to_string(found != amounts.end() ? found->second : 0);
    };
    for (const auto& [key, count] : all) {
        table.AddRow({key.first, key.second, find(move.moved, key), find(move.left, key), find(move.missing, key)});
    }
    return table;
}

int Move(const tStockOptions& options)
{
    tBatchOptions quiet = options;
    quiet.paths.clear();
    CBatch batch(quiet);
    if (const std::optional<int> status =
            batch.Begin([](tWorkerSettings& settings) { settings.tellsStockFile = true; })) {
        return *status;
    }
    if (batch.CannotServe()) {
        return kExitFailed; // which has been said
    }
    tMove move;
    move.file = options.paths.empty() ? StockBalance::FindUsersFile(batch) : options.paths[0];
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    CJSONLines* const linesOrNone = options.format == "json" ? &lines : nullptr;
    CDescriptor file;
    std::string problem = Lock(move.file, !options.put.empty(), file);
    std::string before = kEmptyStock;
    problem = problem.empty() && file.IsOpen() ? ReadAll(file.Get(), before) : problem;
    if (!problem.empty()) {
        tAnswer failed = MakeFailure(eFailure::kLoader, problem);
        failed.failure.loaderCode = 1; // as of any document that cannot be read
        if (linesOrNone != nullptr) {
            lines.WriteFailure(move.file, failed.failure);
        } else {
            COutput::PrintMessage(Escapes::ForTerminal(move.file + ": " + problem));
        }
        return FinishOutput(output, kExitFailed);
    }
    CReport report;
    tAmounts owned;
    if (file.IsOpen()) {
        const auto use = [&report](const tInput&, const tAnswer&, const CReport& answer) { report = answer; };
        const int status = batch.AskBesides({eVerb::kStock}, {move.file}, use, output, linesOrNone);
        if (status != kExitOK) {
            return FinishOutput(output, status);
        }
        StockBalance::Add(move.file, report, owned);
    }
    CStockEdit edit(before, report);
    tAmounts needed;
    int status = AddUp(batch, options.take.empty() ? options.put : options.take, move, needed, output, linesOrNone);
    status = status == kExitOK ? WorkOut(batch, options, needed, owned, edit, move) : status;
    if (status != kExitOK) {
        return FinishOutput(output, status);
    }
    std::string bytes;
    if (move.problem.empty() && (!edit.Write(bytes) || !IsSound(batch, edit, bytes))) {
        move.problem = "is written in an unusual way (not UTF-8, perhaps) and cannot be changed safely; nothing was "
                       "written";
    }
    if (move.problem.empty() && !options.dryRun && bytes != before && !Interrupt::IsRequested()) {
        if (options.paths.empty()) {
            Places::MakeFolderOf(move.file);
        }
        move.problem = Replace(move.file, file, before, bytes);
    }
    if (!move.problem.empty()) { // what would have been moved was not
        move.moved.clear();
        move.left = owned;
    }
    if (linesOrNone != nullptr) {
        lines.WriteLine(MoveJSON(options, move));
    } else if (move.problem.empty() || !move.missing.empty()) {
        const CTable table = MoveTable(move);
        output.Write(Show(options, table));
    }
    output.Flush();
    if (move.withoutLibrary > 0) {
        COutput::PrintMessage(std::to_string(move.withoutLibrary) + " parts belong to no library: no stock holds them");
    }
    if (!move.problem.empty()) {
        COutput::PrintMessage(Escapes::ForTerminal(move.file + ": " + move.problem));
        return FinishOutput(output, kExitFailed);
    }
    if (options.dryRun) {
        COutput::PrintMessage(Escapes::ForTerminal(move.file) + ": nothing was written (--dry-run)");
    }
    return FinishOutput(output, Interrupt::IsRequested() ? kExitInterrupted : kExitOK);
}

int RunStock(const tStockOptions& options)
{
    return options.Moves() ? Move(options) : List(options);
}
} // namespace

const tCommand kStockCommand = {"stock", "List what a stock file holds, take parts out, or put them back",
                                "  velmora stock Stock.xml\n"
                                "  velmora stock --take plan.velmora Stock.xml\n"
                                "  velmora stock --put plan.velmora --dry-run\n",
                                CallCommand<tStockOptions, AddStockOptions, RunStock, CheckStock>};
