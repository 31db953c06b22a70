#include "BuildingBlocks/CCompositeGeometry.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "KVUDate/KVUDate.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Platform/MacRoman.h"
#include "Requests.h"
#include "UnitLength/URailConstants.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
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

/// When a document says it was made, see tFigures.
uint32_t SecondOf(const char* date)
{
    tm time = {};
    const time_t second = KVUDate::Parse(date, time) ? timegm(&time) : 0;
    return second > 0 && second <= std::numeric_limits<uint32_t>::max() ? static_cast<uint32_t>(second) : 0;
}

std::vector<tGauge> GaugesOf(const std::set<int>& scales)
{
    std::vector<tGauge> gauges;
    for (const int scale : scales) {
        if (scale >= URailConstants::kScaleZ && scale <= URailConstants::kScale00) { // files may hold any number
            gauges.push_back({URailConstants::GetModelScaleTxt(scale, true),
                              static_cast<uint32_t>(std::lround(URailConstants::GetModelScaleTW(scale) * 100))});
        }
    }
    return gauges;
}
} // namespace

tAnswer AnswerIndex(const CPlugIn& plugIn, const std::string& contentType, int document)
{
    tAnswer answer = AnswerImport(plugIn, contentType, document);
    if (!answer.ok) {
        return answer;
    }
    answer.verb = eVerb::kIndex;
    CBoundLayout layout;
    const std::string now = layout.GetCreationDate();         // stays where the file has no date
    const int code = layout.Load(PathOfDescriptor(document)); // fails after the importer could: a bad disk, or a change
    if (code != CLayout::kLoaded) {
        return MakeLoadFailure(code, layout.GetElements().size(), document);
    }
    CNameList libraries;
    CNameList articles;
    std::set<int> scales;
    double length = 0;
    BOOST_FOREACH(CCompositeGeometry* element, layout.GetElements()) {
        if (element->HasRailSetName()) {
            libraries.Add(element->GetRailSetName());
        }
        if (UElementStatistics::ElementIsDisplayedInPartlist(element)) {
            articles.Add(element->GetName());
        }
        if (UElementInspector::IsTrackElement(element)) {
            scales.insert(element->GetModelScale());
        }
        length += element->GetTrackLength();
    }
    tFigures& figures = answer.figures;
    figures.created = layout.GetCreationDate() != now ? SecondOf(layout.GetCreationDate()) : 0;
    figures.elements = static_cast<uint32_t>(layout.GetElements().size());
    constexpr double kMost = std::numeric_limits<uint32_t>::max();
    figures.tracks = length > 0 ? static_cast<uint32_t>(std::min(std::round(length), kMost)) : 0; // also for no number
    figures.gauges = GaugesOf(scales);
    answer.libraries = libraries.Take();
    answer.articles = articles.Take();
    return answer;
}
