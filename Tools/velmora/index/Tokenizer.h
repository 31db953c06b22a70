// How the index divides texts into words.
#pragma once

#include <string>
#include <vector>

struct sqlite3;

/// The words of an index: runs of letters and digits, in lower case and without diacritics, as SQLite's "unicode61"
/// makes them. Letters that have no such decomposition become what people without the key write (ss for ß, ae for æ,
/// oe for œ, o for ø, d for đ, l for ł). A word with ä, ö or ü also stands in the index as ae, oe or ue spell it, so
/// that "Mueller" and "Muller" both find "Müller", and "Müller" finds both.
namespace Tokenizer {
/// The name under which a schema asks for it; "unicode61 remove_diacritics 2" must follow it there.
inline constexpr const char* kName = "velmora";

/// Makes it known to a connection; needed before any statement that touches the words. @return false without FTS5
bool Register(sqlite3* connection);

/// The words of a text; spellings with ae, oe and ue stand behind their word.
/// Empty for a text without letters and digits.
std::vector<std::string> Split(sqlite3* connection, const std::string& text);
} // namespace Tokenizer
