// Texts of documents and names of files are written by strangers: what each kind of output must do to them.
#pragma once

#include <string>
#include <string_view>

namespace Escapes {
/// For people to read, on a terminal or in a pipe: control characters (C0 with line breaks and tabs, DEL, C1), the
/// controls of writing direction, line and paragraph separators as \n, \t, \r, \xNN or \u{N}; invalid bytes as \xNN.
std::string ForTerminal(std::string_view text);

/// Content of an XML 1.0 element: markup characters and CR as references; what XML cannot carry is left out.
/// @param text  valid UTF-8
std::string ForXML(std::string_view text);

/// Appends a JSON string, with its quotes. @param text  valid UTF-8
void AppendJSON(std::string& json, std::string_view text);

/// A part of a URL: bytes other than letters, digits, "-._~" and "/" in percent signs.
std::string ForURL(std::string_view text);

/// RFC 4648, with padding.
std::string Base64(std::string_view bytes);

/// The bytes that a text in base 64 stands for. @return false when it is none
bool FromBase64(std::string_view text, std::string& bytes);
} // namespace Escapes
