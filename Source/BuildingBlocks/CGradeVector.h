// The height profile of a track element.
#pragma once

#include "CPoint/CPoint.h"

class CTaggedFile;

/// A slope from a start to an end point with a difference in height, in the element's coordinates, mm. Copied by value.
class CGradeVector {
public:
    /// The profile of a level element: from the origin to the origin, no difference in height.
    static const CGradeVector ZeroGrade;
    /// Differences in height below this, in mm, count as level; so does every descent: a grade runs upwards.
    static constexpr double kSmallestDeltaHeight = 0.001;
    /// Bytes of the raw record.
    static constexpr int kRawSize = 40;

    CGradeVector() = default;
    CGradeVector(const CPoint& start, const CPoint& end, double deltaHeight)
        : mStart(start), mEnd(end), mDeltaHeight(deltaHeight)
    {}
    /// Reads the raw record: five doubles, start x and y, end x and y, difference in height. Both heights are 0.
    explicit CGradeVector(const void* raw);
    CGradeVector(const CGradeVector&) = default;
    CGradeVector& operator=(const CGradeVector&) = default;
    virtual ~CGradeVector() = default;

    const CPoint& GetStartPoint() const { return mStart; }
    const CPoint& GetEndPoint() const { return mEnd; }
    double GetDeltaHeight() const { return mDeltaHeight; }
    /// True when the grade angle is not 0.
    bool IsGraded() const { return mDeltaHeight >= kSmallestDeltaHeight; }
    /// Distance of the two points in space.
    double GetVectorLength() const;
    /// Direction from start to end, degrees, as CPoint::CalcAngle gives it.
    double GetAngleToXAxis() const;
    /// Slope in degrees, asin(difference in height / vector length); 0 when not graded.
    double GetGradeAngle() const;

    /// Reads both points and the difference in height; from elements of version 4 only.
    void Load(CTaggedFile& records, int version);
    void Save(CTaggedFile& records) const;
    /// Appends the raw record. @return the position behind it
    void* GetParameterAsRaw(void* destination) const;
    int GetParameterRawSize() const { return kRawSize; }

private:
    CPoint mStart;
    CPoint mEnd;
    double mDeltaHeight = 0.0;
};
