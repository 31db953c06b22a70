// Names for the pictures of many documents.
#pragma once

#include "input/CDocumentSource.h"

#include <cstddef>
#include <string>
#include <unordered_map>

/// Gives each document of a run a file of its own in a folder: DIR/plan.png for a document that was named as
/// ANYWHERE/plan.velmora, DIR/club/plan.png for one that was found as club/plan.velmora below a named folder. Where
/// another document has that name already, it gets -2, -3 and so on. So the same documents, named in the same order,
/// always get the same files.
class CPictureNames {
public:
    /// @param ending  without its dot
    CPictureNames(std::string folder, std::string ending) : mFolder(std::move(folder)), mEnding(std::move(ending)) {}

    /// The file for the next document.
    std::string Take(const tInput& input);

private:
    std::string mFolder;
    std::string mEnding;
    /// The number that the next document of a name gets, by the name's hash: there may be very many. Two names of one
    /// hash cost one of them a number that it does not need.
    std::unordered_map<size_t, unsigned> mNext;
};
