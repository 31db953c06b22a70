// A track library: the catalogue of one product line.
#pragma once

#include "TrackLibraries/Utilities/ULibraryConstants.h"
#include "UnitLength/URailConstants.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

class CCompositeGeometry;

/// What holds for a whole library. Lengths in mm; stored to a tenth of one. Texts are zero-terminated Mac OS Roman; the
/// numbered ones bear the key of their record and are only carried.
struct tRailSetParameters {
    int modelScale = URailConstants::kScaleDefault;
    int currency = 129;
    tRailSetContentType contentType = ULibraryConstants::kContentTracks;
    double gauge = 16.5;
    double railWidth = URailConstants::GetDefaultRailWidth(URailConstants::kScaleDefault);
    double trackbedWidth = 33.0; ///< twice the gauge
    char text107[128] = "-";
    char manufacturer[128] = "-";
    char text109[256] = "";
    char text110[256] = "";
    char creationDate[32] = "-";
    char modificationDate[32] = "-"; ///< of the last save
    char prefix[8] = "";             ///< of product numbers; every element gets it
    char text113[256] = "-";
    char text112[512] = "-";
};

/// A library and the file that it is bound to. Its articles are elements whose name is the product number;
/// it owns them.
class CRailSet {
public:
    /// What Load answers.
    enum eLoadResult : int {
        kLoaded = 0,
        kElementFailed = 1,
        kCannotOpen = 2,
        kNoLibrary = 3,
        kUnsupportedVersion = 4
    };

    /// An empty library bound to a path; nothing is read.
    /// @param path  bytes of the file system, as Platform::CInputFile takes them
    explicit CRailSet(const std::string& path) : mPath(path) {}
    CRailSet(const CRailSet&) = delete;
    CRailSet& operator=(const CRailSet&) = delete;
    /// Destroys the elements, last first. A null element is fatal.
    ~CRailSet();

    /// Reads the file and appends its elements, so a library is loaded once. What was read before a fault stays. The
    /// elements take over the library's name, prefix, currency, scale and widths; they lie on no layer, whatever the
    /// file says.
    /// @return kLoaded; kElementFailed when an element before the last is damaged or missing (a damaged last one is
    ///         only left out); kCannotOpen, also when the system fails to read it; kNoLibrary for another magic and
    ///         files shorter than their header; kUnsupportedVersion for any version but 2. The last three leave the
    ///         library as it was.
    int Load();
    /// Writes the file, whole or not at all. Sets the modification date and every element's library name, which is the
    /// name of the file.
    /// @return false when the file cannot be opened (then nothing is set) or not written whole; an old file then stays
    bool Save();

    size_t GetSize() const { return mElements.size(); }
    /// @return the element, or null for an index outside the list
    CCompositeGeometry* GetGeometryAtIndex(size_t index) const
    {
        return index < mElements.size() ? mElements[index] : nullptr;
    }
    /// The elements in file order.
    const std::vector<CCompositeGeometry*>& GetGeometries() const { return mElements; }
    std::vector<CCompositeGeometry*>& GetGeometries() { return mElements; }
    /// @return the last element of that name (byte for byte), or null
    CCompositeGeometry* FindGeometry(std::string_view name) const;
    /// Appends an element and owns it from then on.
    void Append(CCompositeGeometry* element) { mElements.push_back(element); }
    /// Takes an element out; the caller owns it then. @return false when it is not in the library
    bool Remove(CCompositeGeometry* element);
    /// Appends copies of another library's elements, whatever their names.
    void ImportRailset(const CRailSet* other);
    /// For each element of another library, gives its description to the last one of the same name here whose
    /// description differs, if any.
    /// @param dryRun  only count
    /// @return how many descriptions changed, or would
    int SynchronizeDescriptions(const CRailSet* other, bool dryRun);
    /// How many elements of another library have one of the same name here.
    int GetNumberOfSyncableElements(const CRailSet* other) const;

    /// Cut to 31 characters; a null text changes nothing.
    void SetCreationDate(const char* date);
    void SetCreationDateToNow();

    int GetModelScale() const { return mParameters.modelScale; }
    tRailSetContentType GetContentType() const { return mParameters.contentType; }
    double GetTrackbedWidth() const { return mParameters.trackbedWidth; }
    double GetRailWidth() const { return mParameters.railWidth; }
    const char* GetManufacturer() const { return mParameters.manufacturer; }
    /// The path of the file.
    const std::string& GetFilename() const { return mPath; }
    /// Everything that holds for the whole library. Changing it does not change the elements.
    const tRailSetParameters& GetParameters() const { return mParameters; }
    tRailSetParameters& GetParameters() { return mParameters; }

private:
    /// @return the number of elements that the file promises, not negative
    int ReadParameters(FILE* file);
    void WriteParameters(FILE* file) const;
    /// @return false when an element before the last failed
    bool LoadElements(FILE* file, int count);
    /// Makes an element that was just loaded one of this library.
    void Adapt(CCompositeGeometry* element, const std::string& libraryName) const;

    std::vector<CCompositeGeometry*> mElements;
    std::string mPath;
    tRailSetParameters mParameters;
};
