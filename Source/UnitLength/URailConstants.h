// Scales of model railways.
#pragma once

#include <cstddef>
#include <string>

/// What belongs to a scale. Codes 11 to 22 are scales, 20 the one that users define; every other code is unknown and
/// gets harmless values. Lengths in mm.
class URailConstants {
public:
    /// Scale codes as track libraries and elements store them.
    enum eScale : int {
        kScaleZ = 11,
        kScaleN = 12,
        kScaleTT = 13,
        kScaleH0e = 14,
        kScaleH0m = 15,
        kScaleH0 = 16,
        kScale0 = 17,
        kScaleI = 18,
        kScaleIIm = 19,
        kScaleCustom = 20,
        kScaleS = 21,
        kScale00 = 22,
        kScaleDefault = kScaleH0
    };

    /// Bytes that every scale text fits in, with its zero.
    static constexpr size_t kTextSize = 16;

    /// Model size divided by real size, 1/87 for H0; 1 for the custom scale and unknown codes.
    static double GetModelScale(int scale);

    /// Track gauge; 1 for unknown codes.
    static double GetModelScaleTW(int scale);

    /// Rail width that a new track library starts with; 1 for unknown codes.
    static double GetDefaultRailWidth(int scale);

    /// Name of the scale, in the long form followed by its ratio: "H0", "H0  (1:87)". "Custom Scale" in both forms;
    /// "???" for unknown codes.
    /// @param text  takes the text, cut to `size` bytes with its zero
    /// @return text
    static char* GetModelScaleTxt(char* text, int scale, bool shortForm, size_t size = kTextSize);
    static std::string GetModelScaleTxt(int scale, bool shortForm);

    /// Clearance profile after NEM 102; 100 for unknown codes.
    static double NEM102_GetMaxHeight(int scale);
    static double NEM102_GetMaxWidth(int scale);
};
