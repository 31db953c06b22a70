#include "pool/PictureForm.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {
template <size_t kCount>
bool IsOneOf(std::string_view name, const std::array<std::string_view, kCount>& names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool StartsWith(std::string_view text, std::string_view begin)
{
    return text.substr(0, begin.size()) == begin;
}

bool EndsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// A number of four bytes, the highest first.
/// @param bytes has them
uint32_t ReadNumber(std::string_view bytes)
{
    uint32_t number = 0;
    for (const char byte : bytes.substr(0, 4)) {
        number = number << 8 | static_cast<uint8_t>(byte);
    }
    return number;
}

bool IsSoundPNG(const tPictureWish& wish, std::string_view bytes)
{
    static constexpr std::string_view kSignature("\x89PNG\r\n\x1a\n", 8);
    static constexpr std::array<std::string_view, 6> kBetween = {"IDAT", "bKGD", "pHYs", "sRGB", "gAMA", "cHRM"};
    static constexpr size_t kAroundChunk = 12; // length, name, checksum
    if (!StartsWith(bytes, kSignature)) {
        return false;
    }
    bytes.remove_prefix(kSignature.size());
    for (bool isFirst = true; bytes.size() >= kAroundChunk; isFirst = false) {
        const uint32_t length = ReadNumber(bytes);
        const std::string_view name = bytes.substr(4, 4);
        if (length > bytes.size() - kAroundChunk || isFirst != (name == "IHDR")) {
            return false;
        }
        if (isFirst) {
            const uint32_t width = length == 13 ? ReadNumber(bytes.substr(8)) : 0;
            const uint32_t height = length == 13 ? ReadNumber(bytes.substr(12)) : 0;
            const bool isExact = width == wish.width && height == wish.height;
            const auto fits = [](uint32_t side, uint32_t most) { return side > 0 && (most == 0 || side <= most); };
            if (wish.isThumbnail ? !isExact : !fits(width, wish.width) || !fits(height, wish.height)) {
                return false;
            }
        } else if (name == "IEND") {
            return length == 0 && bytes.size() == kAroundChunk;
        } else if (!IsOneOf(name, kBetween)) {
            return false;
        }
        bytes.remove_prefix(length + kAroundChunk);
    }
    return false;
}

bool IsNameCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == ':' || character == '-';
}

/// Takes a name from the beginning.
std::string_view TakeName(std::string_view& text)
{
    const auto end = std::find_if_not(text.begin(), text.end(), IsNameCharacter);
    const std::string_view name = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(name.size());
    return name;
}

/// Whether an attribute names nothing outside of the picture and is nothing that a viewer would carry out.
bool IsHarmless(std::string_view name, std::string_view value)
{
    if (StartsWith(name, "on")) {
        return false;
    }
    if (name == "href" || name == "xlink:href") {
        return StartsWith(value, "#") || StartsWith(value, "data:image/png;base64,");
    }
    if (StartsWith(name, "xmlns")) {
        return true;
    }
    for (size_t at = value.find("url("); at != std::string_view::npos; at = value.find("url(", at + 1)) {
        if (!StartsWith(value.substr(at + 4), "#")) {
            return false;
        }
    }
    return value.find('&') == std::string_view::npos && value.find('\\') == std::string_view::npos &&
           value.find("import") == std::string_view::npos;
}

/// Takes an element's tag, from behind its name to behind its `>`.
bool TakeAttributes(std::string_view& text)
{
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(" \r\n\t/"), text.size()));
        if (StartsWith(text, ">")) {
            text.remove_prefix(1);
            return true;
        }
        const std::string_view name = TakeName(text);
        if (name.empty() || !StartsWith(text, "=\"")) {
            return false;
        }
        const size_t end = text.find('"', 2);
        if (end == std::string_view::npos || !IsHarmless(name, text.substr(2, end - 2))) {
            return false;
        }
        text.remove_prefix(end + 1);
    }
}

bool IsSoundSVG(std::string_view text)
{
    static constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    static constexpr std::array<std::string_view, 19> kElements = {
        "path",    "use",   "g",    "symbol",         "rect",          "circle",   "ellipse",
        "line",    "defs",  "svg",  "polyline",       "polygon",       "clipPath", "mask",
        "pattern", "image", "stop", "linearGradient", "radialGradient"};
    if (!StartsWith(text, kDeclaration) || !EndsWith(text, "</svg>\n")) {
        return false;
    }
    text.remove_prefix(kDeclaration.size());
    bool isFirst = true;
    // Between the tags is nothing but blanks: letters are drawn as outlines.
    while (!text.empty()) {
        text.remove_prefix(std::min(text.find_first_not_of(" \r\n\t"), text.size()));
        if (text.empty()) {
            break;
        }
        if (text[0] != '<') {
            return false;
        }
        text.remove_prefix(1);
        if (StartsWith(text, "/")) {
            text.remove_prefix(1);
        }
        const std::string_view name = TakeName(text);
        if ((isFirst && name != "svg") || !IsOneOf(name, kElements) || !TakeAttributes(text)) {
            return false;
        }
        isFirst = false;
    }
    return true;
}
} // namespace

bool PictureForm::IsSound(const tPictureWish& wish, std::string_view bytes)
{
    switch (wish.kind) {
    case ePictureKind::kPNG:
        return IsSoundPNG(wish, bytes);
    case ePictureKind::kSVG:
        return IsSoundSVG(bytes);
    case ePictureKind::kPDF:
        return StartsWith(bytes, "%PDF-") && EndsWith(bytes, "%%EOF\n");
    }
    return false;
}
