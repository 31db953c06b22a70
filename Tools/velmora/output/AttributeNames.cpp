#include "output/AttributeNames.h"

#include <algorithm>
#include <cctype>
#include <iterator>

static constexpr struct {
    const char* name;
    const char* label;
} kLabels[] = {{"kMDItemAuthors", "Author"},
               {"kMDItemDescription", "Description"},
               {"kMDItemLayerNames", "Layers"},
               {"kMDItemVersion", "Revision"},
               {"kMDItemTextContent", "Content"}};

static std::string ToLower(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return lower;
}

std::string AttributeNames::GetLabel(const std::string& name)
{
    for (const auto& entry : kLabels) {
        if (name == entry.name) {
            return entry.label;
        }
    }
    return name;
}

std::optional<std::string> AttributeNames::Find(std::string_view word, const std::vector<tSchemaAttribute>& declared)
{
    std::vector<std::string> names;
    std::transform(declared.begin(), declared.end(), std::back_inserter(names),
                   [](const tSchemaAttribute& attribute) { return attribute.name; });
    if (declared.empty()) {
        std::transform(std::begin(kLabels), std::end(kLabels), std::back_inserter(names),
                       [](const auto& entry) { return entry.name; });
    }
    if (std::find(names.begin(), names.end(), word) != names.end()) {
        return std::string(word);
    }
    const std::string lower = ToLower(word);
    for (const std::string& name : names) {
        if (ToLower(name) == lower || ToLower(GetLabel(name)) == lower) {
            return name;
        }
    }
    return declared.empty() ? std::optional<std::string>(word) : std::nullopt;
}

std::string AttributeNames::List(const std::vector<tSchemaAttribute>& declared)
{
    std::string list;
    for (const tSchemaAttribute& attribute : declared) {
        const std::string label = GetLabel(attribute.name);
        list += (list.empty() ? "" : ", ") + attribute.name +
                (label == attribute.name ? std::string() : " (" + ToLower(label) + ")");
    }
    return list;
}
