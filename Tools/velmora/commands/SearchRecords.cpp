#include "commands/SearchRecords.h"

#include "index/CIndexDatabase.h"
#include "output/Escapes.h"
#include "protocol/UTF8.h"

#include <ctime>

static void PutPassage(JSON::tRecord& record, const tPassage& passage)
{
    record["passage"] = passage.text;
    JSON::tRecord& matches = record["matches"] = JSON::tRecord::array();
    size_t at = 0;
    size_t characters = 0;
    for (const tPassage::tMatch& match : passage.matches) {
        const std::string_view text = passage.text;
        characters += UTF8::CountCharacters(text.substr(at, match.start - at));
        const size_t length = UTF8::CountCharacters(text.substr(match.start, match.end - match.start));
        JSON::tRecord one;
        one["field"] = passage.field;
        one["offset"] = characters;
        one["length"] = length;
        matches.push_back(std::move(one));
        characters += length;
        at = match.end;
    }
}

/// A second of a clock without a time zone.
static std::string ClockTime(int64_t second)
{
    const auto time = static_cast<time_t>(second);
    tm parts = {};
    char text[64] = "";
    if (gmtime_r(&time, &parts) != nullptr) {
        strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    }
    return text;
}

JSON::tRecord SearchRecords::Make(const tFoundDocument& found, bool isReachable)
{
    static constexpr const char* kMatches[] = {"word", "beginning", "part"};
    JSON::tRecord record;
    JSON::PutPath(record, "path", found.path);
    record["ok"] = true;
    record["author"] = found.author;
    record["description"] = found.description;
    record["revision"] = found.revision;
    PutPassage(record, found.passage);
    if (found.isRanked) {
        record["match"] = kMatches[static_cast<size_t>(found.match)];
        record["score"] = found.score;
    }
    record["size"] = found.size;
    const auto put = [&record](const char* name, const std::optional<int64_t>& value) {
        record[name] = value ? JSON::tRecord(*value) : JSON::tRecord(nullptr);
    };
    put("modified", found.modified);
    record["created"] = found.created ? JSON::tRecord(ClockTime(*found.created)) : JSON::tRecord(nullptr);
    put("elements", found.elements);
    constexpr double kMillimetres = 1000;
    record["tracks"] = found.tracks ? JSON::tRecord(static_cast<double>(*found.tracks) / kMillimetres) : nullptr;
    record["gauges"] = found.gauges;
    record["reachable"] = isReachable;
    return record;
}

std::string SearchRecords::DescribeMistake(const CQuery& query, const std::string& text)
{
    return query.IsGood() ? std::string()
                          : "the query is wrong at character " + std::to_string(query.GetColumn()) + ": " +
                                query.GetMessage() + "\n  " + Escapes::ForTerminal(text);
}

std::string SearchRecords::Answer(CIndexDatabase& index, const tSearchQuestion& question,
                                  const std::function<bool(JSON::tRecord&)>& use)
{
    CIndexSearch search(index, question.query, question.wholeWords);
    if (!search.GetQuery().IsGood()) {
        return DescribeMistake(search.GetQuery(), question.query);
    }
    search.Find(question.wish, [&](const tFoundDocument& found) {
        JSON::tRecord record = Make(found, index.IsReachable(found.path));
        return use(record);
    });
    return {};
}
