// The nodes without others below them: texts and the XML declaration.
#pragma once

#include "CXMLDocument/CXMLNode.h"

/// A node that has a value instead of children.
class CXMLLeafNode : public CXMLNode {
public:
    /// @return the number that the value begins with; 0 where there is none
    virtual int GetValueAsInteger() const = 0;
    /// The value in Mac OS Roman, cut to `size` bytes with its zero.
    virtual void GetValueAsString(char* buffer, int size) const = 0;
};

/// The XML declaration: version="1.0". It has no value.
class CXMLProcInstNode : public CXMLLeafNode {
public:
    CXMLProcInstNode();

    int GetValueAsInteger() const override { return 0; }
    /// Leaves the buffer alone.
    void GetValueAsString(char* buffer, int size) const override;
};

/// Characters. They are held, handed out and written with & > < and ' as entities, each escaped once, however often the
/// text went through a file; UXML::Unescape gives the plain text back.
class CXMLTextNode : public CXMLLeafNode {
public:
    /// @param text  plain; must be well-formed in its encoding
    CXMLTextNode(const char* text, CFStringEncoding encoding);
    explicit CXMLTextNode(int number);
    /// Five decimals.
    explicit CXMLTextNode(double number);
    CXMLTextNode(double number, int decimals);

    /// Clamped to 32 bits.
    int GetValueAsInteger() const override;
    /// Characters that Mac OS Roman lacks come as "?".
    void GetValueAsString(char* buffer, int size) const override;
    /// @return the number that the value begins with; 0.0 where there is none
    double GetValueAsDouble() const;
};
