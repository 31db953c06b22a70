// Drawing one element.
#pragma once

#include "Elements/Rendering/CTrackRun.h"

class CCompositeGeometry;
class CDrawingOptions;

class UElementRenderer {
public:
    UElementRenderer() = delete;

    /// Draws an element alone, where it lies in its layout, as the options say.
    /// @param pixel  size of what the drawing just shows, mm
    static void Draw(CCompositeGeometry& element, const CDrawingOptions& options, CDrawing& drawing, double pixel);

    /// Draws an element among others: its tracks are added to the run, which is drawn before anything else of it is.
    static void Draw(CCompositeGeometry& element, const CDrawingOptions& options, const tRenderContext& context,
                     CTrackRun& run);
};
