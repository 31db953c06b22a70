#include "input/LibraryFiles.h"

#include "Places.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace {
constexpr char kMagic[] = "RSet";

/// Paths in the order in which they are found, one for each name.
class CFoundLibraries {
public:
    void AddFile(const fs::path& path)
    {
        if (mNames.insert(path.filename().native()).second) {
            mPaths.push_back(path.native());
        }
    }

    void AddFolder(const fs::path& folder)
    {
        std::error_code error;
        std::vector<fs::path> entries;
        fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
        for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
            std::error_code ignored;
            if (entry->path().filename().native().front() == '.') { // half-written files hide so
                entry.disable_recursion_pending();
            } else if (entry->is_regular_file(ignored) && IsLibrary(entry->path())) {
                entries.push_back(entry->path());
            }
        }
        std::sort(entries.begin(), entries.end());
        for (const fs::path& path : entries) {
            AddFile(path);
        }
    }

    void Add(const fs::path& path)
    {
        std::error_code ignored;
        fs::is_directory(path, ignored) ? AddFolder(path) : AddFile(path);
    }

    std::vector<std::string> Take() { return std::move(mPaths); }

private:
    static bool IsLibrary(const fs::path& path)
    {
        char magic[sizeof kMagic - 1] = {};
        std::ifstream(path, std::ios::binary).read(magic, sizeof magic);
        return std::memcmp(magic, kMagic, sizeof magic) == 0;
    }

    std::set<std::string> mNames;
    std::vector<std::string> mPaths;
};
} // namespace

std::vector<std::string> LibraryFiles::Find(const std::vector<std::string>& given)
{
    CFoundLibraries found;
    for (const std::string& path : given) {
        found.Add(path);
    }
    const char* variable = getenv("VELMORA_LIBRARIES");
    std::istringstream places(variable != nullptr ? variable : "");
    for (std::string place; std::getline(places, place, ':');) {
        std::error_code ignored;
        if (fs::exists(place, ignored)) {
            found.Add(place);
        }
    }
    const std::string folder = Places::FindDataFolder();
    if (!folder.empty()) {
        found.AddFolder(folder + "/Libraries");
    }
    return found.Take();
}
