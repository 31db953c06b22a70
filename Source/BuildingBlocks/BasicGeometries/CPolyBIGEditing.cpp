// How the points of a polygon are edited.
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "KVUNum/Angles.h"
#include "KVUNum/KVUNum.h"
#include "Utilities/Geometry/UBezier.h"
#include "Utilities/Geometry/UPointVec.h"
#include "Utilities/Geometry/UReach.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace {
/// A point more on a track changes its curve a little, although it lies on it: by more than rounding, by less than a
/// joint may be off.
constexpr double kInsertedSpare = 1e-3;
constexpr double kAnySpare = std::numeric_limits<double>::infinity();

bool IsSamePoint(const CPoint& a, const CPoint& b)
{
    return a.x == b.x && a.y == b.y;
}

/// The point that a placing brings to a place.
CPoint Unplaced(const tTurn& placing, const CPoint& place)
{
    const double dx = place.x - placing.shift.x - placing.centre.x;
    const double dy = place.y - placing.shift.y - placing.centre.y;
    return {placing.centre.x + dx * placing.direction.cosine + dy * placing.direction.sine,
            placing.centre.y + dy * placing.direction.cosine - dx * placing.direction.sine, 0.0};
}
} // namespace

double CPolyBIG::GetElementAngle() const
{
    const CCompositeGeometry* element = mJoints[0].GetOwner();
    return element != nullptr ? element->GetAngle() : 0.0;
}

bool CPolyBIG::Fit(std::vector<CPoint>& points, double) const
{
    UPointVec::ClampToReach(points);
    return true;
}

bool CPolyBIG::SetPoints(const std::vector<CPoint>& points)
{
    std::vector<CPoint> fitting = points;
    if (!Fit(fitting, 0.0)) {
        return false;
    }
    if (fitting.size() != mPoints.size()) {
        mEditedPoint = -1;
    }
    mPoints.swap(fitting);
    PointsChanged();
    Edited();
    return true;
}

bool CPolyBIG::Edit(std::vector<CPoint> points, double spare)
{
    const CPoint before = GetMiddle();
    if (!Fit(points, spare)) {
        return false;
    }
    if (points.size() != mPoints.size()) {
        mEditedPoint = -1;
    }
    mPoints.swap(points);
    PointsChanged();
    // A point p lies at offset + middle + turned (p - middle), so the offset makes up for the new middle.
    const CPoint moved = before - GetMiddle();
    const tDirection turn = UArcGeometry::Direction(mAngle + GetElementAngle());
    MoveItemBy(moved.x - (moved.x * turn.cosine - moved.y * turn.sine),
               moved.y - (moved.y * turn.cosine + moved.x * turn.sine));
    Edited();
    return true;
}

bool CPolyBIG::GetScaledRotatedPoint(CPoint& point, int index, double scale) const
{
    if (!IsIndex(index)) {
        return false;
    }
    const CPoint& at = mPoints[static_cast<size_t>(index)];
    const tVector2D placed = Placing(GetElementAngle()).Apply({at.x, at.y});
    point = CPoint(placed.x * scale, placed.y * scale, 0.0);
    return true;
}

bool CPolyBIG::AddPoint(const CPoint& point)
{
    return InsertPointAtIdx(GetNumberOfPoints(), point);
}

bool CPolyBIG::InsertPointAtIdx(int index, const CPoint& point)
{
    return Insert(index, point, index > 0 && index < GetNumberOfPoints() ? kInsertedSpare : 0.0);
}

bool CPolyBIG::Insert(int index, const CPoint& point, double spare)
{
    if (index < 0 || index > GetNumberOfPoints()) {
        return false;
    }
    std::vector<CPoint> points;
    points.reserve(mPoints.size() + 1);
    points.assign(mPoints.begin(), mPoints.begin() + index);
    points.push_back(point);
    points.insert(points.end(), mPoints.begin() + index, mPoints.end());
    const size_t count = points.size();
    if (!Edit(std::move(points), spare)) {
        return false;
    }
    mEditedPoint = mPoints.size() == count ? index : -1;
    return true;
}

CPoint CPolyBIG::Halfway(size_t from, size_t to) const
{
    return (mPoints[from] + mPoints[to]) * 0.5;
}

bool CPolyBIG::InsertPointBefore(int index)
{
    if (!IsIndex(index) || GetNumberOfPoints() < kFewestPoints) {
        return false;
    }
    const size_t at = static_cast<size_t>(index);
    if (at > 0) {
        return Insert(index, Halfway(at - 1, at), kAnySpare);
    }
    if (IsClosed()) {
        return InsertPointAtIdx(0, Halfway(mPoints.size() - 1, 0));
    }
    return InsertPointAtIdx(0, mPoints[0] + (mPoints[0] - mPoints[1]) * 0.5);
}

