// From the bytes of an XML file to its nodes and back; the only place that knows the XML library's parser and writer.
#pragma once

#include "CXMLDocument/XMLTree.h"

#include <cstddef>
#include <memory>
#include <string>

namespace pugi {
class xml_document;
}

/// Why a file is no XML that is read here.
struct tXMLProblem {
    std::string text; ///< for people, without line breaks; empty where nothing is wrong
    size_t line =
        0; ///< of the fault, from 1; 0 for one of the whole file, or where its encoding has no bytes for lines
    size_t offset = 0; ///< of the fault, bytes, where the line is known
};

/// Reads and writes XML files. Nothing outside the file is ever read: document type declarations are passed over,
/// entities that they define stay as they are written.
class UXMLFile {
public:
    UXMLFile() = delete;

    /// Reads a file, up to one byte more than Parse takes. @return false when it cannot be opened or read
    static bool ReadBytes(const std::string& path, std::string& bytes);

    /// The file's nodes; texts of white space alone are left out, except at the level of the document.
    /// @return null for what is not one element with comments and the like around it, for malformed UTF-8, and, with a
    ///         warning, beyond the limits. UTF-16, UTF-32 and Latin-1 are told by their byte order mark or declaration.
    static std::unique_ptr<pugi::xml_document> Parse(const std::string& bytes);

    /// Why Parse gives null.
    static tXMLProblem FindProblem(const std::string& bytes);

    /// Both give the bytes of a file in UTF-8, an element a line. @return false, with a warning, beyond the limits
    static bool Format(const pugi::xml_document& document, std::string& bytes);
    /// @param tree  a document; its texts are written as they are, already escaped
    static bool Format(const tXMLTree& tree, std::string& bytes);
};
