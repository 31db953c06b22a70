#include "CScratchFolder.h"
#include "Properties.h"
#include "index/CIndexDatabase.h"
#include "index/CQuery.h"
#include "protocol/UTF8.h"

#include <algorithm>

std::string Properties::Query(std::string_view input)
{
    static const CScratchFolder sFolder;
    static CIndexDatabase sIndex(sFolder.PathOf("index.db"), CIndexDatabase::eAccess::kWrite);
    const auto store = [](const std::string& text) {
        sIndex.StoreTexts({"/document", {}, {}, {}}, {{}, {}, {}, {}, {}, {}, {}, text}, 0);
    };
    const auto hasWords = [](std::string_view text) { return sIndex.HasWords(text); };
    const size_t end = std::min(input.find('\n'), input.size());
    std::string text = UTF8::MakeValid(input.substr(std::min(end + 1, input.size())));
    std::replace(text.begin(), text.end(), '\0', ' ');
    store(text);
    const CQuery query(input.substr(0, end), hasWords);
    if (query.IsGood() == query.GetExpression().empty()) {
        return "a query that is neither good nor wrong";
    }
    std::replace(text.begin(), text.end(), '"', ' ');
    const CQuery all("\"" + text + "\"", hasWords);
    try {
        if (query.IsGood()) {
            sIndex.Search(query.GetExpression(), {}, 3, [](const tFoundDocument&) { return true; });
        }
        if (all.IsGood() && sIndex.Count(all.GetExpression(), {}) != 1) {
            return "a text is not found by itself: " + text;
        }
        store({});
        if (all.IsGood() && sIndex.Count(all.GetExpression(), {}) != 0) {
            return "a text is found that is gone: " + text;
        }
    } catch (const std::exception& error) {
        return error.what() + (": " + query.GetExpression());
    }
    return {};
}
