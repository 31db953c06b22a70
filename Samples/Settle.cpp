#include "Settle.h"

#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"

#include <cmath>
#include <vector>

namespace {
/// Documents hold seven decimals of a number and cut the rest.
constexpr double kStoredSteps = 1e7;

CPoint Settled(const CPoint& point)
{
    return {::Settled(point.x), ::Settled(point.y), ::Settled(point.z)};
}
} // namespace

double Settled(double value)
{
    const double steps = std::floor(std::fabs(value) * kStoredSteps + 0.5);
    return std::copysign((steps + 0.25) / kStoredSteps, value);
}

void Settle(CCompositeGeometry& element)
{
    CPoint& position = element.GetLayoutItemAttributes().position;
    position = Settled(position);
    for (CBasicGeometry* component : element.GetComponents()) {
        component->SetItemXOffset(Settled(component->GetItemXOffset()));
        component->SetItemYOffset(Settled(component->GetItemYOffset()));
        if (IsPolygonType(component->GetType())) {
            auto* polygon = static_cast<CPolyBIG*>(component);
            std::vector<CPoint> points = polygon->GetPoints();
            for (CPoint& point : points) {
                point = Settled(point);
            }
            polygon->SetPoints(points);
        }
    }
    const CGradeVector& grade = element.GetGrade();
    if (grade.IsGraded()) {
        element.SetGrade(
            {Settled(grade.GetStartPoint()), Settled(grade.GetEndPoint()), Settled(grade.GetDeltaHeight())});
    }
}
