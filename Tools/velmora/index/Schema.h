// The tables of an index file, and how a file of an older version becomes one of today's.
#pragma once

#include <span>

namespace Schema {
/// In the file's header ("VLIX"): what tells an index from other databases.
inline constexpr int kApplicationID = 0x564C4958;

/// The statements that lead from one version to the next; the first entry makes version 1 in an empty file. An entry
/// that was released is never changed: a file's version says which of them it has seen.
std::span<const char* const> GetSteps();
} // namespace Schema
