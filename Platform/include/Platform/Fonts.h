// Fonts and text sizes. Nothing is initialised before the first question; answers are remembered.
#pragma once

#include "Platform/Export.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Platform {
/// Whether a font of this PostScript, full or family name (UTF-8, apart from case) is installed. No substitutes count.
/// On Linux the names are listed at the first question; what is installed afterwards is not seen.
PLATFORM_EXPORT bool IsFontInstalled(const std::string& name);

/// The number of names by which fonts are installed. Afterwards IsFontInstalled needs no file any more; on macOS it
/// never lists them, and this is 0.
PLATFORM_EXPORT size_t ListFonts();

/// The folders in which fonts lie, absolute; some may not exist. None on macOS.
PLATFORM_EXPORT std::vector<std::string> FontFolders();

/// Whether MeasureText measures; else it answers false at once, without looking for fonts or a text library. At first
/// it does. For a process that draws nothing and will not be able to open files.
PLATFORM_EXPORT void SetTextMeasuring(bool measures);

/// Size of a text set in one font.
/// @param font  font name, UTF-8; the system font serves where it is not installed
/// @param size  in points; 0 and less measure as 12, more than 2^31 - 1 as that
/// @param text  UTF-8; line breaks start new lines, control characters count as spaces,
///              malformed bytes as question marks
/// @param width,height  set to the size in points (72 per inch, one per layout unit); an empty text has width 0
/// @return false where no text library or no font at all can be had, or measuring is switched off; width and height are
/// then 0
PLATFORM_EXPORT bool MeasureText(const std::string& font, double size, const std::string& text, double& width,
                                 double& height);
} // namespace Platform
