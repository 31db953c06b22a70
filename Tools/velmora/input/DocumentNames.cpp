#include "input/DocumentNames.h"

#include <algorithm>
#include <fnmatch.h>

static constexpr std::string_view kExtension = ".velmora";

bool DocumentNames::HasExtension(std::string_view name)
{
    if (name.size() <= kExtension.size()) {
        return false;
    }
    const std::string_view end = name.substr(name.size() - kExtension.size());
    return std::equal(end.begin(), end.end(), kExtension.begin(), [](char one, char other) {
        return (one >= 'A' && one <= 'Z' ? static_cast<char>(one + 'a' - 'A') : one) == other;
    });
}

std::string DocumentNames::WithoutExtension(std::string name)
{
    name.resize(name.size() - (HasExtension(name) ? kExtension.size() : 0));
    return name;
}

std::string DocumentNames::NameOfFile(const std::string& path)
{
    return path.substr(path.find_last_of('/') + 1); // npos + 1 is 0
}

bool DocumentNames::IsExcluded(const std::vector<std::string>& patterns, const std::string& name,
                               const std::string& path)
{
    return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
        const bool whole = pattern.find('/') != std::string::npos;
        return fnmatch(pattern.c_str(), whole ? path.c_str() : name.c_str(), 0) == 0;
    });
}
