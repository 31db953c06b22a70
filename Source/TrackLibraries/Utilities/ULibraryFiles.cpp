#include "TrackLibraries/Utilities/ULibraryFiles.h"

#include "CTaggedFile/BigEndian.h"
#include "Formats/LibraryFormat.h"
#include "KVUPath/KVUPath.h"
#include "Platform/MacRoman.h"
#include "Platform/Streams.h"
#include "Platform/System.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <system_error>

namespace fs = std::filesystem;

namespace {
#if defined(__APPLE__)
constexpr char kUserFolder[] = "/Velmora/Libraries";
#else
constexpr char kUserFolder[] = "/velmora/Libraries";
#endif
constexpr char kVariable[] = "VELMORA_LIBRARIES";
constexpr char kVariableSeparator = ':';

/// The library files found so far, each once.
class CLibraryFiles {
public:
    /// @return false when the path is neither a library nor a readable folder
    bool AddPath(const std::string& path)
    {
        std::error_code error;
        if (fs::is_directory(path, error)) {
            return AddFolder(path);
        }
        return AddFile(path);
    }

    const std::vector<std::string>& Get() const { return mFiles; }

private:
    bool AddFile(const std::string& path)
    {
        if (!ULibraryFiles::IsLibraryFile(path)) {
            return false;
        }
        if (mSeen.insert(Place(path)).second) {
            mFiles.push_back(path);
        }
        return true;
    }

    bool AddFolder(const std::string& folder)
    {
        std::error_code error;
        fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
        if (error) {
            return false;
        }
        std::vector<std::string> paths;
        while (entry != fs::recursive_directory_iterator()) {
            std::error_code ignored;
            if (entry->path().filename().native().front() == '.') {
                entry.disable_recursion_pending();
            } else if (entry->is_regular_file(ignored)) {
                paths.push_back(entry->path().native());
            }
            entry.increment(error); // ends the walk where it fails
        }
        std::sort(paths.begin(), paths.end());
        for (const std::string& path : paths) {
            AddFile(path);
        }
        return true;
    }

    /// One text for all paths that lead to the same name in the same folder.
    static std::string Place(const fs::path& path)
    {
        std::error_code error;
        const fs::path folder = fs::canonical(path.has_parent_path() ? path.parent_path() : fs::path("."), error);
        return error ? path.native() : (folder / path.filename()).native();
    }

    std::vector<std::string> mFiles;
    std::set<std::string> mSeen;
};
} // namespace

std::string ULibraryFiles::GetLibraryName(const std::string& path)
{
    std::string name = KVUPath::GetLastPathComponent(path);
    Platform::Utf8ToMacRoman(name, name); // leaves what it cannot convert
    return name;
}

std::string ULibraryFiles::GetUserFolder()
{
    const std::string support = Platform::FolderPath(Platform::eFolder::kApplicationSupport, false);
    return support.empty() ? support : support + kUserFolder;
}

bool ULibraryFiles::IsLibraryFile(const std::string& path)
{
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return false;
    }
    const Platform::CInputFile input(path);
    unsigned char magic[4];
    return input.Get() != nullptr && fread(magic, sizeof magic, 1, input.Get()) == 1 &&
           BigEndian::Unsigned32(magic) == LibraryFormat::kMagic;
}

std::vector<std::string> ULibraryFiles::Collect(const std::vector<std::string>& paths,
                                                std::vector<std::string>* rejected)
{
    CLibraryFiles files;
    for (const std::string& path : paths) {
        if (!files.AddPath(path) && rejected != nullptr) {
            rejected->push_back(path);
        }
    }
    const char* const variable = getenv(kVariable);
    std::istringstream places(variable != nullptr ? variable : "");
    for (std::string place; std::getline(places, place, kVariableSeparator);) {
        if (!place.empty()) {
            files.AddPath(place);
        }
    }
    const std::string folder = GetUserFolder();
    if (!folder.empty()) {
        files.AddPath(folder);
    }
    return files.Get();
}
