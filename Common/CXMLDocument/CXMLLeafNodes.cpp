#include "CXMLDocument/CXMLLeafNodes.h"

#include "CXMLDocument/CXMLDocument.h"
#include "CheckError/CErr.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string_view>

namespace {
constexpr int kDecimals = 5;
/// Bytes of the longest entity below.
constexpr size_t kLongestEntity = 6;
/// Bytes for the longest double before its point.
constexpr size_t kLongestDouble = 320;
constexpr int kMostDecimals = 100;

std::string_view EntityOf(const char& character)
{
    switch (character) {
    case '&':
        return "&amp;";
    case '>':
        return "&gt;";
    case '<':
        return "&lt;";
    case '\'':
        return "&apos;";
    default: // the double quote among them: it means something in attributes only
        return {&character, 1};
    }
}

std::string Escaped(const std::string& text, const char* function)
{
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[text.size() * kLongestEntity + 1]);
    CErr::CheckNull(buffer.get(), function, "Failed to allocate local string buffer");
    char* end = buffer.get();
    for (const char& character : text) {
        const std::string_view entity = EntityOf(character);
        end = std::copy(entity.begin(), entity.end(), end);
    }
    return std::string(buffer.get(), end);
}

std::string NumberAsText(double number, int decimals)
{
    char format[16];
    snprintf(format, sizeof format, "%%.%df", std::clamp(decimals, 0, kMostDecimals));
    char text[kLongestDouble + kMostDecimals];
    snprintf(text, sizeof text, format, number);
    return text;
}
} // namespace

CXMLProcInstNode::CXMLProcInstNode()
{
    Create(eXMLNodeType::kProcessingInstruction, CXMLDocument::kProcInstID, "CXMLProcInstNode::CXMLProcInstNode()");
}

void CXMLProcInstNode::GetValueAsString(char* /*buffer*/, int /*size*/) const {}

CXMLTextNode::CXMLTextNode(const char* text, CFStringEncoding encoding)
{
    static constexpr char kFunction[] = "CXMLTextNode::CXMLTextNode(const char *, CFStringEncoding)";
    Create(eXMLNodeType::kText, Escaped(MakeText(text, encoding, kFunction), kFunction), kFunction);
}

CXMLTextNode::CXMLTextNode(int number)
{
    Create(eXMLNodeType::kText, std::to_string(number), "CXMLTextNode::CXMLTextNode(int)");
}

CXMLTextNode::CXMLTextNode(double number)
{
    Create(eXMLNodeType::kText, NumberAsText(number, kDecimals), "CXMLTextNode::CXMLTextNode(double)");
}

CXMLTextNode::CXMLTextNode(double number, int decimals)
{
    Create(eXMLNodeType::kText, NumberAsText(number, decimals), "CXMLTextNode::CXMLTextNode(double, int)");
}

int CXMLTextNode::GetValueAsInteger() const
{
    char value[kKeySize] = "";
    GetValueAsString(value, sizeof value);
    using tLimits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<long long>(std::strtoll(value, nullptr, 10), tLimits::min(), tLimits::max()));
}

void CXMLTextNode::GetValueAsString(char* buffer, int size) const
{
    GetKey(buffer, size);
}

double CXMLTextNode::GetValueAsDouble() const
{
    char value[kKeySize] = "";
    GetValueAsString(value, sizeof value);
    return std::strtod(value, nullptr);
}
