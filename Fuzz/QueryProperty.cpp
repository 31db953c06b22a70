#include "CScratchFolder.h"
#include "Properties.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexSearch.h"
#include "protocol/UTF8.h"

#include <algorithm>

/// What a search finds is counted, and its matches lie within the passage, in order.
static std::string Ask(CIndexSearch& query, eSearchOrder order)
{
    int64_t found = 0;
    bool isSound = true;
    query.Find({{}, order, 0, 0}, [&](const tFoundDocument& document) {
        ++found;
        size_t at = 0;
        for (const tPassage::tMatch& match : document.passage.matches) {
            isSound =
                isSound && at <= match.start && match.start < match.end && match.end <= document.passage.text.size();
            at = match.end;
        }
        isSound = isSound && UTF8::IsValid(document.passage.text);
        return true;
    });
    query.Suggest();
    return !isSound                   ? "a match outside of its passage"
           : query.Count({}) != found ? "a search finds other documents than are counted"
                                      : "";
}

std::string Properties::Query(std::string_view input)
{
    static const CScratchFolder sFolder;
    static CIndexDatabase sIndex(sFolder.PathOf("index.db"), CIndexDatabase::eAccess::kWrite);
    const auto store = [](const std::string& text) {
        sIndex.StoreTexts({"/document", {}, {}, {}}, {{}, {}, {}, {}, {}, {}, {}, text}, {1, 2, 3, {{"H0", 1650}}}, 0);
        sIndex.Commit(); // which writes the words that parts are looked for in
    };
    const size_t end = std::min(input.find('\n'), input.size());
    std::string text = UTF8::MakeValid(input.substr(std::min(end + 1, input.size())));
    std::replace(text.begin(), text.end(), '\0', ' ');
    store(text);
    try {
        CIndexSearch query(sIndex, input.substr(0, end), text.size() % 8 == 0);
        if (query.GetQuery().IsGood()) {
            const std::string fault = Ask(query, static_cast<eSearchOrder>(text.size() % 4));
            if (!fault.empty()) {
                return fault;
            }
        }
        std::replace(text.begin(), text.end(), '"', ' ');
        CIndexSearch all(sIndex, "\"" + text + "\"");
        if (all.GetQuery().IsGood() && all.Count({}) != 1) {
            return "a text is not found by itself: " + text;
        }
        store({});
        if (all.GetQuery().IsGood() && all.Count({}) != 0) {
            return "a text is found that is gone: " + text;
        }
    } catch (const std::exception& error) {
        return error.what() + (": " + std::string(input.substr(0, end)));
    }
    return {};
}
