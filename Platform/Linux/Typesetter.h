// Lines of text in their fonts, for measuring and for drawing, which so agree. A part of libvelmora-text.so.
#pragma once

#include <cstddef>
#include <pango/pangocairo.h>

/// Lays lines out at 100 points, unhinted, whatever size is wanted: sizes then grow exactly with the font's, and each
/// font costs its start only once. Never destroyed, since other code may still measure during exit.
class CTypesetter {
public:
    /// The one of this process.
    static CTypesetter& Instance();

    /// @param font  name of an installed font, UTF-8; empty for the system font
    /// @param text,length  well-formed UTF-8 without control characters and line breaks
    /// @return the line, owned by the typesetter and good until the next call; null where no font can be had
    PangoLayout* LayOut(const char* font, const char* text, size_t length);

private:
    CTypesetter();

    PangoLayout* mLayout = nullptr; // null where there is no font
};
