#include "Elements/Rendering/UTrackStyles.h"

#include <iterator>

namespace {
constexpr CColor Rgb(unsigned rgb, double alpha = 1.0)
{
    return {(rgb >> 16 & 0xFF) / 255.0, (rgb >> 8 & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, alpha};
}

constexpr CColor kNone(0.0, 0.0, 0.0, 0.0);

/// Warm paper, timber and steel.
constexpr tPalette kWarm = {Rgb(0xF1ECE1), Rgb(0xFBF8F1), Rgb(0xCFC4AF),      Rgb(0x8F8468, 0.28),
                            Rgb(0xDDD4C3), Rgb(0xB7AA91), Rgb(0x8B6F54),      Rgb(0x3F3B38),
                            Rgb(0x5B4A3C), Rgb(0x2F2A26), Rgb(0xFFFDF8, 0.82)};
/// What a black printer prints.
constexpr tPalette kPrint = {Rgb(0xFFFFFF),     kNone, Rgb(0x000000), Rgb(0x000000, 0.18), Rgb(0xFFFFFF),
                             Rgb(0x8C8C8C),     kNone, Rgb(0x000000), Rgb(0x000000),       Rgb(0x000000),
                             Rgb(0xFFFFFF, 0.9)};

struct tNamedCode {
    std::string_view name;
    eTrackStyle style;
};
/// In the order of their codes, from 1.
constexpr tNamedCode kStyles[] = {{"line", eTrackStyle::kCentreLine},
                                  {"filled", eTrackStyle::kFilledBed},
                                  {"plan", eTrackStyle::kPlan},
                                  {"bed", eTrackStyle::kRailsOnBed},
                                  {"sleepers", eTrackStyle::kSleepers}};
constexpr int kSecondSeries = 100;
} // namespace

eTrackStyle UTrackStyles::StyleOf(int code)
{
    const int index = code > kSecondSeries ? code - kSecondSeries : code;
    return index >= 1 && index <= static_cast<int>(std::size(kStyles)) ? kStyles[index - 1].style
                                                                       : eTrackStyle::kSleepers;
}

int UTrackStyles::CodeOf(std::string_view name)
{
    int code = 1;
    for (const tNamedCode& style : kStyles) {
        if (style.name == name) {
            return code;
        }
        ++code;
    }
    return 0;
}

const tPalette& UTrackStyles::PaletteOf(eTrackStyle style)
{
    return style == eTrackStyle::kPlan ? kPrint : kWarm;
}
