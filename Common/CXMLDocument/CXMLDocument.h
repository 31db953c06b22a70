// An XML document as a tree of nodes.
#pragma once

#include "CXMLDocument/CXMLTreeNode.h"
#include "Platform/FileReference.h"

#include <CoreFoundation/CoreFoundation.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace pugi {
class xml_document;
}

/// Owns the nodes of a document and finds them by key. A new document consists of its root and the XML declaration.
///
/// What Write writes is the document's tree: that of the nodes or, once a file was read, the tree of that file with its
/// comments and attributes, which no node stands for. Nodes added after reading are found, but not written.
class CXMLDocument {
public:
    /// Key of the root.
    static constexpr char kRootID[] = "XML_DOCUMENT";
    /// Key of the XML declaration.
    static constexpr char kProcInstID[] = "xml";

    CXMLDocument();
    CXMLDocument(const CXMLDocument&) = delete;
    CXMLDocument& operator=(const CXMLDocument&) = delete;
    virtual ~CXMLDocument();

    /// Adds a node below another, which owns it from then on. A parent that cannot have children is fatal.
    /// @return false for a child without a key (an empty text), which is not added and stays the caller's
    bool AddNode(CXMLNode* parent, CXMLNode* child);
    /// Adds a node below the one with that key. @return false also where no node or several have it
    bool AddNode(const char* parentKey, CXMLNode* child);

    /// @return the node with that key (Mac OS Roman) that was added first, or null
    CXMLNode* GetNodeByKey(const char* key) const;
    /// Appends every node with that key, in the order in which they were added.
    void GetNodesWithKey(const char* key, std::vector<CXMLNode*>& nodes) const;

    /// Adds a node below the root for each element and text of a file; comments, instructions and the like are left out
    /// with what is below them, as are texts of white space alone. A file that cannot be read changes nothing. Where it
    /// is not XML, not UTF-8, or beyond the limits of UXMLFile, the nodes stay as they are, and the document cannot be
    /// written any more.
    /// @param path  as for Platform::CInputFile
    /// @return false when the file cannot be read
    bool Read(const char* path);
    void Read(CFURLRef file);
    void Read(const FSRef& file);

    /// Replaces a file by the document, in UTF-8. @return false when it was not written whole, or would be beyond the
    /// limits of UXMLFile; an old file then stays
    bool Write(const char* path) const;
    bool Write(CFURLRef file) const;

    /// Destroys all nodes. The document is of no use afterwards.
    void DeleteTree();

private:
    /// Makes the nodes of what was read.
    void BuildNodes();

    CXMLDocumentNode* mRoot = nullptr;           ///< owned
    const tXMLTree* mTree = nullptr;             ///< what is written; null after reading
    std::unique_ptr<pugi::xml_document> mParsed; ///< what is written after reading
    std::multimap<std::string, CXMLNode*> mNodesByKey;
};
