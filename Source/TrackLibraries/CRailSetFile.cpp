// How a track library is read from and written to its file.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CTaggedFile/DocumentHeader.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Formats/LibraryFormat.h"
#include "KVUDate/KVUDate.h"
#include "KVUNum/KVUNum.h"
#include "Layers/CLayer.h"
#include "Layers/CLayerNameResolver.h"
#include "Platform/Streams.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/Utilities/ULibraryFiles.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>

namespace {
/// Widths are stored in tenths of a millimetre.
constexpr double kWidthUnits = 10.0;

// Parameters in the order of their records.
template <typename tParameters>
auto CodeFields(tParameters& parameters)
{
    return std::tie(parameters.modelScale, parameters.contentType, parameters.currency);
}

constexpr double tRailSetParameters::*kWidths[] = {&tRailSetParameters::gauge, &tRailSetParameters::trackbedWidth,
                                                   &tRailSetParameters::railWidth};
static_assert(std::size(kWidths) == std::size(LibraryFormat::kWidths));

template <typename tParameters>
auto TextFields(tParameters& parameters)
{
    return std::tie(parameters.text107, parameters.manufacturer, parameters.text109, parameters.text110,
                    parameters.prefix, parameters.text112, parameters.text113, parameters.creationDate,
                    parameters.modificationDate);
}

constexpr char kLoadFunction[] = "int CRailSet::Load()";

/// Knows no layer, while it lives, in place of whatever resolver is installed: the layers of a layout that happens to
/// be open are none of a library's business, and without any resolver an element with a layer name would be fatal.
class CNoLayersMeanwhile : public CLayerNameResolver {
public:
    CNoLayersMeanwhile() : mInstalled(CLayer::GetLayerNameResolver()) { CLayer::ConfigureLayerNameResolver(this); }
    CNoLayersMeanwhile(const CNoLayersMeanwhile&) = delete;
    CNoLayersMeanwhile& operator=(const CNoLayersMeanwhile&) = delete;
    ~CNoLayersMeanwhile() override { CLayer::ConfigureLayerNameResolver(mInstalled); }

    CLayer* GetLayer(const char* /*name*/) override { return nullptr; }

private:
    CLayerNameResolver* mInstalled;
};
} // namespace

int CRailSet::Load()
{
    const Platform::CInputFile input(mPath);
    FILE* file = input.Get();
    if (file == nullptr) {
        ULog::Warn("%s: Failed to open library at '%s'", kLoadFunction, mPath.c_str());
        return kCannotOpen;
    }
    tDocumentHeader header;
    if (!header.Read(file) || header.magic != LibraryFormat::kMagic) {
        return input.HasFailed() ? kCannotOpen : kNoLibrary;
    }
    if (header.version != LibraryFormat::kVersion) {
        return kUnsupportedVersion;
    }
    const int count = ReadParameters(file);
    const bool whole = LoadElements(file, count);
    return input.HasFailed() ? kCannotOpen : whole ? kLoaded : kElementFailed;
}

int CRailSet::ReadParameters(FILE* file)
{
    CTaggedFile records(file);
    int count = 0;
    records.Read(LibraryFormat::kNumElements.key, count);
    mParameters.contentType = 0; // where the file names none, never the default
    records.ReadTable<LibraryFormat::kCodes>(CodeFields(mParameters));
    // One number for the three: a width that is missing repeats the one before it, a gauge that is missing is 0.
    int tenths = 0;
    for (size_t i = 0; i < std::size(kWidths); ++i) {
        records.Read(LibraryFormat::kWidths[i].key, tenths);
        mParameters.*kWidths[i] = tenths / kWidthUnits;
    }
    records.ReadTable<LibraryFormat::kTexts>(TextFields(mParameters));
    return std::max(count, 0);
}

bool CRailSet::LoadElements(FILE* file, int count)
{
    const CNoLayersMeanwhile noLayers;
    const std::string libraryName = ULibraryFiles::GetLibraryName(mPath);
    while (--count >= 0) {
        std::unique_ptr<CCompositeGeometry> element(new (std::nothrow) CCompositeGeometry);
        CErr::CheckNull(element.get(), kLoadFunction, "Failed to create CCompositeGeometry object");
        std::string message;
        if (!element->Load(file, message)) {
            // The number counts down: it is what is left to read behind the damaged element.
            ULog::Warn("%s - Failed to load element %d: %s", kLoadFunction, count, message.c_str());
            return count <= 0;
        }
        Adapt(element.get(), libraryName);
        Append(element.release());
    }
    return true;
}

void CRailSet::Adapt(CCompositeGeometry* element, const std::string& libraryName) const
{
    element->SetRailSetName(libraryName.c_str());
    element->SetPrefix(mParameters.prefix);
    element->SetCurrency(mParameters.currency);
    element->SetModelScale(mParameters.modelScale);
    BOOST_FOREACH(CBasicGeometry* component, element->GetComponents()) {
        component->SetTrackbedWidth(mParameters.trackbedWidth);
        component->SetRailWidth(mParameters.railWidth);
    }
}

bool CRailSet::Save()
{
    Platform::COutputFile output(mPath);
    FILE* file = output.Get();
    if (file == nullptr) {
        return false;
    }
    tDocumentHeader{LibraryFormat::kMagic, LibraryFormat::kVersion}.Write(file);
    KVUDate::FormatNow(mParameters.modificationDate, sizeof mParameters.modificationDate);
    WriteParameters(file);
    const std::string libraryName = ULibraryFiles::GetLibraryName(mPath);
    BOOST_FOREACH(CCompositeGeometry* element, mElements) {
        CErr::CheckNull(element, "bool CRailSet::Save()", "Invalid element reference in railset");
        element->SetRailSetName(libraryName.c_str());
        element->Save(file);
    }
    return ferror(file) == 0 && output.Commit();
}

void CRailSet::WriteParameters(FILE* file) const
{
    CTaggedFile records(file);
    records.Write(LibraryFormat::kNumElements.key, static_cast<int>(mElements.size()));
    records.WriteTable<LibraryFormat::kCodes>(CodeFields(mParameters));
    for (size_t i = 0; i < std::size(kWidths); ++i) {
        records.Write(LibraryFormat::kWidths[i].key, KVUNum::d2i(mParameters.*kWidths[i] * kWidthUnits));
    }
    records.WriteTable<LibraryFormat::kTexts>(TextFields(mParameters));
}
