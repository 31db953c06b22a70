// Texts of the samples: written in UTF-8 here, stored in Mac OS Roman.
#pragma once

#include <string>

/// The text in Mac OS Roman. One with a character outside that set is a mistake in the samples: the program ends.
std::string RomanText(const char* utf8);
