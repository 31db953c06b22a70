// The nodes that have nodes below them: elements and the document itself.
#pragma once

#include "CXMLDocument/CXMLNode.h"

#include <vector>

/// A node that owns others, in their order in the document.
class CXMLTreeNode : public CXMLNode {
public:
    using tNodes = std::vector<CXMLNode*>;

    /// Destroys everything below, without recursion.
    ~CXMLTreeNode() override;

    /// Appends a node and owns it from then on. Does not make it known to a document: see CXMLDocument::AddNode.
    void AddChild(CXMLNode* child) { mChildren.push_back(child); }
    /// Replaces `children` by the nodes right below. @return their number
    int GetChildren(tNodes& children) const;
    /// @return the first node right below with that key, or null
    CXMLNode* GetChildForKey(const char* key) const;
    /// @return the first node right below, or null
    CXMLNode* GetFirstChild() const { return mChildren.empty() ? nullptr : mChildren.front(); }

private:
    tNodes mChildren;
};

/// The root of a document.
class CXMLDocumentNode : public CXMLTreeNode {
public:
    /// Documents are written as UTF-8 whatever their encoding is said to be.
    explicit CXMLDocumentNode(CFStringEncoding encoding);
};

/// An element without attributes.
class CXMLElementNode : public CXMLTreeNode {
public:
    /// @param name  must be well-formed in its encoding; whether it is a name in the sense of XML is not checked
    CXMLElementNode(const char* name, CFStringEncoding encoding);
};
