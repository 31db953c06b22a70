#include "Elements/Rendering/UElementRenderer.h"

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "BuildingBlocks/CCompositeGeometry.h"

#include <boost/foreach.hpp>

#include <algorithm>

void CCompositeGeometry::Render(Platform::CDrawing& drawing, const CDrawingOptions& options, double pixel)
{
    const eTrackStyle style = UTrackStyles::StyleOf(options.GetTrackStyle());
    const tRenderContext context = {drawing, style, UTrackStyles::PaletteOf(style), pixel, pixel};
    CTrackRun run(context);
    UElementRenderer::Draw(*this, options, context, run, 0);
    run.Draw();
}

double UElementRenderer::GetReach(CCompositeGeometry& element, eTrackStyle style)
{
    double reach = 0.0;
    BOOST_FOREACH(CBasicGeometry* component, element.GetComponents()) {
        if (const CComponentRenderer* renderer = CComponentRenderer::Find(component->GetType())) {
            reach = std::max(reach, IsTrackType(component->GetType()) ? CTrackRun::GetReach(element, *component)
                                                                      : renderer->GetReach(*component, style));
        }
    }
    return reach;
}

void UElementRenderer::Draw(CCompositeGeometry& element, const CDrawingOptions& options, const tRenderContext& context,
                            CTrackRun& run, int economy)
{
    const tPlacement place = {{element.GetPosition().x, element.GetPosition().y}, element.GetAngle()};
    bool isFirstTrack = true;
    BOOST_FOREACH(CBasicGeometry* component, element.GetComponents()) {
        const CComponentRenderer* renderer = CComponentRenderer::Find(component->GetType());
        if (renderer == nullptr) {
            continue;
        }
        if (IsTrackType(component->GetType())) {
            run.Add(element, *component, renderer->MakeCourse(*component, place), options, isFirstTrack, economy);
            isFirstTrack = false;
        } else {
            run.Draw();
            renderer->Draw(*component, place, options, context, economy);
            isFirstTrack = true;
        }
    }
}
