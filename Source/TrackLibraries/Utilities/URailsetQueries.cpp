#include "TrackLibraries/Utilities/URailsetQueries.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/CErr.h"
#include "Elements/Utilities/UElementInspector.h"
#include "KVUNum/KVUNum.h"
#include "TrackLibraries/CRailSet.h"
#include "UnitLength/UUnits.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <set>

namespace {
/// Radii closer than this, in mm, are the same.
constexpr double kRadiusTolerance = 0.001;

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

std::string Format(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = vsnprintf(nullptr, 0, format, arguments);
    std::string text(static_cast<size_t>(std::max(length, 0)) + 1, '\0'); // with room for the zero
    vsnprintf(text.data(), text.size(), format, again);
    va_end(again);
    va_end(arguments);
    text.pop_back();
    return text;
}

const CCurveBIG* CurveOf(const CCompositeGeometry* element, const char* function)
{
    const auto* curve = dynamic_cast<const CCurveBIG*>(element->GetFirstTrackBIG());
    CErr::CheckNull(curve, function, "No curve component found in geometry?");
    return curve;
}

/// Radii in order, so that a library of very many is not compared each with each.
class CKnownRadii {
public:
    explicit CKnownRadii(const std::vector<double>& radii)
    {
        for (const double radius : radii) {
            Add(radius);
        }
    }

    void Add(double radius)
    {
        if (!std::isnan(radius)) { // equal to nothing, and without a place in the order
            mRadii.insert(radius);
        }
    }

    bool Contains(double radius) const
    {
        const auto above = mRadii.lower_bound(radius);
        return (above != mRadii.end() && KVUNum::DeltaEquals(*above, radius, kRadiusTolerance)) ||
               (above != mRadii.begin() && KVUNum::DeltaEquals(*std::prev(above), radius, kRadiusTolerance));
    }

private:
    std::set<double> mRadii;
};
} // namespace

bool URailsetQueries::GetModelScaleAndType(const std::string& path, int& modelScale, tRailSetContentType& contentType)
{
    CRailSet library(path);
    return library.Load() == CRailSet::kLoaded && GetModelScaleAndType(&library, modelScale, contentType);
}

bool URailsetQueries::GetModelScaleAndType(const CRailSet* library, int& modelScale, tRailSetContentType& contentType)
{
    modelScale = library->GetModelScale();
    contentType = library->GetContentType();
    return true;
}

int URailsetQueries::GetNumberOfTrackElements(const CRailSet* library)
{
    const auto& elements = library->GetGeometries();
    return static_cast<int>(std::count_if(elements.begin(), elements.end(), &UElementInspector::IsTrackElement));
}

int URailsetQueries::GetNumberOfSingleTrackElements(const CRailSet* library)
{
    const auto& elements = library->GetGeometries();
    return static_cast<int>(std::count_if(elements.begin(), elements.end(), &UElementInspector::IsSingleTrackElement));
}

void URailsetQueries::GetListOfRadiiInLibrary(const CRailSet* library, int unit, std::vector<double>& radii,
                                              std::vector<std::string>& texts)
{
    CKnownRadii known(radii);
    int number = 0;
    BOOST_FOREACH(const CCompositeGeometry* element, library->GetGeometries()) {
        if (!UElementInspector::IsCurvedTrack(element)) {
            continue;
        }
        const double radius = CurveOf(element, "static void URailsetQueries::GetListOfRadiiInLibrary(const CRailSet *, "
                                               "int, vector<double> &, vector<string> &)")
                                  ->GetItemRadius();
        if (known.Contains(radius)) {
            continue;
        }
        known.Add(radius);
        radii.push_back(radius);
        ++number;
        texts.push_back(Format("%s, %2d:  %s", library->GetFilename().c_str(), number,
                               UUnits::BuildMeasureUnitString(unit, radius)));
    }
}

bool URailsetQueries::VectorContainsRadius(double radius, const std::vector<double>& radii)
{
    return std::any_of(radii.begin(), radii.end(),
                       [radius](double other) { return KVUNum::DeltaEquals(radius, other, kRadiusTolerance); });
}

void URailsetQueries::GetDescriptiveMapOfCurvedTracksInLibrary(const CRailSet* library, int unit, tElementMap& elements)
{
    BOOST_FOREACH(CCompositeGeometry* element, library->GetGeometries()) {
        if (!UElementInspector::IsCurvedTrack(element)) {
            continue;
        }
        const CCurveBIG* const curve =
            CurveOf(element, "static void URailsetQueries::GetDescriptiveMapOfCurvedTracksInLibrary(const CRailSet *, "
                             "int, map<string, CCompositeGeometry *> &)");
        elements.emplace(Format("%s %s (R %s, %.1f)", element->GetManufacturer(), element->GetName(),
                                UUnits::BuildMeasureUnitString(unit, curve->GetItemRadius()), curve->GetItemArcAngle()),
                         element);
    }
}

void URailsetQueries::GetFlexTracks(const CRailSet* library, int unit, tElementMap& elements)
{
    BOOST_FOREACH(CCompositeGeometry* element, library->GetGeometries()) {
        if (UElementInspector::HasFlexComponent(element)) {
            continue;
        }
        const auto* flex = dynamic_cast<const CFlexTrackBIG*>(element->GetFirstTrackBIG());
        CErr::CheckNull(flex,
                        "static void URailsetQueries::GetFlexTracks(const CRailSet *, int, "
                        "map<string, CCompositeGeometry *> &)",
                        "No flex component found in geometry?");
        elements.emplace(Format("%s %s (%s)", element->GetManufacturer(), element->GetName(),
                                UUnits::BuildMeasureUnitString(unit, flex->GetFlexTrackMaxLength())),
                         element);
    }
}
