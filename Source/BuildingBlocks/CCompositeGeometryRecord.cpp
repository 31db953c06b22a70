// How an element is read from and written to files and raw memory.
#include "BuildingBlocks/BasicGeometries/ComponentKeys.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "KVUByteOrdering/KVUByteOrdering.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"
#include "KVUStr/KVUStr.h"
#include "Layers/CLayer.h"
#include "Platform/Streams.h"
#include "UnitLength/URailConstants.h"
#include "Utilities/Geometry/UReach.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {
enum : unsigned short {
    kKeyPositionX = 200,
    kKeyPositionY = 201,
    kKeyAngle = 202,
    kKeyFillColor = 203,
    kKeySecondColor = 204,
    kKeyFillMode = 205,
    kKeyNumComponents = 206,
    kKeyName = 207,
    kKeyDescription = 208,
    kKeyManufacturer = 209,
    kKeyRailSetName = 210,
    kKeyPrefix = 211,
    kKeyLibraryNumber = 212,
    kKeyPrice = 213,
    kKeyCurrency = 214,
    kKeyModelScale = 215,
    kKeyLibraryFlag = 216,
    kKeyLayerName = 217,
    kKeyPositionZ = 218
};

/// Everything between prefix and layer name in a record of the current version.
constexpr CRecordRun kNumbersBlock({{kKeyLibraryNumber, 4},
                                    {kKeyPrice, 4},
                                    {kKeyCurrency, 4},
                                    {kKeyModelScale, 4},
                                    {kKeyLibraryFlag, 1},
                                    {kKeyPositionX, 8},
                                    {kKeyPositionY, 8},
                                    {kKeyPositionZ, 8},
                                    {CGradeVector::kFirstKey, 8},
                                    {CGradeVector::kFirstKey + 1, 8},
                                    {CGradeVector::kFirstKey + 2, 8},
                                    {CGradeVector::kFirstKey + 3, 8},
                                    {CGradeVector::kFirstKey + 4, 8},
                                    {CGradeVector::kFirstKey + 5, 8},
                                    {CGradeVector::kFirstKey + 6, 8},
                                    {kKeyAngle, 8},
                                    {kKeyFillColor, 6},
                                    {kKeySecondColor, 6},
                                    {kKeyFillMode, 1}});

constexpr uint32_t kMagic = 0x52436967; // "RCig"
constexpr uint32_t kOldestVersion = 3;
/// The version that is written, and the only one with height, grade and layer.
constexpr uint32_t kCurrentVersion = 4;
constexpr size_t kHeaderSize = 8;
/// Components for which room is made before they are seen: a count in a file is only a claim.
constexpr int kMostReserved = 16;
/// An element that was aligned when it was stored may start off (0, 0) by what its doubles lost to seven decimals. To
/// move it by that, mm, would make it creep with every load and save.
constexpr double kStoragePrecision = 5e-7;

constexpr char kLoadFunction[] = "bool CCompositeGeometry::Load(FILE *, string &)";
constexpr char kRawFunction[] = "CCompositeGeometry::CCompositeGeometry(void *)";

void ReadColor(CTaggedFile& records, unsigned short key, RGBColor& color)
{
    KVUByteOrdering::SwapHostToBig(color); // so that a missing record leaves the colour as it was
    records.Read(key, &color, sizeof color);
    KVUByteOrdering::SwapBigToHost(color);
}

void WriteColor(CTaggedFile& records, unsigned short key, RGBColor color)
{
    KVUByteOrdering::SwapHostToBig(color);
    records.Write(key, &color, sizeof color);
}
} // namespace

bool CCompositeGeometry::Load(FILE* file, std::string& error)
{
    unsigned char header[kHeaderSize];
    if (Platform::ReadUnlocked(file, header, sizeof header) != sizeof header ||
        BigEndian::Unsigned32(header) != kMagic) {
        error = "Element expected, bad header found.";
        return false;
    }
    const uint32_t storedVersion = BigEndian::Unsigned32(header + 4);
    // Every version above the current one reads alike; the signed form is what the readers below take.
    const int version = static_cast<int>(std::min(storedVersion, kCurrentVersion + 1));
    if (storedVersion < kOldestVersion) {
        ULog::Warn("%s: Unsupported file format (version %d)", kLoadFunction, version);
        return false;
    }
    int count = 0;
    ReadCompositeParameter(file, version, count);
    mLayout.secondColor = {0, 0, 0};
    if (!LoadComponents(file, version, count, error)) {
        return false;
    }
    if (!HasRailSetName() && !mComponents.empty() && IsPolygonType(mComponents.front()->GetType()) &&
        (std::strcmp(GetDescription(), "Rectangle") == 0 || std::strcmp(GetDescription(), "Line") == 0)) {
        ULog::Warn("%s: Need replacement for SetPolySubType!", kLoadFunction);
    }
    AlignLoadedComponents();
    return true;
}

