// The form of an XML property list.
#pragma once

#include <string>

namespace Platform {
/// Whether a text is a property list by its elements: a dictionary holds pairs of key and value and an array values,
/// nothing stands loose between them, and only texts and data may be empty. Foundation pairs what it finds, and would
/// save another list than was there. Values themselves are left to Foundation.
bool HasPropertyListForm(const std::string& bytes);
} // namespace Platform
