// Which paths a folder holds.
#pragma once

#include <algorithm>
#include <string>

/// Whether a path is the folder's own or lies at any depth below it. Both absolute, without "." and "..".
inline bool LiesIn(const std::string& path, const std::string& folder)
{
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

/// The folder that holds what an absolute path names; the root's is itself.
inline std::string FolderOf(const std::string& path)
{
    return path.substr(0, std::max<size_t>(path.rfind('/'), 1));
}
