#include "Platform/System.h"

#include "Folders.h"
#include "Platform/Released.h"

#include <SystemConfiguration/SystemConfiguration.h>
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sys/sysctl.h>

namespace Platform {
// A text value of the kernel; empty when it has no such value.
static std::string KernelText(const char* name)
{
    char text[256] = {};
    size_t size = sizeof text - 1;
    return sysctlbyname(name, text, &size, nullptr, 0) == 0 ? text : "";
}

int SystemVersion()
{
    int major = 0;
    int minor = 0;
    if (sscanf(KernelText("kern.osproductversion").c_str(), "%d.%d", &major, &minor) < 1) {
        return 0;
    }
    const auto pack = [](int number) { // two digits have to do
        const int shown = std::clamp(number, 0, 99);
        return shown / 10 * 16 + shown % 10;
    };
    return pack(major) * 256 + pack(minor);
}

int ProcessorSpeed()
{
    int64_t hertz = 0; // Apple's own processors do not tell theirs
    size_t size = sizeof hertz;
    if (sysctlbyname("hw.cpufrequency", &hertz, &size, nullptr, 0) != 0) {
        return 0;
    }
    return static_cast<int>(std::clamp<int64_t>(hertz, 0, INT_MAX));
}

std::string MachineName()
{
    const tReleased<CFStringRef> name(SCDynamicStoreCopyComputerName(nullptr, nullptr));
    char text[1024] = {};
    if (!name || !CFStringGetCString(name.get(), text, sizeof text, kCFStringEncodingUTF8)) {
        return {};
    }
    return text;
}

std::string ProcessorDescription()
{
    const std::string model = KernelText("machdep.cpu.brand_string");
    int count = 0;
    size_t size = sizeof count;
    if (model.empty() || sysctlbyname("hw.ncpu", &count, &size, nullptr, 0) != 0) {
        return model;
    }
    return std::to_string(count) + " x " + model;
}

std::string ProcessName()
{
    const char* const name = getprogname();
    return name != nullptr ? name : "";
}

std::string FolderPath(eFolder folder, bool create)
{
    const char* const home = getenv("HOME"); // inside the sandbox, the container
    if (home == nullptr || *home != '/') {
        return {};
    }
    const std::string path =
        std::string(home) + (folder == eFolder::kLogs ? "/Library/Logs" : "/Library/Application Support");
    return FindFolder(path, create) ? path : std::string();
}
} // namespace Platform
