// Colours of the samples.
#pragma once

#include "CColor/RGBColor.h"

/// The colour 0xRRGGBB.
constexpr RGBColor ColorOf(unsigned rgb)
{
    const auto component = [rgb](unsigned shift) {
        return static_cast<unsigned short>((rgb >> shift & 0xFFu) * 0x101u);
    };
    return {component(16), component(8), component(0)};
}
