// Renderers of straight, curved and flexible track.
#pragma once

#include "Elements/Rendering/CComponentRenderer.h"

class CStraightRenderer final : public CComponentRenderer {
public:
    CTrackCourse MakeCourse(CBasicGeometry& component, const tPlacement& place) const override;
};

class CCurveRenderer final : public CComponentRenderer {
public:
    CTrackCourse MakeCourse(CBasicGeometry& component, const tPlacement& place) const override;
};

class CFlexTrackRenderer final : public CComponentRenderer {
public:
    CTrackCourse MakeCourse(CBasicGeometry& component, const tPlacement& place) const override;
};
