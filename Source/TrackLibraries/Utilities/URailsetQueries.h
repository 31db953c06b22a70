// Questions about one track library.
#pragma once

#include "TrackLibraries/Utilities/ULibraryConstants.h"

#include <map>
#include <string>
#include <vector>

class CCompositeGeometry;
class CRailSet;

/// Answers from a library, and texts for choice lists. Nothing is emptied first: results are added to what the caller
/// passes in. Lengths in mm; `unit` is a code of UUnits::eUnit, and an unknown one is fatal as soon as a text is made.
class URailsetQueries {
public:
    URailsetQueries() = delete;

    /// From display text to an element, which its library owns.
    using tElementMap = std::map<std::string, CCompositeGeometry*>;

    /// Loads a library to find out. @return false when it does not load; both outputs are then untouched
    static bool GetModelScaleAndType(const std::string& path, int& modelScale, tRailSetContentType& contentType);
    /// @return true
    static bool GetModelScaleAndType(const CRailSet* library, int& modelScale, tRailSetContentType& contentType);

    /// Elements with track in them, and elements with exactly one piece of it.
    static int GetNumberOfTrackElements(const CRailSet* library);
    static int GetNumberOfSingleTrackElements(const CRailSet* library);

    /// Appends each radius of the library's curves that is not in the list yet, and for each a text such as
    /// "/folder/library,  1:  360.0 mm": path, number from 1 on in this call, radius. Start with two empty lists to
    /// keep them parallel.
    static void GetListOfRadiiInLibrary(const CRailSet* library, int unit, std::vector<double>& radii,
                                        std::vector<std::string>& texts);
    /// Whether an entry is less than 0.001 mm away.
    static bool VectorContainsRadius(double radius, const std::vector<double>& radii);

    /// Adds the library's curves under texts such as "Maker 2221 (R 360.0 mm, 30.0)": manufacturer, product number,
    /// radius, arc angle in degrees. The first element of a text stays.
    static void GetDescriptiveMapOfCurvedTracksInLibrary(const CRailSet* library, int unit, tElementMap& elements);

    /// Adds elements under texts such as "Maker 2205 (940.0 mm)", the last being the longest piece of one article.
    /// Meant as it is: elements WITH a flexible track are passed over, and any other whose first track is not flexible
    /// is fatal. So an ordinary library, one with a straight track in it, ends the process; use
    /// UElementInspector::HasFlexComponent to list flexible tracks.
    static void GetFlexTracks(const CRailSet* library, int unit, tElementMap& elements);
};
