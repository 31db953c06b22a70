#include "Platform/Jail.h"

#include "Bounds.h"
#include "Calls.h"
#include "FileRules.h"
#include "Threads.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

/// How long to wait between two looks at the threads: 200 microseconds.
static constexpr long kPauseNanoseconds = 200000;

namespace {
/// Whether a layer is on, and its state's detail.
struct tOutcome {
    bool isOn;
    std::string detail;
};
} // namespace

static tOutcome Refused()
{
    return {false, std::string("refused by the system: ") + strerror(errno)};
}

static bool Limit(__rlimit_resource resource, rlim_t most)
{
    // A limit that is lower already stays; raising it would be refused.
    rlimit now = {};
    if (getrlimit(resource, &now) != 0) {
        return false;
    }
    const rlimit both = {std::min(most, now.rlim_max), std::min(most, now.rlim_max)};
    return setrlimit(resource, &both) == 0;
}

/// What this process has mapped, in bytes; 0 when unknown.
static rlim_t GetMappedBytes()
{
    const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    char text[64];
    const ssize_t length = file >= 0 ? read(file, text, sizeof text) : -1;
    if (file >= 0) {
        close(file);
    }
    unsigned long pages = 0;
    if (length <= 0 || std::from_chars(text, text + length, pages).ec != std::errc()) {
        return 0;
    }
    return rlim_t{pages} * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

static tOutcome LimitMemory(size_t megabytes)
{
    const rlim_t mapped = GetMappedBytes();
    if (mapped == 0) {
        return {false, "the system does not say what is mapped"};
    }
    if (!Limit(RLIMIT_AS, mapped + (rlim_t{megabytes} << 20))) {
        return Refused();
    }
    return {true, std::to_string(megabytes) + " MB beyond " + std::to_string(mapped >> 20) + " MB at rest"};
}

static tOutcome LimitResources(Jail::eProfile profile)
{
    const rlim_t descriptors =
        profile == Jail::eProfile::kDraw ? Bounds::kDrawingDescriptors : Bounds::kWorkerDescriptors;
    if (!Limit(RLIMIT_FSIZE, 0) || !Limit(RLIMIT_CORE, 0) || !Limit(RLIMIT_NOFILE, descriptors)) {
        return Refused();
    }
    return {true, "no file grows, no core file, " + std::to_string(descriptors) + " descriptors"};
}

/// Becomes another user, for good. The order matters: each step needs the rights that the next one gives away.
static bool BecomeUser(uid_t user, gid_t group)
{
    return setgroups(0, nullptr) == 0 && setresgid(group, group, group) == 0 && setresuid(user, user, user) == 0 &&
           prctl(PR_SET_PDEATHSIG, SIGKILL) == 0; // which another user's process has no more
}

/// Gives up the administrator's rights, of which only a process that root has started has any. @param order  whom to
/// become then
static bool DropCapabilities(const Jail::tOrder& order)
{
    for (unsigned long right = 0; prctl(PR_CAPBSET_READ, right, 0, 0, 0) >= 0; ++right) {
        prctl(PR_CAPBSET_DROP, right, 0, 0, 0); // refused to everybody else, who cannot get any either
    }
    if (order.user != 0 && !BecomeUser(order.user, order.group)) {
        return false;
    }
    prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct rights[_LINUX_CAPABILITY_U32S_3] = {};
    return syscall(SYS_capset, &header, rights) == 0;
}

static tOutcome GiveUpPrivileges(const Jail::tOrder& order)
{
    const bool done = DropCapabilities(order) && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                      prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0;
    if (!done) {
        return Refused();
    }
    return {prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1 && prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) == 0,
            std::string("none, no new ones, closed to other processes") + (order.user != 0 ? ", another user" : "")};
}

static tOutcome ApplyFileRules(const Jail::tOrder& order)
{
    tOutcome outcome = {};
    if (!Jail::WaitForOneThread(0)) {
        return {false, "several threads are running: only one of them would be bound"};
    }
    const bool draws = order.profile == Jail::eProfile::kDraw;
    outcome.isOn = Jail::RestrictFiles(draws ? order.readableFolders : std::vector<std::string>(), outcome.detail);
    return outcome;
}

static tOutcome FilterCalls(Jail::eProfile profile)
{
    if (!Jail::KnowsThisProcessor()) {
        return {false, "there is no list of calls for this processor"};
    }
    tOutcome outcome = {};
    outcome.isOn = Jail::MakeCallFilter(profile).Install(outcome.detail);
    return outcome;
}

const char* Jail::GetName(eLayer layer)
{
    switch (layer) {
    case kMemory:
        return "memory";
    case kLimits:
        return "limits";
    case kPrivileges:
        return "privileges";
    case kFileRules:
        return "landlock";
    case kCallFilter:
        break;
    }
    return "seccomp";
}

std::vector<Jail::tState> Jail::Close(const tOrder& order)
{
    std::vector<tState> states;
    const auto close = [&states, &order](eLayer layer, auto action) {
        if ((order.layers & layer) != 0) {
            tOutcome outcome = action();
            states.push_back({layer, outcome.isOn, std::move(outcome.detail)});
        }
    };
    if (order.profile == eProfile::kDraw && (order.layers & kCallFilter) != 0) {
        RunThreadsAtOnce();
    }
    // The order matters: later layers refuse what earlier ones need.
    close(kMemory, [&] { return LimitMemory(order.memoryMegabytes); });
    close(kLimits, [&] { return LimitResources(order.profile); });
    if ((order.layers & (kFileRules | kCallFilter)) != 0) {
        prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0); // without which these two are for the system's administrator only
    }
    close(kPrivileges, [&] { return GiveUpPrivileges(order); });
    close(kFileRules, [&] { return ApplyFileRules(order); });
    close(kCallFilter, [&] { return FilterCalls(order.profile); });
    return states;
}

static size_t CountThreads()
{
    size_t count = 0;
    if (DIR* const folder = opendir("/proc/self/task")) {
        while (const dirent* const entry = readdir(folder)) {
            count += entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(folder);
    }
    return count;
}

bool Jail::WaitForOneThread(int milliseconds)
{
    const timespec pause = {0, kPauseNanoseconds};
    for (long waited = 0; CountThreads() > 1; waited += kPauseNanoseconds) {
        if (waited >= milliseconds * 1000000L) {
            return false;
        }
        nanosleep(&pause, nullptr);
    }
    return true;
}
