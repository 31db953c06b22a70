// How an element is read from and written to files and raw memory.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CFieldStream.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CTaggedFile/DocumentHeader.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Formats/ComponentFormat.h"
#include "Formats/ElementFormat.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"
#include "KVUStr/KVUStr.h"
#include "Layers/CLayer.h"
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
/// The size of raw memory that is trusted to be whole.
constexpr size_t kUnlimited = SIZE_MAX;
/// Components for which room is made before they are seen: a count in a file is only a claim.
constexpr int kMostReserved = 16;
/// An element that was aligned when it was stored may start off (0, 0) by what its doubles lost to seven decimals. To
/// move it by that, mm, would make it creep with every load and save.
constexpr double kStoragePrecision = 5e-7;

constexpr char kLoadFunction[] = "bool CCompositeGeometry::Load(FILE *, string &)";
constexpr char kRawFunction[] = "CCompositeGeometry::CCompositeGeometry(void *)";

// Attributes in the order of their records.
auto TextFields(tLibraryItemAttributes& library)
{
    return std::tie(library.name, library.description, library.manufacturer, library.railSetName, library.prefix);
}

auto NumberFields(tLibraryItemAttributes& library, CPoint& position)
{
    return std::tie(library.libraryNumber, library.price, library.currency, library.modelScale, library.libraryFlag,
                    position.x, position.y, position.z);
}

auto PlacementFields(tLayoutItemAttributes& layout)
{
    return std::tie(layout.angle, layout.fillColor, layout.secondColor, layout.fillMode);
}
} // namespace

bool CCompositeGeometry::Load(FILE* file, std::string& error)
{
    tDocumentHeader header;
    if (!header.Read(file) || header.magic != ElementFormat::kMagic) {
        error = "Element expected, bad header found.";
        return false;
    }
    // Every version above the current one reads alike; the signed form is what the readers below take.
    const int version = static_cast<int>(std::min<uint32_t>(header.version, ElementFormat::kCurrentVersion + 1));
    if (version < ElementFormat::kOldestVersion) {
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

bool CCompositeGeometry::ReadCompositeParameter(FILE* file, int version, int& componentCount)
{
    const bool current = version == ElementFormat::kCurrentVersion;
    // Above the current version there are only the records of the oldest one.
    const int recordsOf = current ? version : ElementFormat::kOldestVersion;
    CTaggedFile records(file);
    records.ReadTable<ElementFormat::kTexts>(TextFields(mLibrary));
    records.ReadTable<ElementFormat::kNumbers>(NumberFields(mLibrary, mLayout.position), recordsOf);
    mLayout.grade.Load(records, version);
    records.ReadTable<ElementFormat::kPlacement>(PlacementFields(mLayout));
    if (current) {
        char layerName[CLayer::kNameCapacity] = "";
        records.Read(ElementFormat::kLayerName.key, layerName, sizeof layerName);
        mLayout.layer = layerName[0] != 0 ? CLayer::GetLayerByName(layerName) : nullptr;
    }
    records.Read(ElementFormat::kNumComponents.key, componentCount);
    return true;
}

int CCompositeGeometry::ReadComponentTypeCode(FILE* file, int version)
{
    if (version < ElementFormat::kOldestVersion || version > ElementFormat::kCurrentVersion) {
        return -1;
    }
    CTaggedFile records(file);
    int type = -1;
    records.Read(ComponentFormat::kType.key, type);
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
    if (!tDocumentHeader{ElementFormat::kMagic, ElementFormat::kCurrentVersion}.Write(file)) {
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
    records.WriteTable<ElementFormat::kTexts>(TextFields(mLibrary));
    records.WriteTable<ElementFormat::kNumbers>(NumberFields(mLibrary, mLayout.position));
    mLayout.grade.Save(records);
    records.WriteTable<ElementFormat::kPlacement>(PlacementFields(mLayout));
    records.Write(ElementFormat::kLayerName.key, mLayout.layer != nullptr ? mLayout.layer->GetName() : "");
    records.Write(ElementFormat::kNumComponents.key, static_cast<int>(mComponents.size()));
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
    CRawWalk walk(cursor, kUnlimited);
    walk.Read(count);
    for (int i = 0; i < count; ++i) {
        int type = 0;
        walk.Read(type);
        const tComponentKind* kind = UComponentKinds::Find(type);
        const size_t begin = walk.GetPosition();
        if (kind == nullptr || !kind->skipRaw(walk)) {
            ULog::Warn("%s: Copy/Paste operation failed due to an unknown component type (0x%04X).", kRawFunction,
                       static_cast<unsigned>(type));
            return;
        }
        // The record says how far it goes, not what becomes of the component: a full element does not take it.
        AppendOrDrop(kind->makeFromRaw(cursor + begin));
        CErr::CheckNull(mComponents.empty() ? nullptr : mComponents.back(), kRawFunction, "Failed to fetch last BIG");
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

void CCompositeGeometry::TransferFields(CFieldStream& fields)
{
    CPoint start = mLayout.grade.GetStartPoint();
    CPoint end = mLayout.grade.GetEndPoint();
    double deltaHeight = mLayout.grade.GetDeltaHeight();
    fields.Pass(mLibrary, mLayout.zOrder, mLayout.position, mLayout.secondReferencePoint, mLayout.angle, start, end,
                deltaHeight, mLayout.layer, mLayout.fillColor, mLayout.secondColor, mLayout.displayFlag,
                mLayout.fillMode, mLayout.selected);
    mLayout.grade = CGradeVector(start, end, deltaHeight);
    size_t count = mComponents.size();
    fields.Align();
    fields.Pass(count);
    for (size_t i = 0; i < count; ++i) {
        int type = fields.Gives() ? 0 : mComponents[i]->GetType();
        fields.Align();
        fields.Pass(type);
        fields.Align();
        if (fields.Gives()) {
            const tComponentKind* kind = UComponentKinds::Find(type);
            if (kind == nullptr) {
                return;
            }
            Adopt(kind->makeEmpty().release());
        }
        mComponents[i]->TransferFields(fields);
    }
}
