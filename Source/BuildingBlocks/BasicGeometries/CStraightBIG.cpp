#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"

#include "BuildingBlocks/CFieldStream.h"
#include "CTaggedFile/CTaggedFile.h"
#include "Formats/ComponentFormat.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"
#include "UnitLength/UUnits.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"
#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UReach.h"

#include <cmath>

CStraightBIG::CStraightBIG(CStraightBIG* source) : CBasicGeometry(source), mLength(source->mLength)
{
    mTrackLength = mLength;
}

CStraightBIG::CStraightBIG(void* raw) : CBasicGeometry(raw)
{
    UReach::Fetch(BehindCommonRecord(raw), mLength);
    mTrackLength = mLength;
}

bool CStraightBIG::SkipRaw(CRawWalk& walk)
{
    return walk.Skip(kCommonRawSize + sizeof(double));
}

void CStraightBIG::SpecifyStraightGeometry(double xOffset, double yOffset, double length, double angle, double gauge,
                                           double trackbedWidth, bool joint0Allowed, bool joint1Allowed)
{
    mItemXOffset = UReach::Clamp(xOffset);
    mItemYOffset = UReach::Clamp(yOffset);
    mLength = mTrackLength = UReach::Clamp(length);
    mAngle = UReach::Clamp(angle);
    mGauge = UReach::Clamp(gauge);
    mTrackbedWidth = UReach::Clamp(trackbedWidth);
    AllowJoints(joint0Allowed, joint1Allowed);
}

void CStraightBIG::TransferFields(CFieldStream& fields)
{
    CBasicGeometry::TransferFields(fields);
    fields.Pass(mLength);
}

void* CStraightBIG::GetParameterAsRaw(void* destination)
{
    destination = KVURawMem::AppendDataToRawMem(destination, GetType());
    destination = CBasicGeometry::GetParameterAsRaw(destination);
    return KVURawMem::AppendDataToRawMem(destination, mLength);
}

std::string CStraightBIG::ToString(int unit)
{
    return std::string("Straight ") + UUnits::BuildMeasureUnitString(unit, mLength);
}

void CStraightBIG::DefineJoints(const CPoint& origin, double angle, const CGradeVector& grade, int mode)
{
    const double direction = mAngle + angle;
    const tDirection along = UArcGeometry::Direction(direction);
    const double half = mLength / 2.0;
    const double middleX = mItemXOffset + half;
    const double middleY = mItemYOffset + mGauge;
    CPoint& first = mJoints[0].GetLocalPoint();
    CPoint& second = mJoints[1].GetLocalPoint();
    first.x = middleX - half * along.cosine;
    first.y = middleY - half * along.sine;
    second.x = middleX + half * along.cosine;
    second.y = middleY + half * along.sine;
    mJoints[0].SetReducedAngle(direction);
    mJoints[1].SetReducedAngle(180.0 + direction);
    FinishJoints(origin, grade, mode);
    mJoints[0].SetComponentFlag(true);
    mJoints[1].SetComponentFlag(true);
}

void CStraightBIG::CalcBoundingBox(DRect& box, double angle)
{
    // The hull of the four ends of the cross marks, without turning each of them:
    // a mark is its joint plus and minus this.
    DefineJoints(CPoint::ZeroPos, angle, CGradeVector::ZeroGrade, kPlaceForTrackMarks);
    const tDirection along = UArcGeometry::Direction(mAngle + angle);
    const double width = CalcTrackMarkerWidth();
    const double acrossX = std::fabs(width * along.sine);
    const double acrossY = std::fabs(width * along.cosine);
    CCalcBoundingBox grow(box);
    for (const CJoint& joint : mJoints) {
        const CPoint& point = joint.GetLocalPoint();
        grow.Update(point.x - acrossX, point.y - acrossY);
        grow.Update(point.x + acrossX, point.y + acrossY);
    }
}

void CStraightBIG::DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points)
{
    if (!std::isfinite(angle) || !std::isfinite(distance)) {
        return;
    }
    DefineJoints(CPoint::ZeroPos, angle, CGradeVector::ZeroGrade, kPlaceForTrackMarks);
    const tDirection along = UArcGeometry::Direction(mAngle + angle);
    const double acrossX = -distance * along.sine;
    const double acrossY = distance * along.cosine;
    const CPoint& first = mJoints[0].GetLocalPoint();
    const CPoint& second = mJoints[1].GetLocalPoint();
    points.emplace_back(first.x - acrossX, first.y - acrossY, 0.0);
    points.emplace_back(second.x - acrossX, second.y - acrossY, 0.0);
    points.emplace_back(second.x + acrossX, second.y + acrossY, 0.0);
    points.emplace_back(first.x + acrossX, first.y + acrossY, 0.0);
}

void CStraightBIG::Scale(double factor, bool scaleOffset)
{
    if (!IsScale(factor)) {
        return;
    }
    CBasicGeometry::Scale(factor, scaleOffset);
    mLength = mTrackLength = UReach::Clamp(mLength * factor);
}

void CStraightBIG::DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points)
{
    DefineTrackItemOutline(angle, CalcTrackMarkerWidth() + distance, points);
}

bool CStraightBIG::Load(FILE* file, int version)
{
    if (!CBasicGeometry::Load(file, version)) {
        return false;
    }
    CTaggedFile(file).ReadTable<ComponentFormat::kStraight>(std::tie(mLength));
    mTrackLength = mLength;
    return true;
}

void CStraightBIG::Save(FILE* file)
{
    CTaggedFile records(file);
    records.Write(ComponentFormat::kType.key, GetType());
    CBasicGeometry::Save(file);
    records.WriteTable<ComponentFormat::kStraight>(std::tie(mLength));
}
