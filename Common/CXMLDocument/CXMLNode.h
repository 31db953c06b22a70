// A node of an XML document.
#pragma once

#include "CXMLDocument/XMLTree.h"
#include "Platform/Released.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <string>

/// Base of all nodes. A node is known by its key: an element by its name, a text by its characters (escaped, see
/// CXMLTextNode), the XML declaration by "xml", the document by "XML_DOCUMENT". Upper and lower case differ.
class CXMLNode {
public:
    /// Bytes of the buffers, with the terminating zero, in which keys are compared.
    static constexpr int kKeySize = 256;

    CXMLNode(const CXMLNode&) = delete;
    CXMLNode& operator=(const CXMLNode&) = delete;
    virtual ~CXMLNode() = default;

    /// The key; owned by the node. Null for a node that no subclass made.
    CFStringRef GetKey() const;
    /// The key in Mac OS Roman, cut to `size` bytes with its zero; what that character set lacks comes as "?". A node
    /// that no subclass made leaves the buffer alone. @return the buffer
    char* GetKey(char* buffer, int size) const;
    /// The key in UTF-8, whole; empty for a node that no subclass made.
    std::string GetKeyInUtf8() const { return mNode ? mNode->text : std::string(); }
    /// Whether the key in Mac OS Roman, cut to kKeySize, is that text, byte for byte.
    bool VerifyKey(const char* key) const;
    /// Nodes with the same key are equal, whatever they are.
    bool operator==(const CXMLNode& other) const;

    /// Converts a text to UTF-8. @return false when it is malformed in its encoding; `utf8` is then untouched
    static bool ConvertText(const char* text, CFStringEncoding encoding, std::string& utf8);

    /// The node with what was added below it through its document; owned by the node.
    tXMLTree* GetCFXMLTree() const { return mTree.get(); }

protected:
    CXMLNode() = default;
    /// Makes node and tree. Running out of memory is fatal.
    /// @param function  signature text for the report
    void Create(eXMLNodeType type, std::string text, const char* function);
    /// The text as UTF-8. Text that is malformed in its encoding is fatal.
    /// @param function  signature text for the report
    static std::string MakeText(const char* text, CFStringEncoding encoding, const char* function);

private:
    std::unique_ptr<tXMLNode> mNode;
    std::unique_ptr<tXMLTree> mTree;
    mutable Platform::tReleased<CFStringRef> mKey; ///< made when it is first asked for
};