void CCompositeGeometry::ReadNumbers(CTaggedFile& records, int version)
{
    records.Read(kKeyLibraryNumber, mLibrary.libraryNumber);
    records.Read(kKeyPrice, mLibrary.price);
    records.Read(kKeyCurrency, mLibrary.currency);
    records.Read(kKeyModelScale, mLibrary.modelScale);
    records.Read(kKeyLibraryFlag, mLibrary.libraryFlag);
    records.Read(kKeyPositionX, mLayout.position.x);
    records.Read(kKeyPositionY, mLayout.position.y);
    if (version == static_cast<int>(kCurrentVersion)) {
        records.Read(kKeyPositionZ, mLayout.position.z);
        mLayout.grade.Load(records, version);
    }
    records.Read(kKeyAngle, mLayout.angle);
    ReadColor(records, kKeyFillColor, mLayout.fillColor);
    ReadColor(records, kKeySecondColor, mLayout.secondColor);
    records.Read(kKeyFillMode, mLayout.fillMode);
}

void CCompositeGeometry::DecodeNumbers(const unsigned char* block)
{
    const auto data = [block](size_t record) { return block + kNumbersBlock.GetDataOffset(record); };
    const auto number = [&data](size_t record) { return BigEndian::FixedPoint(data(record)); };
    mLibrary.libraryNumber = BigEndian::Signed32(data(0));
    mLibrary.price = BigEndian::Signed32(data(1));
    mLibrary.currency = BigEndian::Signed32(data(2));
    mLibrary.modelScale = BigEndian::Signed32(data(3));
    mLibrary.libraryFlag = *data(4) != 0;
    mLayout.position.x = number(5);
    mLayout.position.y = number(6);
    mLayout.position.z = number(7);
    mLayout.grade = CGradeVector({number(8), number(9), number(10)}, {number(11), number(12), number(13)}, number(14));
    mLayout.angle = number(15);
    std::memcpy(&mLayout.fillColor, data(16), sizeof mLayout.fillColor);
    KVUByteOrdering::SwapBigToHost(mLayout.fillColor);
    mLayout.fillMode = *data(18) != 0; // 17 is the second colour, which no load keeps
}

bool CCompositeGeometry::ReadCompositeParameter(FILE* file, int version, int& componentCount)
{
    const bool current = version == static_cast<int>(kCurrentVersion);
    CTaggedFile records(file);
    records.Read(kKeyName, mLibrary.name, sizeof mLibrary.name);
    records.Read(kKeyDescription, mLibrary.description, sizeof mLibrary.description);
    records.Read(kKeyManufacturer, mLibrary.manufacturer, sizeof mLibrary.manufacturer);
    records.Read(kKeyRailSetName, mLibrary.railSetName, sizeof mLibrary.railSetName);
    records.Read(kKeyPrefix, mLibrary.prefix, sizeof mLibrary.prefix);
    if (const unsigned char* block = current ? records.TakeRun(kNumbersBlock) : nullptr) {
        DecodeNumbers(block);
    } else {
        ReadNumbers(records, version);
    }
    if (current) {
        char layerName[CLayer::kNameCapacity] = "";
        records.Read(kKeyLayerName, layerName, sizeof layerName);
        mLayout.layer = layerName[0] != 0 ? CLayer::GetLayerByName(layerName) : nullptr;
    }
    records.Read(kKeyNumComponents, componentCount);
    return true;
}

int CCompositeGeometry::ReadComponentTypeCode(FILE* file, int version)
{
    if (version != static_cast<int>(kOldestVersion) && version != static_cast<int>(kCurrentVersion)) {
        return -1;
    }
    CTaggedFile records(file);
    int type = -1;
    records.Read(kKeyType, type);
    return type;
}

