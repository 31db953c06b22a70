// Where things stand in the bytes of a stock file.
#pragma once

#include <cstddef>
#include <string>

namespace pugi {
class xml_node;
}

/// The place of an entry. Everything is 0 in files that are not UTF-8.
struct tStockPlace {
    size_t offset = 0;      ///< of the entry's first byte
    size_t line = 0;        ///< that it begins in, from 1
    size_t countOffset = 0; ///< of the bytes that another count replaces
    size_t countLength = 0; ///< how many these are
    bool needsTags = false; ///< the other count comes with its element around it
};

/// Finds places for the nodes that were parsed from a file, in their order: each byte is looked at a few times only.
class CStockPlaces {
public:
    /// @param bytes  the file's; not owned
    explicit CStockPlaces(const std::string& bytes) : mBytes(bytes) {}

    /// @param item   an element that comes behind those of the calls before
    /// @param count  an element in it; null for none
    tStockPlace Find(const pugi::xml_node& item, const pugi::xml_node& count);

private:
    size_t OffsetOf(const pugi::xml_node& element) const;
    size_t EndOfTag(size_t offset) const;

    const std::string& mBytes;
    size_t mOffset = 0; ///< up to here lines are counted
    size_t mLine = 1;
};
