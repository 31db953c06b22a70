// The ways in which track is drawn.
#pragma once

#include "CColor/CColor.h"

#include <string_view>

enum class eTrackStyle {
    kCentreLine, ///< a line for each track, ticks at its ends
    kFilledBed,  ///< track beds in the colours of their elements
    kPlan,       ///< black on white for print: rails and outlines, nothing filled
    kRailsOnBed, ///< rails on a track bed
    kSleepers    ///< rails and sleepers on a track bed
};

/// Colours of a style. Alpha 0 stands for "not drawn".
struct tPalette {
    CColor paper; ///< around everything
    CColor board; ///< the workspace
    CColor edge;  ///< of the workspace
    CColor grid;
    CColor bed;
    CColor bedEdge;
    CColor sleeper;
    CColor rail;
    CColor track; ///< the single line that is left of a track in small pictures
    CColor label;
    CColor seam; ///< around labels
};

class UTrackStyles {
public:
    UTrackStyles() = delete;

    /// The style of a layout's track style code: 1 centre line, 2 filled bed, 3 plan, 4 rails on a bed, 5 sleepers,
    /// each also with 100 added; sleepers for every other code.
    static eTrackStyle StyleOf(int code);
    /// The code of a style's name ("line", "filled", "plan", "bed", "sleepers"); 0 for any other name.
    static int CodeOf(std::string_view name);
    static const tPalette& PaletteOf(eTrackStyle style);
};
