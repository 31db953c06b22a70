#include "BuildingBlocks/CCompositeGeometry.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Platform/MacRoman.h"
#include "Requests.h"

#include <boost/foreach.hpp>

#include <string_view>
#include <unordered_set>

namespace {
/// Names as a layout's elements spell them, each kept once.
class CNameList {
public:
    /// @param macRoman  belongs to an element, which lives as long as this
    void Add(const char* macRoman)
    {
        if (macRoman != nullptr && *macRoman != 0 && mKnown.insert(macRoman).second) {
            mNames.push_back(Platform::MacRomanToUtf8(macRoman));
        }
    }

    std::vector<std::string> Take() { return std::move(mNames); }

private:
    std::unordered_set<std::string_view> mKnown;
    std::vector<std::string> mNames;
};
} // namespace

tAnswer AnswerIndex(const CPlugIn& plugIn, const std::string& contentType, int document)
{
    tAnswer answer = AnswerImport(plugIn, contentType, document);
    if (!answer.ok) {
        return answer;
    }
    answer.verb = eVerb::kIndex;
    CBoundLayout layout;
    const int code = layout.Load(PathOfDescriptor(document)); // fails after the importer could: a bad disk, or a change
    if (code != CLayout::kLoaded) {
        return MakeLoadFailure(code, layout.GetElements().size(), document);
    }
    CNameList libraries;
    CNameList articles;
    BOOST_FOREACH(CCompositeGeometry* element, layout.GetElements()) {
        if (element->HasRailSetName()) {
            libraries.Add(element->GetRailSetName());
        }
        if (UElementStatistics::ElementIsDisplayedInPartlist(element)) {
            articles.Add(element->GetName());
        }
    }
    answer.libraries = libraries.Take();
    answer.articles = articles.Take();
    return answer;
}
