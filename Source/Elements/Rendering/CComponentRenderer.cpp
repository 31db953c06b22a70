#include "Elements/Rendering/CComponentRenderer.h"

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "Elements/Rendering/GraphicRenderers.h"
#include "Elements/Rendering/TrackRenderers.h"

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
    switch (type) {
    case kStraightType:
        return &sStraight;
    case kCurveType:
        return &sCurve;
    case kFlexTrackType:
        return &sFlexTrack;
    case kPolyType:
        return &sPoly;
    case kOvalType:
        return &sOval;
    case kTextType:
        return &sText;
    default:
        return nullptr;
    }
}

CTrackCourse CComponentRenderer::MakeCourse(CBasicGeometry&, const tPlacement&) const
{
    return {};
}

void CComponentRenderer::Draw(CBasicGeometry&, const tPlacement&, const CDrawingOptions&, const tRenderContext&) const
{}
