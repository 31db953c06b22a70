#include "Linux/CoreFoundation/PropertyListForm.h"

#include "Bounds.h"

#include <algorithm>
#include <pugixml.hpp>
#include <string_view>

namespace {
constexpr std::string_view kFlags[] = {"true", "false"};
constexpr std::string_view kTexts[] = {"string", "data"};
constexpr std::string_view kNumbers[] = {"integer", "real", "date"};

template <size_t kCount>
bool IsOneOf(const pugi::xml_node& node, const std::string_view (&names)[kCount])
{
    return std::find(names, names + kCount, node.name()) != names + kCount;
}

bool IsElement(const pugi::xml_node& node)
{
    return node.type() == pugi::node_element;
}

/// Looks at one element after the other, each before those in it.
class CFormWalker : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node& node) override
    {
        if (!IsElement(node)) {
            return true; // its element has looked at it
        }
        const std::string_view name = node.name();
        if (depth() > Bounds::kDeepestXML) { // Foundation recurses
            return false;
        }
        if (name == "dict") {
            return HasPairs(node);
        }
        if (name == "array") {
            return std::all_of(node.begin(), node.end(), IsValue);
        }
        const bool isWhole = std::none_of(node.begin(), node.end(), IsElement);
        return isWhole && (name == "key" || IsOneOf(node, kTexts) ||
                           (IsOneOf(node, kNumbers) ? !std::string_view(node.text().get()).empty()
                                                    : IsOneOf(node, kFlags) && node.first_child().empty()));
    }

private:
    static bool IsValue(const pugi::xml_node& node)
    {
        return IsElement(node) && std::string_view(node.name()) != "key";
    }

    static bool HasPairs(const pugi::xml_node& dictionary)
    {
        for (pugi::xml_node key = dictionary.first_child(); !key.empty(); key = key.next_sibling()) {
            const bool isKey = IsElement(key) && std::string_view(key.name()) == "key";
            key = key.next_sibling();
            if (!isKey || !IsValue(key)) {
                return false;
            }
        }
        return true;
    }
};
} // namespace

bool Platform::HasPropertyListForm(const std::string& bytes)
{
    pugi::xml_document document;
    if (!document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default, pugi::encoding_utf8)) {
        return false;
    }
    pugi::xml_node list = document.document_element();
    pugi::xml_node value = list.first_child();
    CFormWalker walker;
    return std::string_view(list.name()) == "plist" && list.next_sibling().empty() && !value.empty() &&
           value.next_sibling().empty() && list.traverse(walker);
}
