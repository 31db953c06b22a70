#include "commands/PictureWish.h"

#include "Bounds.h"

#include <algorithm>
#include <charconv>

const char* const PictureWish::kNoSize = "is no WIDTHxHEIGHT in pixels, each at most 16384 and 50 million together";
const char* const PictureWish::kNoSide = "is no number of pixels, at most 2048";

const std::vector<std::string>& PictureWish::GetStyles()
{
    static const std::vector<std::string> sStyles = {"line", "filled", "plan", "bed", "sleepers"};
    return sStyles;
}

static bool ParseNumber(std::string_view text, uint32_t most, uint32_t& number)
{
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && number >= 1 && number <= most;
}

bool PictureWish::ParseSize(std::string_view text, tPictureWish& wish)
{
    const size_t cross = text.find_first_of("xX");
    return cross != std::string_view::npos &&
           ParseNumber(text.substr(0, cross), Bounds::kMostPictureSide, wish.width) &&
           ParseNumber(text.substr(cross + 1), Bounds::kMostPictureSide, wish.height) &&
           uint64_t{wish.width} * wish.height <= uint64_t{Bounds::kMostPicturePixels};
}

bool PictureWish::ParseSide(std::string_view text, tPictureWish& wish)
{
    const bool isGood = ParseNumber(text, Bounds::kMostThumbnailSide, wish.width);
    wish.height = wish.width;
    wish.isThumbnail = true;
    return isGood;
}

static bool EndsWith(const std::string& path, std::string_view suffix)
{
    return path.size() >= suffix.size() &&
           std::equal(suffix.begin(), suffix.end(), path.end() - static_cast<std::ptrdiff_t>(suffix.size()),
                      [](char one, char other) { return one == (other >= 'A' && other <= 'Z' ? other + 32 : other); });
}

std::optional<ePictureKind> PictureWish::FindKind(const std::string& format, const std::string& file)
{
    for (const ePictureKind kind : {ePictureKind::kSVG, ePictureKind::kPNG, ePictureKind::kPDF}) {
        const std::string name = GetName(kind);
        if (format.empty() ? EndsWith(file, "." + name) : format == name) {
            return kind;
        }
    }
    return std::nullopt;
}

const char* PictureWish::GetName(ePictureKind kind)
{
    return kind == ePictureKind::kSVG ? "svg" : kind == ePictureKind::kPDF ? "pdf" : "png";
}

JSON::tRecord PictureWish::Describe(const std::string& path, const std::string& output, ePictureKind kind,
                                    const CReport& report)
{
    JSON::tRecord record;
    JSON::PutPath(record, "path", path);
    record["ok"] = true;
    if (!output.empty()) {
        JSON::PutPath(record, "output", output);
    }
    record["format"] = GetName(kind);
    for (const char* number : {"width", "height", "elements", "strays", "simplified", "left_out", "labels_left_out"}) {
        record[number] = report.GetNumber(number);
    }
    return record;
}
