// What people call the attributes of documents.
#pragma once

#include "protocol/Messages.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace AttributeNames {
/// "Author" for kMDItemAuthors; the name itself where it has no other, any characters.
std::string GetLabel(const std::string& name);

/// The attribute that a word means: its name or its label, in capitals or not. The exact name counts first.
/// @param declared  the attributes that there are; where there are none every name may be one
/// @return none for a word that means no attribute
std::optional<std::string> Find(std::string_view word, const std::vector<tSchemaAttribute>& declared);

/// The attributes that there are, with their labels, for a message.
std::string List(const std::vector<tSchemaAttribute>& declared);
} // namespace AttributeNames
