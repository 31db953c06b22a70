// What can be asked of a picture, and what is said of one.
#pragma once

#include "commands/CReport.h"
#include "output/JSON.h"
#include "protocol/Messages.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PictureWish {
const std::vector<std::string>& GetStyles();

/// Takes "WIDTHxHEIGHT". @return false for a text that is none, or more pixels than a picture may have
bool ParseSize(std::string_view text, tPictureWish& wish);
/// What is wrong with a text that is no size: "is no ...".
extern const char* const kNoSize;

/// Takes the side of a thumbnail. @return false for what is none
bool ParseSide(std::string_view text, tPictureWish& wish);
extern const char* const kNoSide;

/// The kind that a format's name stands for, or, where that is empty, the ending of a file's name; none when it tells
/// nothing.
std::optional<ePictureKind> FindKind(const std::string& format, const std::string& file);
const char* GetName(ePictureKind kind);

/// A record of a picture: what it shows and what it leaves out.
/// @param output  where it was written; empty to leave it out
JSON::tRecord Describe(const std::string& path, const std::string& output, ePictureKind kind, const CReport& report);
} // namespace PictureWish
