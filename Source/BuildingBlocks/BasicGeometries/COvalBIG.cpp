#include "BuildingBlocks/BasicGeometries/COvalBIG.h"

#include "BuildingBlocks/CFieldStream.h"
#include "CTaggedFile/CTaggedFile.h"
#include "Formats/ComponentFormat.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"
#include "UnitLength/UUnits.h"
#include "Utilities/Geometry/UReach.h"

COvalBIG::COvalBIG(COvalBIG* source)
    : CBasicGeometry(source), mLineThickness(source->GetLineThickness()), mRadiusX(source->GetRadX()),
      mRadiusY(source->GetRadY())
{}

COvalBIG::COvalBIG(void* raw) : CBasicGeometry(raw)
{
    const void* cursor = BehindCommonRecord(raw);
    cursor = UReach::Fetch(cursor, mRadiusX);
    cursor = UReach::Fetch(cursor, mRadiusY);
    KVURawMem::FetchDataFromRawMem(cursor, mLineThickness);
}

bool COvalBIG::SkipRaw(CRawWalk& walk)
{
    return walk.Skip(kCommonRawSize + 2 * sizeof(double) + sizeof(int));
}

void COvalBIG::SpecifyOvalGeometry(double xOffset, double yOffset, double radius, int lineThickness)
{
    mItemXOffset = UReach::Clamp(xOffset);
    mItemYOffset = UReach::Clamp(yOffset);
    mRadiusX = mRadiusY = UReach::Clamp(radius);
    mGauge = 0.0;
    mLineThickness = lineThickness;
    AllowJoints(false, false);
}

void COvalBIG::Scale(double factor, bool scaleOffset)
{
    CBasicGeometry::Scale(factor, scaleOffset);
    mRadiusX = UReach::Clamp(mRadiusX * factor);
    mRadiusY = UReach::Clamp(mRadiusY * factor);
    mLineThickness = ScaledSize(mLineThickness, factor);
}

void COvalBIG::TransferFields(CFieldStream& fields)
{
    CBasicGeometry::TransferFields(fields);
    fields.Pass(mRadiusX, mRadiusY, mLineThickness);
}

void* COvalBIG::GetParameterAsRaw(void* destination)
{
    destination = KVURawMem::AppendDataToRawMem(destination, GetType());
    destination = CBasicGeometry::GetParameterAsRaw(destination);
    destination = KVURawMem::AppendDataToRawMem(destination, mRadiusX);
    destination = KVURawMem::AppendDataToRawMem(destination, mRadiusY);
    return KVURawMem::AppendDataToRawMem(destination, mLineThickness);
}

std::string COvalBIG::ToString(int unit)
{
    return std::string("Circle (R:") + UUnits::BuildMeasureUnitString(unit, mRadiusX) + ")";
}

void COvalBIG::CalcBoundingBox(DRect& box, double)
{
    box = {mItemYOffset, mItemXOffset, mItemYOffset + 2.0 * mRadiusX, mItemXOffset + 2.0 * mRadiusX};
}

CPoint& COvalBIG::GetRotationReferencePoint(double angle)
{
    DRect box = {};
    CalcBoundingBox(box, angle);
    mCentre = UDRect::Center(box);
    return mCentre;
}

bool COvalBIG::Load(FILE* file, int version)
{
    if (!CBasicGeometry::Load(file, version)) {
        return false;
    }
    CTaggedFile(file).ReadTable<ComponentFormat::kOval>(std::tie(mRadiusX, mRadiusY, mLineThickness));
    return true;
}

void COvalBIG::Save(FILE* file)
{
    CTaggedFile records(file);
    records.Write(ComponentFormat::kType.key, GetType());
    CBasicGeometry::Save(file);
    records.WriteTable<ComponentFormat::kOval>(std::tie(mRadiusX, mRadiusY, mLineThickness));
}
