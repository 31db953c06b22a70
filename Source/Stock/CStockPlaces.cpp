#include "Stock/CStockPlaces.h"

#include <pugixml.hpp>

#include <algorithm>
#include <string_view>

tStockPlace CStockPlaces::Find(const pugi::xml_node& item, const pugi::xml_node& count)
{
    tStockPlace place;
    const size_t offset = OffsetOf(item);
    if (offset == std::string::npos || offset < mOffset) {
        return place;
    }
    const auto at = [this](size_t position) { return mBytes.begin() + static_cast<std::ptrdiff_t>(position); };
    mLine += static_cast<size_t>(std::count(at(mOffset), at(offset), '\n'));
    mOffset = offset;
    place.offset = offset;
    place.line = mLine;
    const size_t start = count ? OffsetOf(count) : offset;
    const size_t end = start != std::string::npos ? EndOfTag(start) : start;
    if (end == std::string::npos) {
        return tStockPlace();
    }
    place.needsTags = !count || mBytes[end - 2] == '/';
    place.countOffset = count && place.needsTags ? start : end;
    place.countLength = !place.needsTags ? std::min(mBytes.find('<', end), mBytes.size()) - end
                        : count          ? end - start
                                         : 0;
    return place;
}

/// Of the "<" of an element; npos where it stands at another place, as in a file that the parser has converted.
size_t CStockPlaces::OffsetOf(const pugi::xml_node& element) const
{
    const std::ptrdiff_t name = element.offset_debug();
    const std::string_view text = element.name();
    const bool isThere = name > 0 && static_cast<size_t>(name) <= mBytes.size() &&
                         mBytes[static_cast<size_t>(name) - 1] == '<' &&
                         mBytes.compare(static_cast<size_t>(name), text.size(), text) == 0;
    return isThere ? static_cast<size_t>(name) - 1 : std::string::npos;
}

/// Behind the ">" of the tag that begins there. A ">" may stand in the value of an attribute.
size_t CStockPlaces::EndOfTag(size_t offset) const
{
    char quote = 0;
    for (size_t at = offset; at < mBytes.size(); ++at) {
        const char character = mBytes[at];
        if (quote != 0) {
            quote = character == quote ? '\0' : quote;
        } else if (character == '>') {
            return at + 1;
        } else if (character == '"' || character == '\'') {
            quote = character;
        }
    }
    return std::string::npos;
}
