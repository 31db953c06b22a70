// Which paths a folder holds.
#pragma once

#include <string>

/// Whether a path is the folder's own or lies at any depth below it. Both absolute, without "." and "..".
inline bool LiesIn(const std::string& path, const std::string& folder)
{
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}
