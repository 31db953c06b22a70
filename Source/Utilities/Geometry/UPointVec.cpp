#include "Utilities/Geometry/UPointVec.h"

#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UReach.h"

void UPointVec::RotatePointVecZ(std::vector<CPoint>& points, const CPoint& centre, double angle)
{
    const tDirection turn = UArcGeometry::Direction(angle);
    for (CPoint& point : points) {
        const double dx = point.x - centre.x;
        const double dy = point.y - centre.y;
        point.x = dx * turn.cosine - dy * turn.sine + centre.x;
        point.y = dy * turn.cosine + dx * turn.sine + centre.y;
    }
}

void UPointVec::RotatePointVecY(std::vector<CPoint>& points, const CPoint& centre, double angle)
{
    const tDirection turn = UArcGeometry::Direction(angle);
    for (CPoint& point : points) {
        const double dx = point.x - centre.x;
        const double dz = point.z - centre.z;
        point.x = dx * turn.cosine - dz * turn.sine + centre.x;
        point.z = dz * turn.cosine + dx * turn.sine + centre.z;
    }
}

void UPointVec::ClampToReach(std::vector<CPoint>& points)
{
    for (CPoint& point : points) {
        point = UReach::Clamp(point);
    }
}
