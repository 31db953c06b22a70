// Every probe runs in a child process, once free and once in the jail, so that it is seen to succeed where nothing
// forbids it.
#include "Platform/Jail.h"
#include "CheckError/CErr.h"
#include "Platform/Fonts.h"
#include "Platform/Process.h"
#include "Platform/Report.h"
#include "support/Child.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

/// How a child ended, besides 0 for done and an error number.
static constexpr int kKilled = kBySignal + SIGSYS;
/// The layers a child was to put on are not to be had here.
static constexpr int kNoJail = 200;

static bool Close(Jail::eProfile profile, unsigned layers, const std::vector<std::string>& folders = {})
{
    Jail::tOrder order;
    order.profile = profile;
    order.layers = layers;
    order.memoryMegabytes = 1024;
    order.readableFolders = folders;
    const std::vector<Jail::tState> states = Jail::Close(order);
    return std::all_of(states.begin(), states.end(), [](const Jail::tState& state) { return state.isOn; });
}

static int Attempt(const std::function<bool()>& probe)
{
    errno = 0;
    return probe() ? 0 : errno;
}

class JailTest : public testing::Test {
protected:
    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__)
        GTEST_SKIP() << "AddressSanitizer works in no jail";
#endif
        if (RunChild([] { return Close(Jail::eProfile::kRead, Jail::kAllLayers) ? 0 : kNoJail; }) == kNoJail) {
            GTEST_SKIP() << "this system refuses a layer; 'velmora doctor' says which";
        }
    }
};

TEST_F(JailTest, EachLayerAloneRefusesItsActsAndNoOthers)
{
    ASSERT_GE(Jail::GetActs().size(), 9U);
    for (const Jail::tAct& act : Jail::GetActs()) {
        const auto attempt = [&act](unsigned layers) {
            return RunChild([&act, layers] {
                int error = 0;
                const bool closed = Close(Jail::eProfile::kRead, layers);
                return !closed ? kNoJail : Jail::TryAct(act.name, error) ? 0 : error;
            });
        };
        EXPECT_EQ(attempt(0), 0) << act.name << " outside";
        EXPECT_NE(attempt(Jail::kAllLayers), 0) << act.name;
        for (const unsigned layer : {Jail::kMemory, Jail::kLimits, Jail::kFileRules, Jail::kCallFilter}) {
            const int end = attempt(layer);
            EXPECT_NE(end, kNoJail);
            EXPECT_EQ(end != 0, (act.refusedBy & layer) != 0)
                << act.name << " with " << Jail::GetName(static_cast<Jail::eLayer>(layer)) << ": " << end;
        }
    }
}

static int sDocument = -1;
static std::string sFolder;

static bool CanOpen(const std::string& path, int flags)
{
    return open(path.c_str(), flags | O_CLOEXEC, 0600) >= 0;
}

static bool SortMuch()
{
    std::vector<int> numbers(100000);
    int next = 0;
    std::generate(numbers.begin(), numbers.end(), [&next] { return next = (next + 7919) % 100003; });
    qsort(numbers.data(), numbers.size(), sizeof(int), [](const void* one, const void* other) {
        return *static_cast<const int*>(one) < *static_cast<const int*>(other) ? -1 : 1;
    });
    return std::is_sorted(numbers.begin(), numbers.end());
}

static bool GrowMemory()
{
    void* block = malloc(size_t{8} << 20);
    block = block != nullptr ? realloc(block, size_t{64} << 20) : nullptr;
    const bool grown = block != nullptr;
    free(block);
    return grown;
}

static bool StartThread()
{
    static volatile int sResult = 0;
    pthread_t thread = {};
    const bool started = pthread_create(
                             &thread, nullptr,
                             [](void*) -> void* {
                                 prctl(PR_SET_NAME, "probe");
                                 sResult = 1;
                                 return nullptr;
                             },
                             nullptr) == 0;
    while (started && sResult == 0) {
        usleep(100);
    }
    return started;
}

#if defined(__x86_64__)
/// Starts a thread as the C library does, but without it.
static bool CloneThread()
{
    static char sStack[65536];
    const int flags = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD | CLONE_SYSVSEM | CLONE_SETTLS |
                      CLONE_PARENT_SETTID | CLONE_CHILD_CLEARTID;
    static pid_t sThread = 0;
    return clone(
               [](void*) {
                   syscall(SYS_exit, 0);
                   return 0;
               },
               sStack + sizeof sStack, flags, nullptr, &sThread, reinterpret_cast<void*>(pthread_self()), &sThread) > 0;
}
#endif

