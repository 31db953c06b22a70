#include "Utilities/Geometry/UArcGeometry.h"

#include "KVUNum/Angles.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace {
struct tRememberedDirection {
    uint64_t key;
    tDirection direction;
};
/// Slots for remembered angles; 0° has a path of its own, so that zeroed slots are never taken for an angle.
constexpr size_t kNumRemembered = 64;
tRememberedDirection sRemembered[kNumRemembered];
} // namespace

tDirection UArcGeometry::Direction(double degrees)
{
    if (degrees == 0.0) {
        return {1.0, 0.0};
    }
    const uint64_t key = std::bit_cast<uint64_t>(degrees);
    tRememberedDirection& slot = sRemembered[(key * 0x9E3779B97F4A7C15u) >> 58];
    if (slot.key != key) {
        const double radians = degrees * kRadiansPerDegree;
        slot = {key, {std::cos(radians), std::sin(radians)}};
    }
    return slot.direction;
}

DRect UArcGeometry::BandBox(const tTravelledArc& arc, double halfWidth)
{
    const double radii[] = {arc.radius - halfWidth, arc.radius + halfWidth};
    DRect box = {};
    CCalcBoundingBox grow(box);
    const tDirection first = Direction(arc.start);
    const tDirection last = Direction(arc.start + arc.sweep);
    for (const double radius : radii) {
        grow.Update(radius * first.sine, -radius * first.cosine);
        grow.Update(radius * last.sine, -radius * last.cosine);
    }
    // Headings at which the arc runs along an axis, and the point of the unit circle there.
    static constexpr struct {
        double heading;
        double x;
        double y;
    } kCrossings[] = {{0.0, 0.0, -1.0}, {90.0, 1.0, 0.0}, {180.0, 0.0, 1.0}, {270.0, -1.0, 0.0}};
    const double low = std::min(arc.start, arc.start + arc.sweep);
    const double span = std::fabs(arc.sweep);
    for (const auto& crossing : kCrossings) {
        double behind = std::fmod(crossing.heading - low, 360.0);
        if (behind < 0.0) {
            behind += 360.0;
        }
        if (behind <= span) {
            for (const double radius : radii) {
                grow.Update(radius * crossing.x, radius * crossing.y);
            }
        }
    }
    return box;
}