bool CPolyBIG::InsertPointAfter(int index)
{
    if (!IsIndex(index) || GetNumberOfPoints() < kFewestPoints) {
        return false;
    }
    const size_t at = static_cast<size_t>(index);
    if (at + 1 < mPoints.size()) {
        return Insert(index + 1, Halfway(at, at + 1), kAnySpare);
    }
    if (IsClosed()) {
        return InsertPointAtIdx(index + 1, Halfway(at, 0));
    }
    return InsertPointAtIdx(index + 1, mPoints[at] + (mPoints[at] - mPoints[at - 1]) * 0.5);
}

bool CPolyBIG::DelPoint(int index)
{
    if (!IsIndex(index) || GetNumberOfPoints() <= kFewestPoints) {
        return false;
    }
    std::vector<CPoint> points = mPoints;
    points.erase(points.begin() + index);
    const size_t count = points.size();
    const int edited = mEditedPoint;
    if (!Edit(std::move(points))) {
        return false;
    }
    if (mPoints.size() == count && edited != index) {
        mEditedPoint = edited > index ? edited - 1 : edited;
    }
    return true;
}

bool CPolyBIG::RestrictPolyPoint(const char* restriction)
{
    if (restriction == nullptr || restriction[0] == 0 || restriction[1] != 0 || !IsIndex(mEditedPoint) ||
        GetNumberOfPoints() < kFewestPoints) {
        return false;
    }
    const auto index = static_cast<size_t>(mEditedPoint);
    const CPoint& neighbour = mPoints[index > 0 ? index - 1 : 1];
    CPoint moved = mPoints[index];
    switch (*restriction) {
    case 'h':
        moved.y = neighbour.y;
        break;
    case 'v':
        moved.x = neighbour.x;
        break;
    case 'd': {
        const double dx = moved.x - neighbour.x;
        const double dy = moved.y - neighbour.y;
        const double step = kPi / 4.0;
        const double angle = std::round(std::atan2(dy, dx) / step) * step;
        const double length = dx * std::cos(angle) + dy * std::sin(angle);
        moved.SetPos(neighbour.x + length * std::cos(angle), neighbour.y + length * std::sin(angle));
        break;
    }
    default:
        return false;
    }
    std::vector<CPoint> points = mPoints;
    points[index] = moved;
    return Edit(std::move(points));
}

int CPolyBIG::FindHandle(const CPoint& point, int first, int last, Point32& handle) const
{
    const tTurn placing = Placing(GetElementAngle());
    double nearest = kHandleReach;
    int found = -1;
    for (int i = std::max(first, 0); i < std::min(last, GetNumberOfPoints()); ++i) {
        const CPoint& at = mPoints[static_cast<size_t>(i)];
        const tVector2D placed = placing.Apply({at.x, at.y});
        const double distance = std::hypot(placed.x - point.x, placed.y - point.y);
        if (distance < nearest || (distance == nearest && found < 0)) {
            nearest = distance;
            found = i;
            handle = {KVUNum::d2i(placed.x), KVUNum::d2i(placed.y)};
        }
    }
    return found;
}

int CPolyBIG::PointIsCloseToHandle(const CPoint& point, Point32& handle) const
{
    return FindHandle(point, 0, GetNumberOfPoints(), handle);
}

void CPolyBIG::MirrorPointsHorizontally()
{
    const CPoint middle = GetMiddle();
    for (CPoint& point : mPoints) {
        point.x = 2.0 * middle.x - point.x;
    }
    PointsChanged();
    Edited();
}

void CPolyBIG::MirrorPointsVertically()
{
    const CPoint middle = GetMiddle();
    for (CPoint& point : mPoints) {
        point.y = 2.0 * middle.y - point.y;
    }
    PointsChanged();
    Edited();
}

void CPolyBIG::Scale(double factor, bool scaleOffset)
{
    if (!IsScale(factor)) {
        return;
    }
    CBasicGeometry::Scale(factor, scaleOffset);
    mLineThickness = ScaledSize(mLineThickness, factor);
    for (CPoint& point : mPoints) {
        point = point * factor;
    }
    UPointVec::ClampToReach(mPoints);
    PointsChanged();
}