static bool AskParentsClock()
{
    clockid_t clock = 0;
    timespec time = {};
    errno = clock_getcpuclockid(getppid(), &clock);
    return errno == 0 && clock_gettime(clock, &time) == 0;
}

static bool AskParentsProcessors()
{
    cpu_set_t processors;
    return sched_getaffinity(getppid(), sizeof processors, &processors) == 0;
}

static bool MakeExecutable()
{
    void* const page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return page != MAP_FAILED && mprotect(page, 4096, PROT_READ | PROT_EXEC) == 0;
}

static bool Stat()
{
    struct stat status = {};
    return stat(sFolder.c_str(), &status) == 0;
}

static bool ReplaceProgram()
{
    return execl("/bin/sh", "sh", "-c", ":", nullptr) == 0; // the shell ends with 0
}

TEST_F(JailTest, LetsThroughWhatServingNeedsAndNothingElse)
{
    sFolder = std::string(getenv("TEST_FOLDER")) + "/jail";
    const std::string readable = sFolder + "/readable";
    ASSERT_EQ(mkdir(sFolder.c_str(), 0700), 0);
    ASSERT_EQ(mkdir(readable.c_str(), 0700), 0);
    const auto inReadable = [readable](int flags) { return [=] { return CanOpen(readable + "/font", flags); }; };
    sDocument = open((readable + "/font").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    ASSERT_EQ(write(sDocument, "document", 8), 8);
    const struct {
        const char* what;
        std::function<bool()> probe;
        int read; ///< how it ends in a jail for reading
        int draw; ///< and in one for drawing
    } cases[] = {
        {"read",
         [] {
             char byte = 0;
             return lseek(sDocument, 0, SEEK_SET) == 0 && read(sDocument, &byte, 1) == 1;
         },
         0, 0},
        {"duplicate", [] { return fcntl(sDocument, F_DUPFD_CLOEXEC, 3) >= 0; }, 0, 0},
        {"sort", SortMuch, 0, 0},
        {"memory", GrowMemory, 0, 0},
        {"abort",
         [] {
             abort();
             return false;
         },
         kBySignal + SIGABRT, kBySignal + SIGABRT},
        {"have signals sent", [] { return fcntl(sDocument, F_SETOWN, getppid()) == 0; }, EPERM, EPERM},
        {"signal itself", [] { return raise(SIGCHLD) == 0; }, kKilled, kKilled},
        {"make memory executable", MakeExecutable, kKilled, kKilled},
        {"replace the program", ReplaceProgram, kKilled, kKilled},
        {"fork", [] { return RunChild([] { return 0; }) == 0; }, kKilled, kKilled},
        {"socket", [] { return socket(AF_UNIX, SOCK_STREAM, 0) >= 0; }, kKilled, kKilled},
        {"let others look inside", [] { return prctl(PR_SET_DUMPABLE, 1) == 0; }, kKilled, kKilled},
#if defined(__x86_64__)
        {"another set of calls",
         [] {
             syscall(0x40000000 | SYS_getpid);
             return true;
         },
         kKilled, kKilled},
#endif
        {"look at a path", Stat, EACCES, EACCES},
        {"have something done in a thread", StartThread, kKilled, 0}, // at once, without one
#if defined(__x86_64__)
        {"a thread", CloneThread, kKilled, kKilled},
#endif
        {"another process's clock", AskParentsClock, EPERM, EPERM},
        {"another process's processors", AskParentsProcessors, EPERM, EPERM},
        {"open below a readable folder", inReadable(O_RDONLY), EACCES, 0},
        {"open it for writing", inReadable(O_RDWR), EACCES, EACCES},
        {"create below it", [=] { return CanOpen(readable + "/new", O_RDONLY | O_CREAT); }, EACCES, EACCES},
        {"open elsewhere", [] { return CanOpen("/proc/self/exe", O_RDONLY); }, EACCES, EACCES},
        {"open a folder elsewhere", [] { return CanOpen("/", O_RDONLY | O_DIRECTORY); }, EACCES, EACCES}
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const bool endsAnyway = strcmp(c.what, "abort") == 0;
        EXPECT_EQ(RunChild([&c] { return Attempt(c.probe); }), endsAnyway ? kBySignal + SIGABRT : 0);
        for (const Jail::eProfile profile : {Jail::eProfile::kRead, Jail::eProfile::kDraw}) {
            const int end = RunChild([&] {
                return Close(profile, Jail::kAllLayers, {readable, "/nonexistent"}) ? Attempt(c.probe) : kNoJail;
            });
            EXPECT_EQ(end, profile == Jail::eProfile::kRead ? c.read : c.draw);
        }
    }
}

TEST_F(JailTest, LeavesNoRightOfTheAdministrators)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root has rights to lose";
    }
    const auto rightsOf = [](unsigned user, unsigned layers) { // the child has all, some or none
        return RunChild([user, layers] {
            Jail::tOrder order;
            order.layers = layers;
            order.user = user;
            order.group = user;
            const int file = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
            const std::vector<Jail::tState> states = Jail::Close(order);
            char text[4096] = {};
            const std::string status(text, static_cast<size_t>(std::max<ssize_t>(read(file, text, sizeof text), 0)));
            const char* const none = "\t0000000000000000\n";
            const bool hasAny = status.find(std::string("CapEff:") + none) == std::string::npos ||
                                status.find(std::string("CapBnd:") + none) == std::string::npos;
            return (hasAny ? 1 : 0) + (getuid() == user ? 0 : 2) + (states.empty() || states[0].isOn ? 0 : 4);
        });
    };
    EXPECT_EQ(rightsOf(0, 0), 1);
    EXPECT_EQ(rightsOf(0, Jail::kPrivileges), 0);
    EXPECT_EQ(rightsOf(65534, Jail::kPrivileges), 0);
}

