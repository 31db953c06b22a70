#include "Platform/System.h"

#include "Folders.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sys/utsname.h>
#include <unistd.h>

namespace Platform {
int SystemVersion()
{
    struct utsname names = {};
    if (uname(&names) != 0) {
        return 0;
    }
    const std::string_view release = names.release; // "6.12.3-1-amd64"
    int major = 0;
    int minor = 0;
    const char* const end = release.data() + release.size();
    const auto first = std::from_chars(release.data(), end, major);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '.' ||
        std::from_chars(first.ptr + 1, end, minor).ec != std::errc()) {
        return 0;
    }
    const auto pack = [](int number) { // two digits have to do
        const int shown = std::clamp(number, 0, 99);
        return shown / 10 * 16 + shown % 10;
    };
    return pack(major) * 256 + pack(minor);
}

// The first value of a key in /proc/cpuinfo, whose lines are "key<tabs>: value"; empty where the processor has no such
// line. `count`, if given, is set to the number of lines of the key.
static std::string ProcessorValue(std::string_view key, int* count = nullptr)
{
    std::ifstream file("/proc/cpuinfo");
    std::string result;
    int found = 0;
    for (std::string line; std::getline(file, line);) {
        const size_t colon = line.find(':');
        if (colon == std::string::npos || line.substr(0, line.find_last_not_of(" \t", colon - 1) + 1) != key) {
            continue;
        }
        const size_t start = line.find_first_not_of(" \t", colon + 1);
        if (found++ == 0 && start != std::string::npos) {
            result = line.substr(start, line.find_last_not_of(" \t") + 1 - start);
        }
    }
    if (count != nullptr) {
        *count = found;
    }
    return result;
}

// A number as the kernel writes it, with a point in every locale; 0 for anything else.
static double ParseNumber(const std::string& text)
{
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

int ProcessorSpeed()
{
    double hertz = ParseNumber(ProcessorValue("cpu MHz")) * 1e6;
    if (!(hertz > 0)) { // processors whose list has no clock: kHz
        std::ifstream file("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq");
        std::string line;
        std::getline(file, line);
        hertz = ParseNumber(line) * 1e3;
    }
    return hertz >= INT_MAX ? INT_MAX : hertz > 0 ? static_cast<int>(hertz) : 0;
}

std::string MachineName()
{
    struct utsname names = {};
    return uname(&names) == 0 ? names.nodename : "";
}

std::string ProcessorDescription()
{
    int count = 0;
    ProcessorValue("processor", &count);
    std::string model = ProcessorValue("model name");
    if (model.empty()) { // only some kinds of processor have a name there
        struct utsname names = {};
        model = uname(&names) == 0 ? names.machine : "";
    }
    if (count < 1 || model.empty()) {
        return model;
    }
    return std::to_string(count) + " x " + model;
}

std::string ProcessName()
{
    return program_invocation_short_name != nullptr ? program_invocation_short_name : "";
}

// The value of an environment variable that names a folder: relative ones are ignored.
static std::string FolderVariable(const char* name)
{
    const char* const value = getenv(name);
    return value != nullptr && *value == '/' ? value : "";
}

std::string FolderPath(eFolder folder, bool create)
{
    const bool logs = folder == eFolder::kLogs;
    std::string path = FolderVariable(logs ? "XDG_STATE_HOME" : "XDG_DATA_HOME");
    if (path.empty()) {
        path = FolderVariable("HOME");
        if (path.empty()) {
            return {};
        }
        path += logs ? "/.local/state" : "/.local/share";
    }
    if (logs) {
        path += "/velmora";
    }
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return FindFolder(path, create) ? path : std::string();
}
} // namespace Platform
