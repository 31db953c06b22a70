#include "Places.h"

#include "Importer/Names.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <vector>
#if defined(__APPLE__)
#include <mach-o/dyld.h>
#endif

static constexpr const char* kWorkerName = "velmora-worker";

/// Folder of the running executable, links resolved; empty when unknown.
static std::filesystem::path ExecutableFolder()
{
    std::error_code error;
#if defined(__APPLE__)
    std::string path(4096, '\0');
    uint32_t size = static_cast<uint32_t>(path.size());
    if (_NSGetExecutablePath(path.data(), &size) != 0) {
        return {};
    }
    return std::filesystem::canonical(path.c_str(), error).parent_path();
#else
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
#endif
}

/// Beside the executable (a build folder) and the library folder (an installation), in the order of search.
static std::vector<std::filesystem::path> CompanionFolders()
{
    const std::filesystem::path folder = ExecutableFolder();
    if (folder.empty()) {
        return {};
    }
    return {folder, (folder / VELMORA_LIBRARY_FOLDER).lexically_normal()};
}

static std::string FindCompanion(const char* name)
{
    for (const auto& folder : CompanionFolders()) {
        std::error_code error;
        if (std::filesystem::exists(folder / name, error)) {
            return (folder / name).string();
        }
    }
    return {};
}

std::string Places::FindWorker()
{
    return FindCompanion(kWorkerName);
}

std::string Places::FindPlugIn(const std::string& named)
{
    return named.empty() ? FindCompanion(Importer::kBundleName) : named;
}

std::string Places::DescribePlugInPlaces()
{
    std::string text;
    for (const auto& folder : CompanionFolders()) {
        text += (text.empty() ? "" : " and ") + folder.string();
    }
    return std::string(Importer::kBundleName) + " was looked for in " + text;
}

/// An environment variable's value, if it is an absolute path; else empty.
static std::string FolderFromEnvironment(const char* name)
{
    const char* value = getenv(name);
    return value != nullptr && value[0] == '/' ? value : "";
}

/// One of the user's folders. @param variable  that names it;
/// @param inHome  where it is otherwise, below the home folder
static std::string UserFolder(const char* variable, const char* inHome)
{
    const std::string folder = FolderFromEnvironment(variable);
    const std::string home = FolderFromEnvironment("HOME");
    return !folder.empty() || home.empty() ? folder : home + inHome;
}

/// A folder of this name among the user's application data; empty when there is no place for it.
static std::string DataFolder([[maybe_unused]] const char* name)
{
#if defined(__APPLE__)
    const std::string home = FolderFromEnvironment("HOME");
    return home.empty() ? home : home + "/Library/Application Support/Velmora";
#else
    const std::string data = UserFolder("XDG_DATA_HOME", "/.local/share");
    return data.empty() ? data : data + name;
#endif
}

std::string Places::FindDataFolder()
{
    return DataFolder("/velmora");
}

std::string Places::FindStock(const std::string& name)
{
    const std::string folder = DataFolder("/Velmora");
    return name.empty() || name[0] == '/' ? name : folder.empty() ? folder : folder + "/" + name;
}

std::string Places::FindIndex()
{
    const std::string folder = FindDataFolder();
    return folder.empty() ? folder : folder + "/index.db";
}

void Places::MakeFolderOf(const std::string& path)
{
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), 0700);
    }
}

std::string Places::FindPreferencesFile()
{
#if defined(__APPLE__)
    const std::string home = FolderFromEnvironment("HOME");
    return home.empty() ? home : home + "/Library/Preferences/com.velmora.Velmora.plist";
#else
    const std::string configuration = UserFolder("XDG_CONFIG_HOME", "/.config");
    return configuration.empty() ? configuration : configuration + "/velmora/com.velmora.Velmora.plist";
#endif
}

std::string Places::FindConfiguration()
{
#if defined(__APPLE__)
    const std::string folder = FindDataFolder();
    return folder.empty() ? folder : folder + "/config";
#else
    const std::string configuration = UserFolder("XDG_CONFIG_HOME", "/.config");
    return configuration.empty() ? configuration : configuration + "/velmora/config";
#endif
}

void Places::MakeLogFolder()
{
#if !defined(__APPLE__)
    const std::string state = UserFolder("XDG_STATE_HOME", "/.local/state");
    if (!state.empty()) {
        MakeFolderOf(state + "/velmora/");
    }
#endif
}
