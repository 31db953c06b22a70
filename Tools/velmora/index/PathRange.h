// Where the paths below a folder lie among all paths.
#pragma once

#include <string>

/// The paths below a folder are those from "folder/" up to, not including, "folder0": '0' follows '/'.
struct tPathRange {
    explicit tPathRange(const std::string& folder)
    {
        from = folder.ends_with('/') ? folder : folder + "/";
        to = from.substr(0, from.size() - 1) + "0";
    }
    std::string from;
    std::string to;
};