bool CCompositeGeometry::LoadComponents(FILE* file, int version, int count, std::string& error)
{
    mComponents.reserve(static_cast<size_t>(std::clamp(count, 0, kMostReserved)));
    const double railWidth = URailConstants::GetDefaultRailWidth(GetModelScale());
    for (int i = 0; i < count; ++i) {
        const int type = ReadComponentTypeCode(file, version);
        if (type < 0) {
            error = "Unsupported component type encountered.";
            ULog::Warn("%s: %s", kLoadFunction, error.c_str());
            return false;
        }
        const tComponentKind* kind = UComponentKinds::Find(type);
        if (kind == nullptr) {
            error = "Failed to open file";
            return false;
        }
        CBasicGeometry* component = kind->makeEmpty().release();
        Adopt(component);
        component->Load(file, version);
        if (!kind->hasJoints) {
            component->DisableJoint(0);
            component->DisableJoint(1);
        }
        component->SetRailWidth(railWidth);
    }
    return true;
}

void CCompositeGeometry::AlignLoadedComponents()
{
    const CPoint corner = CalcLeftTop();
    const double dx = std::fabs(corner.x) > kStoragePrecision ? corner.x : 0.0;
    const double dy = std::fabs(corner.y) > kStoragePrecision ? corner.y : 0.0;
    if (dx != 0.0 || dy != 0.0) {
        MoveComponentsBy(-dx, -dy);
        MoveBy(dx, dy);
    }
}

void CCompositeGeometry::Save(FILE* file)
{
    unsigned char header[kHeaderSize];
    BigEndian::StoreUnsigned32(kMagic, header);
    BigEndian::StoreUnsigned32(kCurrentVersion, header + 4);
    if (fwrite(header, sizeof header, 1, file) != 1) {
        return;
    }
    WriteCompositeParameter(file);
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        component->Save(file);
    }
}

void CCompositeGeometry::WriteCompositeParameter(FILE* file)
{
    CTaggedFile records(file);
    records.Write(kKeyName, mLibrary.name);
    records.Write(kKeyDescription, mLibrary.description);
    records.Write(kKeyManufacturer, mLibrary.manufacturer);
    records.Write(kKeyRailSetName, mLibrary.railSetName);
    records.Write(kKeyPrefix, mLibrary.prefix);
    records.Write(kKeyLibraryNumber, mLibrary.libraryNumber);
    records.Write(kKeyPrice, mLibrary.price);
    records.Write(kKeyCurrency, mLibrary.currency);
    records.Write(kKeyModelScale, mLibrary.modelScale);
    records.Write(kKeyLibraryFlag, mLibrary.libraryFlag);
    records.Write(kKeyPositionX, mLayout.position.x);
    records.Write(kKeyPositionY, mLayout.position.y);
    records.Write(kKeyPositionZ, mLayout.position.z);
    mLayout.grade.Save(records);
    records.Write(kKeyAngle, mLayout.angle);
    WriteColor(records, kKeyFillColor, mLayout.fillColor);
    WriteColor(records, kKeySecondColor, mLayout.secondColor);
    records.Write(kKeyFillMode, mLayout.fillMode);
    records.Write(kKeyLayerName, mLayout.layer != nullptr ? mLayout.layer->GetName() : "");
    records.Write(kKeyNumComponents, static_cast<int>(mComponents.size()));
}

