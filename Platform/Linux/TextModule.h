// What libvelmora-text.so offers to the rest of Platform. It alone needs the libraries that lay text out and draw,
// which take several milliseconds to start and start threads: it is loaded when something is measured or drawn for the
// first time.
#pragma once

#include "Platform/Drawing.h"

#include <cstddef>
#include <string>

/// Name under which the module exports its measuring function.
inline constexpr char kMeasureLineName[] = "VelmoraMeasureLine";

/// Measures one line of text, set in points at 100 pt.
/// @param font  name of an installed font, UTF-8; empty for the system font
/// @param text,length  well-formed UTF-8 without control characters and line breaks, at most 1,000 characters
/// @param width,height  set to the line's logical size; an empty text has the height of a line
/// @return false where no font can be used at all; width and height are then untouched
/// Not for several threads at a time.
using tMeasureLine = bool (*)(const char* font, const char* text, size_t length, double* width, double* height);

inline constexpr double kMeasuredSize = 100; ///< point size at which the module measures

/// What a picture asks of the library that loaded the module.
struct tTextServices {
    bool (*measureText)(const std::string& font, double size, const std::string& text, double& width, double& height);
    /// The name under which the module finds a font; empty for the system font, where that name is not installed.
    std::string (*findFont)(const std::string& name);
};

inline constexpr char kBeginPictureName[] = "VelmoraBeginPicture";

/// Begins a picture, owned by the caller; the services must outlive it. @return null when it cannot be had
using tBeginPicture = Platform::CPicture* (*)(Platform::ePictureFormat format, int width, int height,
                                              const tTextServices* services);

/// A function of the module, loaded where that has not been done; null where it cannot be had. In libvelmora-platform.
void* FindInTextModule(const char* name);

/// The name by which the module knows an installed font, or an empty one. In libvelmora-platform.
std::string FindFontForModule(const std::string& name);