// The core ends a process that cannot go on: it writes, looks for its log, shows an alert, and runs all exit handlers.
TEST_F(JailTest, LetsAFatalReportOutAndTheProcessEnd)
{
    int report[2];
    ASSERT_EQ(pipe2(report, O_CLOEXEC), 0);
    const int end = RunChild([&report] {
        const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO); // a file there could not grow
        Platform::SetReportObserver(
            [](void* to, Platform::eReportLevel level, const char* text) {
                if (level == Platform::eReportLevel::kFatalError) {
                    [[maybe_unused]] const ssize_t written = write(*static_cast<int*>(to), text, strlen(text));
                }
            },
            &report[1]);
        Platform::LookUpSettings();
        if (!Close(Jail::eProfile::kRead, Jail::kAllLayers)) {
            return kNoJail;
        }
        CErr::CheckNull(nullptr, "the list of layers");
        return 1;
    });
    EXPECT_EQ(end, 0);
    close(report[1]);
    char text[256] = {};
    EXPECT_GT(read(report[0], text, sizeof text - 1), 0);
    EXPECT_NE(std::string(text).find("the list of layers"), std::string::npos) << text;
    close(report[0]);
}

TEST_F(JailTest, MeasuresTextsInFontsThatWereNotOpenedBefore)
{
    int results[2];
    ASSERT_EQ(pipe2(results, O_CLOEXEC), 0);
    const auto measure = [&results](bool jailed) {
        return RunChild([&] {
            double sizes[8] = {};
            Platform::MeasureText({}, 12, "x", sizes[0], sizes[1]);
            if (!Jail::WaitForOneThread(2000)) {
                return 1;
            }
            if (jailed && !Close(Jail::eProfile::kDraw, Jail::kAllLayers, Platform::FontFolders())) {
                return 2;
            }
            double* size = sizes;
            for (const char* font : {"DejaVu Serif", "FreeMono", "no such font"}) {
                size += 2;
                Platform::MeasureText(font, 30, "Gr\u00F6\u00DFe \u03A9\u0416 \u05D0", size[0], size[1]);
            }
            return write(results[1], sizes, sizeof sizes) == static_cast<ssize_t>(sizeof sizes) ? 0 : 3;
        });
    };
    double free[8] = {};
    double jailed[8] = {};
    ASSERT_EQ(measure(false), 0);
    ASSERT_EQ(read(results[0], free, sizeof free), static_cast<ssize_t>(sizeof free));
    if (free[0] == 0) {
        GTEST_SKIP() << "no font is installed";
    }
    ASSERT_EQ(measure(true), 0);
    ASSERT_EQ(read(results[0], jailed, sizeof jailed), static_cast<ssize_t>(sizeof jailed));
    for (size_t i = 0; i < std::size(free); ++i) {
        EXPECT_EQ(jailed[i], free[i]) << i;
        EXPECT_GT(free[i], 0) << i;
    }
    close(results[0]);
    close(results[1]);
}
