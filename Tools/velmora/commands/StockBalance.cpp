#include "commands/StockBalance.h"

#include "ExitCodes.h"
#include "Places.h"
#include "input/LibraryFiles.h"
#include "output/Escapes.h"
#include "protocol/NamelessFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <unistd.h>

namespace {
/// Wrong counts of a file that are named one by one.
constexpr size_t kMostNamed = 10;

constexpr long long kMostCount = std::numeric_limits<int>::max();

/// Amounts as a worker takes them. @param only  those of these articles alone
void AppendList(std::string& json, const tAmounts& amounts, const tAmounts& only)
{
    json += '[';
    const char* separator = "";
    for (const auto& [key, count] : amounts) {
        if (only.count(key) > 0) {
            json += separator + nlohmann::json({key.first, key.second, std::clamp(count, 0LL, kMostCount)})
                                    .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
            separator = ",";
        }
    }
    json += ']';
}

bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

/// Takes over the counts that a worker answers. @param most  none may be above @return false for what is no answer
bool TakeCounts(const std::vector<double>& counts, const tAmounts& most, const tAmounts& only, tAmounts& result)
{
    size_t at = 0;
    for (const auto& [key, count] : most) {
        if (only.count(key) == 0) {
            continue;
        }
        if (at >= counts.size() || !(counts[at] >= 0 && counts[at] <= static_cast<double>(std::max(count, 0LL)))) {
            return false;
        }
        result[key] = static_cast<long long>(counts[at++]);
    }
    return at == counts.size();
}
} // namespace

std::string StockBalance::FindUsersFile(const CBatch& batch)
{
    return Places::FindStock(batch.GetGreeting().stockFile);
}

void StockBalance::SayWrongCounts(const std::string& path, const CReport& report)
{
    size_t wrong = 0;
    const std::string name = Escapes::ForTerminal(path);
    report.ForEach("items", [&](const CReport& item) {
        if (item.Has("wrong_count") && ++wrong <= kMostNamed) {
            const long long line = item.GetNumber("line");
            COutput::PrintMessage(name + (line > 0 ? ", line " + std::to_string(line) : "") + ": the count of '" +
                                  Escapes::ForTerminal(item.GetText("number")) +
                                  "' is no whole number from 0 to 2147483647: '" +
                                  Escapes::ForTerminal(item.GetText("wrong_count").substr(0, 40)) + "' is taken as 0");
        }
    });
    if (wrong > kMostNamed) {
        COutput::PrintMessage(name + ": and " + std::to_string(wrong - kMostNamed) +
                              " more wrong counts; 'velmora check' names them");
    }
}

void StockBalance::Add(const std::string& path, const CReport& report, tAmounts& owned)
{
    SayWrongCounts(path, report);
    report.ForEach("items", [&](const CReport& item) {
        long long& count = owned[{item.GetText("library"), item.GetText("number")}];
        count = std::min(count + std::clamp(item.GetNumber("count"), 0LL, kMostCount), kMostCount);
    });
}

int StockBalance::Read(CBatch& batch, const std::string& path, tAmounts& owned)
{
    COutput output(STDOUT_FILENO); // nothing goes there
    return batch.AskBesides(
        {eVerb::kStock}, {path},
        [&](const tInput&, const tAnswer&, const CReport& report) { Add(path, report, owned); }, output, nullptr);
}

int StockBalance::Compare(CBatch& batch, const tAmounts& needed, tAmounts& owned, tAmounts& required)
{
    std::string lists = "[";
    AppendList(lists, needed, needed);
    lists += ',';
    AppendList(lists, owned, needed);
    lists += ']';
    const CDescriptor file = MakeNamelessFile();
    if (!file.IsOpen() || !WriteAll(file.Get(), lists)) {
        COutput::PrintMessage(std::string("the stock cannot be compared: ") + strerror(errno));
        return kExitFailed;
    }
    bool isGood = false;
    COutput output(STDOUT_FILENO); // nothing goes there
    const int status = batch.AskBesides(
        {eVerb::kBalance}, {"/dev/fd/" + std::to_string(file.Get())},
        [&](const tInput&, const tAnswer&, const CReport& report) {
            tAmounts remaining;
            required.clear();
            isGood = TakeCounts(report.GetReals("required"), needed, needed, required) &&
                     TakeCounts(report.GetReals("remaining"), owned, needed, remaining);
            for (const auto& [key, count] : remaining) {
                owned[key] = count;
            }
        },
        output, nullptr);
    if (status == kExitOK && !isGood) {
        COutput::PrintMessage("the stock cannot be compared: the worker's answer is out of form");
        return kExitFailed;
    }
    return status;
}

int KnownLibraries::Read(CBatch& batch, const std::vector<std::string>& given, tArticlesOf& articlesOf, COutput& output,
                         CJSONLines* lines)
{
    const auto use = [&articlesOf](const tInput&, const tAnswer&, const CReport& report) {
        // Names may also be the same once the core has turned them into what layouts hold: the first counts then.
        const auto [library, isFirst] = articlesOf.try_emplace(report.GetText("name"));
        if (isFirst) {
            report.ForEach("articles", [&known = library->second](const CReport& article) {
                known.insert(article.GetText("number"));
            });
        }
    };
    const std::vector<std::string> paths = LibraryFiles::Find(given);
    return paths.empty() ? static_cast<int>(kExitOK) : batch.AskBesides({eVerb::kLibrary}, paths, use, output, lines);
}
