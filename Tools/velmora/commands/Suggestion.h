// What somebody may have meant who has mistyped a word.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Suggestion {
/// The word that takes the fewest edits, at most two and fewer than it has letters; a word's capitals are no edits.
/// @return empty when none is near
std::string Find(std::string_view mistyped, const std::vector<std::string>& words);

/// Such a word as the end of a message: "; did you mean 'import'?". @return empty when there is none
std::string Ask(std::string_view mistyped, const std::vector<std::string>& words);
} // namespace Suggestion
