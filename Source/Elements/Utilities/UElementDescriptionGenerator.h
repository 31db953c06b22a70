// Descriptions of elements that no library describes.
#pragma once

/// Makes descriptions. Each lies in a static buffer of its function: valid until its next call, for one thread only.
class UElementDescriptionGenerator {
public:
    UElementDescriptionGenerator() = delete;

    /// Of a flexible track.
    /// @param unit       a code of UUnits; an unknown one is fatal
    /// @param maxLength  of one piece, mm
    static char* GetGenericFlexElementDescription(int unit, double maxLength);
};
