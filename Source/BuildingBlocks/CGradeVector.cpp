#include "BuildingBlocks/CGradeVector.h"

#include "CTaggedFile/CTaggedFile.h"
#include "KVURawMem/KVURawMem.h"
#include "Utilities/Geometry/UReach.h"

#include <algorithm>
#include <cmath>

namespace {
enum : unsigned short {
    kKeyStartX = CGradeVector::kFirstKey,
    kKeyStartY,
    kKeyStartZ,
    kKeyEndX,
    kKeyEndY,
    kKeyEndZ,
    kKeyDeltaHeight
};

constexpr double kDegreesPerRadian = 57.29577951308232;
/// The one element record version that has a grade.
constexpr int kVersionWithGrade = 4;
} // namespace

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

void CGradeVector::Load(CTaggedFile& records, int version)
{
    if (version != kVersionWithGrade) {
        return;
    }
    records.Read(kKeyStartX, mStart.x);
    records.Read(kKeyStartY, mStart.y);
    records.Read(kKeyStartZ, mStart.z);
    records.Read(kKeyEndX, mEnd.x);
    records.Read(kKeyEndY, mEnd.y);
    records.Read(kKeyEndZ, mEnd.z);
    records.Read(kKeyDeltaHeight, mDeltaHeight);
}

void CGradeVector::Save(CTaggedFile& records) const
{
    records.Write(kKeyStartX, mStart.x);
    records.Write(kKeyStartY, mStart.y);
    records.Write(kKeyStartZ, mStart.z);
    records.Write(kKeyEndX, mEnd.x);
    records.Write(kKeyEndY, mEnd.y);
    records.Write(kKeyEndZ, mEnd.z);
    records.Write(kKeyDeltaHeight, mDeltaHeight);
}

void* CGradeVector::GetParameterAsRaw(void* destination) const
{
    destination = KVURawMem::AppendDataToRawMem(destination, mStart.x);
    destination = KVURawMem::AppendDataToRawMem(destination, mStart.y);
    destination = KVURawMem::AppendDataToRawMem(destination, mEnd.x);
    destination = KVURawMem::AppendDataToRawMem(destination, mEnd.y);
    return KVURawMem::AppendDataToRawMem(destination, mDeltaHeight);
}
