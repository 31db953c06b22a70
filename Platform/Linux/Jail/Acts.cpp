// Acts of a process that has been taken over. Each is the real thing, so that trying it proves something, and harmless:
// a signal that is none, a file that is gone at once, a program that ends at once.
#include "FileRules.h"
#include "Platform/Jail.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

/// More than any worker is granted by default, and address space only.
static constexpr size_t kMuchMemory = size_t{512} << 30;

static bool OpenFile()
{
    const int file = open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    close(file);
    return true;
}

static bool WriteFile()
{
    const char* const folder = getenv("TMPDIR");
    std::string path = std::string(folder != nullptr && *folder == '/' ? folder : "/tmp") + "/velmora-XXXXXX";
    const int file = mkstemp(path.data());
    if (file < 0) {
        return false;
    }
    unlink(path.c_str());
    const bool written = write(file, "x", 1) == 1;
    const int error = errno;
    close(file);
    errno = error;
    return written;
}

/// Whether a child ended with status 0. errno is set otherwise.
static bool WaitFor(pid_t child)
{
    int status = -1;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    errno = ECHILD;
    return status == 0;
}

static bool StartProgram()
{
    char shell[] = "/bin/sh";
    char option[] = "-c";
    char command[] = ":";
    char* const arguments[] = {shell, option, command, nullptr};
    pid_t child = 0;
    errno = posix_spawn(&child, shell, nullptr, nullptr, arguments, environ);
    return errno == 0 && WaitFor(child);
}

static bool Fork()
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    return child > 0 && WaitFor(child);
}

static bool MakeSocket()
{
    const int made = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (made < 0) {
        return false;
    }
    close(made);
    return true;
}

static bool ListenToNetwork()
{
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (made < 0) {
        return false;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool bound = bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const int error = errno;
    close(made);
    errno = error;
    return bound;
}

static bool SignalParent()
{
    return kill(getppid(), 0) == 0; // 0 asks only whether it could be sent
}

/// @param protection  of the pages mapped
static bool Map(size_t size, int protection)
{
    void* const pages = mmap(nullptr, size, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED) {
        return false;
    }
    munmap(pages, size);
    return true;
}

namespace {
struct tKnownAct {
    Jail::tAct act;
    int fileRulesVersion; ///< from which on Landlock refuses it, too; 0 for never
    bool (*attempt)();
};
} // namespace

static const tKnownAct kActs[] = {
    {{"open", "open a file", Jail::kCallFilter}, 1, OpenFile},
    {{"write", "write a file", Jail::kLimits | Jail::kCallFilter}, 1, WriteFile},
    {{"program", "start a program", Jail::kCallFilter}, 1, StartProgram},
    {{"fork", "make a process", Jail::kCallFilter}, 0, Fork},
    {{"socket", "create a socket", Jail::kCallFilter}, 0, MakeSocket},
    {{"network", "listen to the network", Jail::kCallFilter}, Jail::kTCPVersion, ListenToNetwork},
    {{"signal", "signal the parent process", Jail::kCallFilter}, Jail::kScopesVersion, SignalParent},
    {{"code", "map executable memory", Jail::kCallFilter}, 0, [] { return Map(4096, PROT_READ | PROT_EXEC); }},
    {{"memory", "map 512 GB of memory", Jail::kMemory}, 0, [] { return Map(kMuchMemory, PROT_NONE); }}};

const std::vector<Jail::tAct>& Jail::GetActs()
{
    static const std::vector<tAct>& sActs = *[] {
        auto* const acts = new std::vector<tAct>; // never destroyed: may be asked during exit
        const int version = GetFileRulesVersion();
        for (const tKnownAct& known : kActs) {
            acts->push_back(known.act);
            if (known.fileRulesVersion > 0 && version >= known.fileRulesVersion) {
                acts->back().refusedBy |= kFileRules;
            }
        }
        return acts;
    }();
    return sActs;
}

bool Jail::TryAct(const std::string& name, int& error)
{
    error = 0;
    for (const tKnownAct& known : kActs) {
        if (name == known.act.name) {
            const bool succeeded = known.attempt();
            error = succeeded ? 0 : errno;
            return succeeded;
        }
    }
    return false;
}
