// Which file system a path is on.
#pragma once

#include <string>

namespace FileSystemName {
/// What tells a file system from others, and stays the same when it is mounted again: the UUID of its device where the
/// system lists devices by it, else the number that the kernel gives it. That number is made of the UUID
/// (ext4, btrfs) or of the device's (FAT, XFS), which may differ after a restart: so another name is a hint, no proof.
/// @return empty when there is nothing of that path, or it cannot be looked at
std::string Of(const std::string& path);
} // namespace FileSystemName
