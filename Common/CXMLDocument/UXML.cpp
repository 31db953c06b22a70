#include "CXMLDocument/UXML.h"

#include "Bounds.h"
#include "CXMLDocument/CXMLDocument.h"
#include "CXMLDocument/CXMLLeafNodes.h"
#include "CXMLDocument/CXMLTreeNode.h"

#include <pugixml.hpp>

#include <memory>
#include <string_view>

namespace {
const CXMLElementNode* ElementBelow(const CXMLTreeNode* node, const char* key)
{
    return dynamic_cast<const CXMLElementNode*>(UXML::GetChildNodeWithKey(node, key));
}
} // namespace

CXMLNode* UXML::CreateCXMLNodeFromCFXMLNode(const pugi::xml_node& node)
{
    const bool isElement = node.type() == pugi::node_element;
    if (!isElement && node.type() != pugi::node_pcdata) {
        return nullptr;
    }
    // A parsed file may hold malformed text after all: a reference can name half a surrogate pair.
    std::string text;
    if (!CXMLNode::ConvertText(isElement ? node.name() : node.value(), kCFStringEncodingUTF8, text) ||
        text.size() > Bounds::kMostXMLText) {
        return nullptr;
    }
    if (isElement) {
        return new CXMLElementNode(text.c_str(), kCFStringEncodingUTF8);
    }
    return new CXMLTextNode(text.c_str(), kCFStringEncodingUTF8);
}

CXMLElementNode* UXML::CreateCXMLElementNodeForParentNode(CXMLDocument* document, CXMLNode* parent, const char* name)
{
    auto element = std::make_unique<CXMLElementNode>(name, kCFStringEncodingMacRoman);
    return document->AddNode(parent, element.get()) ? element.release() : nullptr;
}

CXMLNode* UXML::GetChildNodeWithKey(const CXMLTreeNode* node, const char* key)
{
    return node->GetChildForKey(key);
}

CXMLTextNode* UXML::GetTextChildNodeOfElement(const CXMLElementNode* element)
{
    return dynamic_cast<CXMLTextNode*>(element->GetFirstChild());
}

bool UXML::GetValueAsStringFromTextChildNode(const CXMLElementNode* element, char* buffer, int size)
{
    const CXMLTextNode* const text = GetTextChildNodeOfElement(element);
    if (text == nullptr) {
        return false;
    }
    text->GetValueAsString(buffer, size);
    return true;
}

int UXML::GetValueAsIntegerFromTextChildNode(const CXMLElementNode* element)
{
    const CXMLTextNode* const text = GetTextChildNodeOfElement(element);
    return text != nullptr ? text->GetValueAsInteger() : 0;
}

double UXML::GetValueAsDoubleFromTextChildNode(const CXMLElementNode* element)
{
    const CXMLTextNode* const text = GetTextChildNodeOfElement(element);
    return text != nullptr ? text->GetValueAsDouble() : 0.0;
}

bool UXML::GetValueAsStringForElementChildNode(const CXMLTreeNode* node, const char* key, char* buffer, int size)
{
    const CXMLElementNode* const element = ElementBelow(node, key);
    return element != nullptr && GetValueAsStringFromTextChildNode(element, buffer, size);
}

int UXML::GetValueAsIntegerForElementChildNode(const CXMLTreeNode* node, const char* key)
{
    const CXMLElementNode* const element = ElementBelow(node, key);
    return element != nullptr ? GetValueAsIntegerFromTextChildNode(element) : 0;
}

double UXML::GetValueAsDoubleForElementChildNode(const CXMLTreeNode* node, const char* key)
{
    const CXMLElementNode* const element = ElementBelow(node, key);
    return element != nullptr ? GetValueAsDoubleFromTextChildNode(element) : 0.0;
}

std::string UXML::Unescape(const char* value)
{
    static constexpr struct {
        std::string_view entity;
        char character;
    } kEntities[] = {{"&amp;", '&'}, {"&gt;", '>'}, {"&lt;", '<'}, {"&apos;", '\''}};
    std::string result;
    for (std::string_view rest = value; !rest.empty();) {
        char character = rest.front();
        size_t length = 1;
        for (const auto& known : kEntities) {
            if (rest.starts_with(known.entity)) {
                character = known.character;
                length = known.entity.size();
            }
        }
        result += character;
        rest.remove_prefix(length);
    }
    return result;
}
