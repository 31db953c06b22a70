// Short ways through XML nodes.
#pragma once

#include <string>

class CXMLDocument;
class CXMLElementNode;
class CXMLNode;
class CXMLTextNode;
class CXMLTreeNode;

namespace pugi {
class xml_node;
}

/// Helpers for documents whose values are elements with one text each. Keys and values are Mac OS Roman; values come as
/// text nodes hold them, escaped.
class UXML {
public:
    UXML() = delete;

    /// A new node for an element or a text of a parsed file, which the caller owns. Null for every other kind and for
    /// names and texts of more than 1,023 bytes in UTF-8.
    static CXMLNode* CreateCXMLNodeFromCFXMLNode(const pugi::xml_node& node);
    /// A new element, added below a node of the document. @return null for an empty name
    static CXMLElementNode* CreateCXMLElementNodeForParentNode(CXMLDocument* document, CXMLNode* parent,
                                                               const char* name);

    /// @return the first node right below with that key, or null
    static CXMLNode* GetChildNodeWithKey(const CXMLTreeNode* node, const char* key);
    /// @return the first node below the element if that is a text, else null
    static CXMLTextNode* GetTextChildNodeOfElement(const CXMLElementNode* element);

    // Values of an element's text. Without one: false, with the buffer as it was, 0 or 0.0.
    static bool GetValueAsStringFromTextChildNode(const CXMLElementNode* element, char* buffer, int size);
    static int GetValueAsIntegerFromTextChildNode(const CXMLElementNode* element);
    static double GetValueAsDoubleFromTextChildNode(const CXMLElementNode* element);

    // The same of the first node with that key right below, where that is an element.
    static bool GetValueAsStringForElementChildNode(const CXMLTreeNode* node, const char* key, char* buffer, int size);
    static int GetValueAsIntegerForElementChildNode(const CXMLTreeNode* node, const char* key);
    static double GetValueAsDoubleForElementChildNode(const CXMLTreeNode* node, const char* key);

    /// The plain text of a text node's value. Each entity is replaced once; what is none stays.
    static std::string Unescape(const char* value);
};
