// A line that a caller of "serve" writes.
#pragma once

#include "output/JSON.h"

#include <string>

/// What a line asks for.
struct tServeRequest {
    JSON::tRecord id; ///< a string or a number; null for none
    std::string path; ///< any bytes
};

/// Takes a line apart: a JSON object with "path", or "path_base64", and perhaps "id".
/// @param request  its id is also set where the path is what is wrong
/// @return what is wrong with it, for people; null when nothing is
const char* ParseServeRequest(const std::string& line, tServeRequest& request);
