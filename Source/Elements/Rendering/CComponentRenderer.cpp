#include "Elements/Rendering/CComponentRenderer.h"

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "Elements/Rendering/GraphicRenderers.h"
#include "Elements/Rendering/TrackRenderers.h"

#include <iterator>

CColor Mix(const CColor& one, const CColor& other, double partOfOther)
{
    const double rest = 1.0 - partOfOther;
    return {one.R() * rest + other.R() * partOfOther, one.G() * rest + other.G() * partOfOther,
            one.B() * rest + other.B() * partOfOther, one.A() * rest + other.A() * partOfOther};
}

const CComponentRenderer* CComponentRenderer::Find(int type)
{
    static const CStraightRenderer sStraight;
    static const CCurveRenderer sCurve;
    static const CFlexTrackRenderer sFlexTrack;
    static const CPolyRenderer sPoly;
    static const COvalRenderer sOval;
    static const CTextRenderer sText;
    // In the order of the type codes.
    static constexpr const CComponentRenderer* kRenderers[] = {&sStraight, &sCurve, &sPoly,
                                                               &sText,     &sOval,  &sFlexTrack};
    static_assert(std::size(kRenderers) == UComponentKinds::kCount);
    return UComponentKinds::Find(type) != nullptr ? kRenderers[type - 1] : nullptr;
}

CTrackCourse CComponentRenderer::MakeCourse(CBasicGeometry&, const tPlacement&) const
{
    return {};
}

double CComponentRenderer::GetReach(CBasicGeometry&, eTrackStyle) const
{
    return 0.0;
}

void CComponentRenderer::Draw(CBasicGeometry&, const tPlacement&, const CDrawingOptions&, const tRenderContext&,
                              int) const
{}