bool CPolyBIG::Merge(CPolyBIG* other)
{
    if (other == nullptr || other == this || other->GetType() != GetType() || IsClosed() || other->IsClosed() ||
        mPoints.empty() || other->mPoints.empty()) {
        return false;
    }
    // The other line in this one's coordinates, by way of the layout.
    const tTurn placing = Placing(GetElementAngle());
    const CCompositeGeometry* element = mJoints[0].GetOwner();
    const CCompositeGeometry* otherElement = other->mJoints[0].GetOwner();
    CPoint between;
    if (element != nullptr && otherElement != nullptr) {
        between = otherElement->GetPosition() - element->GetPosition();
    }
    std::vector<CPoint> theirs;
    other->AppendPlacedPoints(other->GetElementAngle(), theirs);
    for (CPoint& point : theirs) {
        point = Unplaced(placing, point + between);
    }
    const auto distance = [](const CPoint& a, const CPoint& b) { return a.CalcDistance2D(b); };
    const CPoint& first = mPoints.front();
    const CPoint& last = mPoints.back();
    const double behind = std::min(distance(last, theirs.front()), distance(last, theirs.back()));
    const double before = std::min(distance(first, theirs.front()), distance(first, theirs.back()));
    const bool isBehind = behind <= before;
    const CPoint joined = isBehind ? last : first;
    // Behind this line the other follows with its near end first, before it with its near end last.
    const bool nearIsFront = distance(joined, theirs.front()) <= distance(joined, theirs.back());
    if (nearIsFront != isBehind) {
        std::reverse(theirs.begin(), theirs.end());
    }
    std::vector<CPoint> points = isBehind ? mPoints : theirs;
    const std::vector<CPoint>& rest = isBehind ? theirs : mPoints;
    if (std::min(behind, before) <= kSamePlace) {
        points.back() = joined;
        points.insert(points.end(), rest.begin() + 1, rest.end());
    } else {
        points.insert(points.end(), rest.begin(), rest.end());
    }
    if (!MayBecome(points)) {
        return false;
    }
    const int added = static_cast<int>(points.size() - mPoints.size());
    const bool closes = points.size() > 3 && distance(points.front(), points.back()) <= kSamePlace;
    if (closes && GetType() == kPolyType) {
        points.pop_back();
        SetPolyCloseFlag(true);
    }
    // The joint at the end that the other line adds goes on where the other's did; what was joined is inside now.
    CJoint& end = mJoints[isBehind ? 1 : 0];
    CJoint& far = other->mJoints[nearIsFront ? 1 : 0];
    CJoint* const onward = far.GetPartner();
    end.DisconnectJoint();
    far.DisconnectJoint();
    if (onward != nullptr && onward != &mJoints[isBehind ? 0 : 1]) {
        end.ConnectToJoint(onward);
    }
    const int edited = mEditedPoint < 0 || isBehind ? mEditedPoint : mEditedPoint + added;
    if (!Edit(std::move(points))) {
        return false;
    }
    mEditedPoint = IsIndex(edited) ? edited : -1;
    return true;
}

void CPolyBIG::Normalize()
{
    if (mPoints.empty()) {
        return;
    }
    const double elementAngle = GetElementAngle();
    const CPoint middle = GetMiddle();
    const tVector2D place = Placing(elementAngle).Apply({middle.x, middle.y});
    std::vector<CPoint> points;
    CalculateRotatedPointPositions(points, mAngle);
    points.erase(std::unique(points.begin(), points.end(), IsSamePoint), points.end());
    if (IsClosed() && points.size() > 1 && IsSamePoint(points.front(), points.back())) {
        points.pop_back();
    }
    CPoint corner = points.front();
    for (const CPoint& point : points) {
        corner.SetPos(std::min(corner.x, point.x), std::min(corner.y, point.y));
    }
    for (CPoint& point : points) {
        point.MoveBy(-corner.x, -corner.y, 0.0);
    }
    if (points.size() != mPoints.size()) {
        mEditedPoint = -1;
    }
    mPoints.swap(points);
    mAngle = 0.0;
    PointsChanged();
    // What was the middle lies where it lay.
    const tVector2D now = Placing(elementAngle).Apply({middle.x - corner.x, middle.y - corner.y});
    MoveItemBy(place.x - now.x, place.y - now.y);
    Edited();
}

void CPolyBIG::RoundPointPositions()
{
    std::vector<CPoint> points = mPoints;
    for (CPoint& point : points) {
        point.SetPos(std::floor(point.x + 0.5), std::floor(point.y + 0.5));
    }
    Edit(std::move(points));
}
