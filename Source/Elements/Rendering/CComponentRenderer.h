// How components are drawn: one renderer for each kind, found by the component's type.
#pragma once

#include "BuildingBlocks/CDrawingOptions.h"
#include "Drawing/CDrawing.h"
#include "Elements/Rendering/CTrackCourse.h"
#include "Elements/Rendering/UTrackStyles.h"

#include <algorithm>

class CBasicGeometry;

/// How sparingly an element is drawn: 0 with all its parts; from kOneLine on each further step halves its points.
enum : int {
    kNoSleepers = 1, ///< nor points closer than half a pixel, nor texts, nor outlines of areas
    kOneLine = 2,    ///< a track is a line, an area an outline
    kLeftOut = 1000
};
/// Of so many points one is drawn.
constexpr size_t StrideOf(int economy)
{
    return size_t{1} << std::max(economy - kOneLine, 0);
}

/// Where an element lies: its position and angle.
struct tPlacement {
    tVector2D position;
    double angle;
};

/// What the drawing of an element goes by.
struct tRenderContext {
    CDrawing& drawing;
    eTrackStyle style;
    const tPalette& palette;
    double pixel;  ///< size of a device unit, mm
    double detail; ///< size of what is just worth drawing, mm: a pixel, or less where the picture can be enlarged
};

/// Radius of a track beyond which it is not drawn, mm: the arithmetic of arcs would get too coarse.
inline constexpr double kMostRadius = 1e7;

/// Draws components of one kind. Has no state: one object serves all.
class CComponentRenderer {
public:
    virtual ~CComponentRenderer() = default;

    /// The renderer of a component type, not owned; null for an unknown type.
    static const CComponentRenderer* Find(int type);

    /// The course of a track, to be drawn together with its neighbours; empty for anything else, and for a track that
    /// has no extent or whose numbers are beyond drawing.
    virtual CTrackCourse MakeCourse(CBasicGeometry& component, const tPlacement& place) const;
    /// By how much anything but track may stick out of its box where it is drawn, mm.
    virtual double GetReach(CBasicGeometry& component, eTrackStyle style) const;
    /// Draws anything but track.
    virtual void Draw(CBasicGeometry& component, const tPlacement& place, const CDrawingOptions& options,
                      const tRenderContext& context, int economy) const;
};

/// Parts of one colour and of another.
CColor Mix(const CColor& one, const CColor& other, double partOfOther);
