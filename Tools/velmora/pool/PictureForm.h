// Whether a picture that a worker hands over is one of the kind that was asked for. A worker may be in the hands of the
// document that it read, and whoever looks at a plan must not be its next victim.
#pragma once

#include "protocol/Messages.h"

#include <string_view>

namespace PictureForm {
/// Looks at the frame of a picture, in time linear in its size.
/// - PNG: chunks that follow each other without a gap from the header to the end, none but those of colours and pixels;
/// not
///   larger than was asked for, for a thumbnail exactly as large.
/// - SVG: elements that draw, which refer to nothing outside of the picture; no scripts, styles, entities or handlers.
/// - PDF: begins and ends as such a file. What is in it is packed and stays unknown.
/// @return false for anything else
bool IsSound(const tPictureWish& wish, std::string_view bytes);
} // namespace PictureForm
