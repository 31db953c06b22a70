#include "UnitLength/URailConstants.h"

#include "KVUStr/KVUStr.h"

namespace {
struct tScale {
    const char* name;
    const char* ratioText; ///< follows the name in the long form
    double ratio;          ///< real size divided by model size
    double gauge;          ///< mm, as the next three
    double railWidth;
    double maxHeight; ///< clearance profile after NEM 102
    double maxWidth;
};

// In the order of the codes, from kScaleZ on. The names of the H0 family are written with the digit zero.
constexpr tScale kScales[] = {
    {"Z", "  (1:220)", 220.0, 6.5, 0.5, 27.0, 20.0},      {"N", "  (1:160)", 160.0, 9.0, 0.7, 37.0, 27.0},
    {"TT", "  (1:120)", 120.0, 12.0, 0.8, 48.0, 36.0},    {"H0e", "  (1:87)", 87.0, 9.0, 0.9, 65.0, 48.0},
    {"H0m", "  (1:87)", 87.0, 12.0, 0.9, 65.0, 48.0},     {"H0", "  (1:87)", 87.0, 16.5, 0.9, 65.0, 48.0},
    {"0", "  (1:45)", 45.0, 32.0, 1.6, 120.0, 94.0},      {"I", "  (1:32)", 32.0, 45.0, 2.3, 165.0, 130.0},
    {"IIm", "  (1:22,5)", 22.5, 45.0, 1.3, 235.0, 184.0}, {"Custom Scale", "", 1.0, 50.0, 5.0, 250.0, 200.0},
    {"S", "  (1:64)", 64.0, 22.45, 1.1, 87.0, 66.0},      {"00", "  (1:76)", 76.0, 16.5, 1.1, 87.0, 66.0},
};
constexpr tScale kUnknown = {"???", "", 1.0, 1.0, 1.0, 100.0, 100.0};

static_assert(sizeof kScales / sizeof kScales[0] == URailConstants::kScale00 - URailConstants::kScaleZ + 1);

const tScale& ScaleOf(int code)
{
    return code >= URailConstants::kScaleZ && code <= URailConstants::kScale00 ? kScales[code - URailConstants::kScaleZ]
                                                                               : kUnknown;
}
} // namespace

double URailConstants::GetModelScale(int scale)
{
    return 1.0 / ScaleOf(scale).ratio;
}

double URailConstants::GetModelScaleTW(int scale)
{
    return ScaleOf(scale).gauge;
}

double URailConstants::GetDefaultRailWidth(int scale)
{
    return ScaleOf(scale).railWidth;
}

char* URailConstants::GetModelScaleTxt(char* text, int scale, bool shortForm, size_t size)
{
    KVUStr::strncpy(text, GetModelScaleTxt(scale, shortForm).c_str(), size);
    return text;
}

std::string URailConstants::GetModelScaleTxt(int scale, bool shortForm)
{
    const tScale& found = ScaleOf(scale);
    return shortForm ? found.name : std::string(found.name) + found.ratioText;
}

double URailConstants::NEM102_GetMaxHeight(int scale)
{
    return ScaleOf(scale).maxHeight;
}

double URailConstants::NEM102_GetMaxWidth(int scale)
{
    return ScaleOf(scale).maxWidth;
}
