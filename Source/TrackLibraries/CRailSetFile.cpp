// How a track library is read from and written to its file.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "KVUDate/KVUDate.h"
#include "KVUNum/KVUNum.h"
#include "Layers/CLayer.h"
#include "Layers/CLayerNameResolver.h"
#include "Platform/Streams.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/Utilities/ULibraryFiles.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <memory>
#include <new>

namespace {
enum : unsigned short {
    kKeyNumElements = 100,
    kKeyModelScale,
    kKeyContentType,
    kKeyCurrency,
    kKeyGauge,
    kKeyTrackbedWidth,
    kKeyRailWidth,
    kKeyText107,
    kKeyManufacturer,
    kKeyText109,
    kKeyText110,
    kKeyPrefix,
    kKeyText112,
    kKeyText113,
    kKeyCreationDate,
    kKeyModificationDate
};
static_assert(kKeyModificationDate == 115);

constexpr uint32_t kVersion = 2;
/// Widths are stored in tenths of a millimetre.
constexpr double kWidthUnits = 10.0;

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
    unsigned char header[kHeaderSize];
    if (fread(header, sizeof header, 1, file) != 1 || BigEndian::Unsigned32(header) != kMagic) {
        return kNoLibrary;
    }
    if (BigEndian::Unsigned32(header + 4) != kVersion) {
        return kUnsupportedVersion;
    }
    const int count = ReadParameters(file);
    return LoadElements(file, count) ? kLoaded : kElementFailed;
}

int CRailSet::ReadParameters(FILE* file)
{
    tRailSetParameters& to = mParameters;
    CTaggedFile records(file);
    int count = 0;
    records.Read(kKeyNumElements, count);
    records.Read(kKeyModelScale, to.modelScale);
    tRailSetContentType contentType = 0;
    records.Read(kKeyContentType, contentType);
    to.contentType = contentType; // 0 where the file names none, never the default
    records.Read(kKeyCurrency, to.currency);
    // One number for the three: a width that is missing repeats the one before it, a gauge that is missing is 0.
    int tenths = 0;
    records.Read(kKeyGauge, tenths);
    to.gauge = tenths / kWidthUnits;
    records.Read(kKeyTrackbedWidth, tenths);
    to.trackbedWidth = tenths / kWidthUnits;
    records.Read(kKeyRailWidth, tenths);
    to.railWidth = tenths / kWidthUnits;
    records.Read(kKeyText107, to.text107, sizeof to.text107);
    records.Read(kKeyManufacturer, to.manufacturer, sizeof to.manufacturer);
    records.Read(kKeyText109, to.text109, sizeof to.text109);
    records.Read(kKeyText110, to.text110, sizeof to.text110);
    records.Read(kKeyPrefix, to.prefix, sizeof to.prefix);
    records.Read(kKeyText112, to.text112, sizeof to.text112);
    records.Read(kKeyText113, to.text113, sizeof to.text113);
    records.Read(kKeyCreationDate, to.creationDate, sizeof to.creationDate);
    records.Read(kKeyModificationDate, to.modificationDate, sizeof to.modificationDate);
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
    unsigned char header[kHeaderSize];
    BigEndian::StoreUnsigned32(kMagic, header);
    BigEndian::StoreUnsigned32(kVersion, header + 4);
    fwrite(header, sizeof header, 1, file);
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
    const tRailSetParameters& from = mParameters;
    CTaggedFile records(file);
    records.Write(kKeyNumElements, static_cast<int>(mElements.size()));
    records.Write(kKeyModelScale, from.modelScale);
    records.Write(kKeyContentType, from.contentType);
    records.Write(kKeyCurrency, from.currency);
    records.Write(kKeyGauge, KVUNum::d2i(from.gauge * kWidthUnits));
    records.Write(kKeyTrackbedWidth, KVUNum::d2i(from.trackbedWidth * kWidthUnits));
    records.Write(kKeyRailWidth, KVUNum::d2i(from.railWidth * kWidthUnits));
    records.Write(kKeyText107, from.text107);
    records.Write(kKeyManufacturer, from.manufacturer);
    records.Write(kKeyText109, from.text109);
    records.Write(kKeyText110, from.text110);
    records.Write(kKeyPrefix, from.prefix);
    records.Write(kKeyText112, from.text112);
    records.Write(kKeyText113, from.text113);
    records.Write(kKeyCreationDate, from.creationDate);
    records.Write(kKeyModificationDate, from.modificationDate);
}
