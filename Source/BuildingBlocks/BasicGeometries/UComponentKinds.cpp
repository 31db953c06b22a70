#include "BuildingBlocks/BasicGeometries/UComponentKinds.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"

namespace {
/// What a row says beside its functions.
struct tTraits {
    bool isTrack = false;
    bool isPolygon = false;
    bool hasJoints = false;
};

template <class tComponent>
constexpr tComponentKind Row(eComponentType type, const char* name, tTraits traits)
{
    return {type,
            name,
            traits.isTrack,
            traits.isPolygon,
            traits.hasJoints,
            []() -> std::unique_ptr<CBasicGeometry> { return std::make_unique<tComponent>(); },
            [](void* raw) -> std::unique_ptr<CBasicGeometry> { return std::make_unique<tComponent>(raw); },
            &tComponent::SkipRaw};
}
} // namespace

constexpr tComponentKind UComponentKinds::sKinds[] = {
    Row<CStraightBIG>(kStraightType, "straight", {.isTrack = true, .hasJoints = true}),
    Row<CCurveBIG>(kCurveType, "curve", {.isTrack = true, .hasJoints = true}),
    Row<CPolyBIG>(kPolyType, "polygon", {.isPolygon = true}),
    Row<CTextBIG>(kTextType, "text", {}),
    Row<COvalBIG>(kOvalType, "circle", {}),
    Row<CFlexTrackBIG>(kFlexTrackType, "flexible track", {.isTrack = true, .isPolygon = true, .hasJoints = true}),
};
