// Renderers of polygons, circles and texts.
#pragma once

#include "Elements/Rendering/CComponentRenderer.h"

class CPolyRenderer final : public CComponentRenderer {
public:
    double GetReach(CBasicGeometry& component, eTrackStyle style) const override;
    void Draw(CBasicGeometry& component, const tPlacement& place, const CDrawingOptions& options,
              const tRenderContext& context, int economy) const override;
};

/// A circle of the first radius, as its box has it.
class COvalRenderer final : public CComponentRenderer {
public:
    double GetReach(CBasicGeometry& component, eTrackStyle style) const override;
    void Draw(CBasicGeometry& component, const tPlacement& place, const CDrawingOptions& options,
              const tRenderContext& context, int economy) const override;
};

/// A text turned about its left top corner.
class CTextRenderer final : public CComponentRenderer {
public:
    void Draw(CBasicGeometry& component, const tPlacement& place, const CDrawingOptions& options,
              const tRenderContext& context, int economy) const override;
};
