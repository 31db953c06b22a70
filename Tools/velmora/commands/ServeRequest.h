// A line that a caller of "serve" writes, and what is said to it.
#pragma once

#include "commands/SearchRecords.h"
#include "output/JSON.h"
#include "protocol/Messages.h"

#include <string>
#include <vector>

enum class eServed { kImport, kCheck, kParts, kRender, kThumbnail, kSearch };

/// What a line asks for.
struct tServeRequest {
    JSON::tRecord id; ///< a string or a number; null for none
    eServed verb = eServed::kImport;
    std::string path;         ///< any bytes
    tPictureWish picture;     ///< for kRender and kThumbnail, as what follows
    std::string output;       ///< an absolute path for the picture; empty to have it in the answer
    bool force = false;       ///< what is there may be replaced
    tSearchQuestion question; ///< for kSearch, which has no path

    bool IsPicture() const { return verb == eServed::kRender || verb == eServed::kThumbnail; }
};

namespace ServeRequest {
/// The words that requests begin with, in the order of eServed.
const std::vector<std::string>& GetVerbs();

/// Takes a line apart: a JSON object with "path", or "path_base64", and perhaps "id", "verb" and what the verb takes; a
/// search has no path.
/// @param request  its id is also set where something else is wrong
/// @return what is wrong with it, for people; empty when nothing is
std::string Parse(const std::string& line, tServeRequest& request);

/// The line that answers a request about a document. @param answer  of the worker, or a failure; its report is used up
std::string Answer(const tServeRequest& request, tAnswer answer);

/// The line that answers what is no request, or what cannot be searched.
/// @param code  of the failure
std::string Refuse(const JSON::tRecord& id, const std::string& problem, const char* code = "request");
} // namespace ServeRequest
