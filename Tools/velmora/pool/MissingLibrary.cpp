#include "pool/MissingLibrary.h"

#include <fstream>

/// What follows the name of the library, in glibc and in musl.
static constexpr const char* kNotFound[] = {": cannot open shared object file", ": No such file or directory"};

/// @return empty where the message names none
static std::string FindLibrary(const std::string& message)
{
    for (const char* words : kNotFound) {
        const size_t end = message.find(words);
        const size_t before = end == std::string::npos ? end : message.find_last_of(" /", end);
        const size_t start = before == std::string::npos ? 0 : before + 1;
        if (end != std::string::npos && message.find(".so", start) < end) {
            return message.substr(start, end - start);
        }
    }
    return {};
}

std::string MissingLibrary::NameRemedy(const std::string& message, const std::string& worker)
{
    const std::string library = FindLibrary(message);
    if (library.empty()) {
        return {};
    }
    std::ifstream packages(worker + ".packages");
    std::string name;
    std::string package;
    while (packages >> name >> package) {
        if (name == library) {
            return "; install the package " + package;
        }
    }
    return library.starts_with("libvelmora-") ? "; the installation is damaged"
                                              : "; install the package that has " + library;
}
