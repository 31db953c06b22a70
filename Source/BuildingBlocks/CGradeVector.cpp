#include "BuildingBlocks/CGradeVector.h"

#include "CTaggedFile/CTaggedFile.h"
#include "Formats/ElementFormat.h"
#include "KVUNum/Angles.h"
#include "KVURawMem/KVURawMem.h"
#include "Utilities/Geometry/UReach.h"

#include <algorithm>
#include <cmath>

const CGradeVector CGradeVector::ZeroGrade;

CGradeVector::CGradeVector(const void* raw)
{
    raw = UReach::Fetch(raw, mStart.x);
    raw = UReach::Fetch(raw, mStart.y);
    raw = UReach::Fetch(raw, mEnd.x);
    raw = UReach::Fetch(raw, mEnd.y);
    UReach::Fetch(raw, mDeltaHeight);
}

double CGradeVector::GetVectorLength() const
{
    return mEnd.CalcDistance(mStart);
}

double CGradeVector::GetAngleToXAxis() const
{
    return mStart.CalcAngle(mEnd);
}

double CGradeVector::GetGradeAngle() const
{
    if (!IsGraded()) {
        return 0.0;
    }
    // A vector shorter than its rise can only come from a damaged document: straight up.
    const double length = GetVectorLength();
    return std::asin(length > mDeltaHeight ? mDeltaHeight / length : 1.0) * kDegreesPerRadian;
}

// In the order of their records.
template <typename tPoint, typename tHeight>
static auto Fields(tPoint& start, tPoint& end, tHeight& deltaHeight)
{
    return std::tie(start.x, start.y, start.z, end.x, end.y, end.z, deltaHeight);
}

void CGradeVector::Load(CTaggedFile& records, int version)
{
    if (version == ElementFormat::kCurrentVersion) {
        records.ReadTable<ElementFormat::kGrade>(Fields(mStart, mEnd, mDeltaHeight));
    }
}

void CGradeVector::Save(CTaggedFile& records) const
{
    records.WriteTable<ElementFormat::kGrade>(Fields(mStart, mEnd, mDeltaHeight));
}

void* CGradeVector::GetParameterAsRaw(void* destination) const
{
    destination = KVURawMem::AppendDataToRawMem(destination, mStart.x);
    destination = KVURawMem::AppendDataToRawMem(destination, mStart.y);
    destination = KVURawMem::AppendDataToRawMem(destination, mEnd.x);
    destination = KVURawMem::AppendDataToRawMem(destination, mEnd.y);
    return KVURawMem::AppendDataToRawMem(destination, mDeltaHeight);
}