CCompositeGeometry::CCompositeGeometry(void* raw) : CCompositeGeometry()
{
    char* cursor = static_cast<char*>(raw);
    std::memcpy(static_cast<void*>(&mLibrary), cursor, offsetof(tLibraryItemAttributes, libraryFlag));
    mLibrary.libraryFlag = cursor[offsetof(tLibraryItemAttributes, libraryFlag)] != 0;
    // A block may come from anywhere: its texts end where their fields do.
    mLibrary.name[sizeof mLibrary.name - 1] = 0;
    mLibrary.description[sizeof mLibrary.description - 1] = 0;
    mLibrary.manufacturer[sizeof mLibrary.manufacturer - 1] = 0;
    mLibrary.railSetName[sizeof mLibrary.railSetName - 1] = 0;
    mLibrary.prefix[sizeof mLibrary.prefix - 1] = 0;
    const void* field = cursor + sizeof mLibrary;
    for (CPoint* point : {&mLayout.position, &mLayout.secondReferencePoint}) {
        field = UReach::Fetch(field, point->x);
        field = UReach::Fetch(field, point->y);
        field = UReach::Fetch(field, point->z);
    }
    field = KVURawMem::FetchDataFromRawMem(field, mLayout.zOrder);
    field = UReach::Fetch(field, mLayout.angle);
    field = KVURawMem::FetchDataFromRawMem(field, mLayout.fillColor);
    field = KVURawMem::FetchDataFromRawMem(field, mLayout.secondColor);
    field = KVURawMem::FetchDataFromRawMem(field, mLayout.displayFlag);
    field = KVURawMem::FetchDataFromRawMem(field, mLayout.fillMode);
    char layerName[CLayer::kNameCapacity];
    KVURawMem::FetchDataFromRawMem(field, layerName, sizeof layerName);
    layerName[sizeof layerName - 1] = 0;
    mLayout.layer = layerName[0] != 0 ? CLayer::GetLayerByName(layerName) : nullptr;
    cursor += kRawSizeBeforeGrade;
    mLayout.grade = CGradeVector(static_cast<const void*>(cursor));
    cursor += mLayout.grade.GetParameterRawSize();
    int count = 0;
    KVURawMem::FetchDataFromRawMem(static_cast<const void*>(cursor), count);
    cursor += sizeof count;
    for (int i = 0; i < count; ++i) {
        int type = 0;
        KVURawMem::FetchDataFromRawMem(static_cast<const void*>(cursor), type);
        cursor += sizeof type;
        const tComponentKind* kind = UComponentKinds::Find(type);
        if (kind == nullptr) {
            ULog::Warn("%s: Copy/Paste operation failed due to an unknown component type (0x%04X).", kRawFunction,
                       static_cast<unsigned>(type));
            return;
        }
        std::unique_ptr<CBasicGeometry> component = kind->makeFromRaw(cursor);
        const int size = component->GetParameterRawSize() - CBasicGeometry::kTypeCodeSize;
        AppendOrDrop(std::move(component));
        CErr::CheckNull(mComponents.empty() ? nullptr : mComponents.back(), kRawFunction, "Failed to fetch last BIG");
        cursor += size;
    }
}

bool CCompositeGeometry::MeasureRawRecord(const void* raw, size_t available, size_t& size)
{
    CRawWalk walk(raw, available);
    int count = 0;
    if (!walk.Skip(kRawSizeBeforeGrade + CGradeVector::kRawSize) || !walk.Read(count) || count < 0) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        int type = 0;
        const tComponentKind* kind = walk.Read(type) ? UComponentKinds::Find(type) : nullptr;
        if (kind == nullptr || !kind->skipRaw(walk)) {
            return false;
        }
    }
    size = walk.GetPosition();
    return true;
}

void* CCompositeGeometry::GetParameterAsRaw(void* destination)
{
    // Byte by byte so that the filler behind the flag is the same whatever lay in memory.
    tLibraryItemAttributes library;
    std::memset(static_cast<void*>(&library), 0, sizeof library);
    std::memcpy(static_cast<void*>(&library), &mLibrary, offsetof(tLibraryItemAttributes, libraryFlag));
    library.libraryFlag = mLibrary.libraryFlag;
    destination = KVURawMem::AppendDataToRawMem(destination, reinterpret_cast<const char*>(&library), sizeof library);
    for (const CPoint* point : {&mLayout.position, &mLayout.secondReferencePoint}) {
        destination = KVURawMem::AppendDataToRawMem(destination, point->x);
        destination = KVURawMem::AppendDataToRawMem(destination, point->y);
        destination = KVURawMem::AppendDataToRawMem(destination, point->z);
    }
    destination = KVURawMem::AppendDataToRawMem(destination, mLayout.zOrder);
    destination = KVURawMem::AppendDataToRawMem(destination, mLayout.angle);
    destination = KVURawMem::AppendDataToRawMem(destination, mLayout.fillColor);
    destination = KVURawMem::AppendDataToRawMem(destination, mLayout.secondColor);
    destination = KVURawMem::AppendDataToRawMem(destination, mLayout.displayFlag);
    destination = KVURawMem::AppendDataToRawMem(destination, mLayout.fillMode);
    char layerName[CLayer::kNameCapacity] = "";
    if (mLayout.layer != nullptr) {
        KVUStr::strncpy(layerName, mLayout.layer->GetName(), sizeof layerName);
    }
    destination = KVURawMem::AppendDataToRawMem(destination, layerName, sizeof layerName);
    destination = mLayout.grade.GetParameterAsRaw(destination);
    destination = KVURawMem::AppendDataToRawMem(destination, static_cast<int>(mComponents.size()));
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        destination = component->GetParameterAsRaw(destination);
    }
    return destination;
}

int CCompositeGeometry::GetParameterRawSize()
{
    int size = kRawSizeBeforeGrade + mLayout.grade.GetParameterRawSize() + static_cast<int>(sizeof(int));
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        size += component->GetParameterRawSize();
    }
    return size;
}
