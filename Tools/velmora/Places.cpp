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

void Places::MakeLogFolder()
{
#if !defined(__APPLE__)
    const auto valueOf = [](const char* name) {
        const char* value = getenv(name);
        return std::string(value != nullptr && value[0] == '/' ? value : "");
    };
    std::string state = valueOf("XDG_STATE_HOME");
    if (state.empty()) {
        const std::string home = valueOf("HOME");
        if (home.empty()) {
            return;
        }
        state = home + "/.local/state";
    }
    const std::string folder = state + "/velmora";
    for (size_t end = folder.find('/', 1);; end = folder.find('/', end + 1)) {
        mkdir(folder.substr(0, end).c_str(), 0700);
        if (end == std::string::npos) {
            return;
        }
    }
#endif
}
