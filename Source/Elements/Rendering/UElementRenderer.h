// Drawing one element, among others or alone (CCompositeGeometry::Render).
#pragma once

#include "Elements/Rendering/CTrackRun.h"

class CCompositeGeometry;
class CDrawingOptions;

class UElementRenderer {
public:
    UElementRenderer() = delete;

    /// Draws an element among others: its tracks are added to the run, which is drawn before anything else of it is.
    /// @param economy  how sparingly
    static void Draw(CCompositeGeometry& element, const CDrawingOptions& options, const tRenderContext& context,
                     CTrackRun& run, int economy);
    /// By how much what is drawn of an element may stick out of its box, mm; details of some pixels not counted.
    static double GetReach(CCompositeGeometry& element, eTrackStyle style);
};
