#include "Elements/Rendering/UElementRenderer.h"

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "BuildingBlocks/CCompositeGeometry.h"

#include <boost/foreach.hpp>

void UElementRenderer::Draw(CCompositeGeometry& element, const CDrawingOptions& options, CDrawing& drawing,
                            double pixel)
{
    const eTrackStyle style = UTrackStyles::StyleOf(options.GetTrackStyle());
    const tRenderContext context = {drawing, style, UTrackStyles::PaletteOf(style), pixel, pixel};
    CTrackRun run(context);
    Draw(element, options, context, run);
    run.Draw();
}

void UElementRenderer::Draw(CCompositeGeometry& element, const CDrawingOptions& options, const tRenderContext& context,
                            CTrackRun& run)
{
    const tPlacement place = {{element.GetPosition().x, element.GetPosition().y}, element.GetAngle()};
    bool isFirstTrack = true;
    BOOST_FOREACH(CBasicGeometry* component, element.GetComponents()) {
        const CComponentRenderer* renderer = CComponentRenderer::Find(component->GetType());
        if (renderer == nullptr) {
            continue;
        }
        if (IsTrackType(component->GetType())) {
            run.Add(element, *component, renderer->MakeCourse(*component, place), options, isFirstTrack);
            isFirstTrack = false;
        } else {
            run.Draw();
            renderer->Draw(*component, place, options, context);
            isFirstTrack = true;
        }
    }
}
