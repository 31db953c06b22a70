// The lists are short on purpose. A wide list of what libraries might call grows with each of their versions; here they
// have called what they need before the jail closes, and what remains is reading a document and handling memory.
#include "Calls.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#if defined(__x86_64__) || defined(__aarch64__)

using tTest = Jail::tCondition::eTest;

static constexpr uint32_t kAllow = SECCOMP_RET_ALLOW;
static constexpr uint32_t kKill = SECCOMP_RET_KILL_PROCESS;
/// In the flags of an opening: anything but reading. The last is O_TMPFILE without the bit of a folder.
static constexpr uint32_t kWritingFlags =
    O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND | O_PATH | (O_TMPFILE & ~O_DIRECTORY);

/// Requests and answers, the most frequent ones first.
static void AllowConversation(Jail::CCallFilter& filter)
{
    filter.Answer(kAllow, {SYS_read, SYS_recvmsg, SYS_sendmsg, SYS_close, SYS_lseek, SYS_pread64, SYS_write, SYS_writev,
                           SYS_dup, SYS_exit_group});
    // F_SETOWN and its like could have signals sent.
    filter.AnswerIfOneOf(SYS_fcntl, 1, {F_GETFL, F_DUPFD_CLOEXEC, F_GETFD, F_SETFD}, kAllow, Jail::FailWith(EPERM));
}

static void AllowMemory(Jail::CCallFilter& filter)
{
    filter.Answer(kAllow, {SYS_brk, SYS_munmap, SYS_mremap, SYS_madvise, SYS_futex});
    for (const int call : {SYS_mmap, SYS_mprotect}) {
        filter.AnswerIf(call, {{2, tTest::kHasNoneOf, PROT_EXEC}}, kAllow, kKill);
    }
}

/// What tells a process about itself and the time, and what libraries ask now and then.
static void AllowQuestions(Jail::CCallFilter& filter)
{
    filter.Answer(kAllow, {SYS_gettimeofday, SYS_nanosleep, SYS_getrandom, SYS_getrusage, SYS_getpid, SYS_getppid,
                           SYS_gettid, SYS_getuid, SYS_geteuid, SYS_getgid, SYS_getegid, SYS_uname, SYS_sysinfo,
                           SYS_sched_yield, SYS_rt_sigreturn, SYS_rt_sigprocmask, SYS_restart_syscall, SYS_exit});
    // The number of another process's clock is negative.
    for (const int call : {SYS_clock_gettime, SYS_clock_getres, SYS_clock_nanosleep}) {
        filter.AnswerIf(call, {{0, tTest::kHasNoneOf, 1U << 31}}, kAllow, Jail::FailWith(EPERM));
    }
    filter.AnswerIfOneOf(SYS_sched_getaffinity, 0, {0, static_cast<uint32_t>(getpid())}, kAllow, Jail::FailWith(EPERM));
#if defined(SYS_time)
    filter.Answer(kAllow, {SYS_time});
#endif
    // abort() signals itself, which names the failure to the host.
    filter.AnswerIf(SYS_tgkill, {{0, tTest::kEquals, static_cast<uint32_t>(getpid())}, {2, tTest::kEquals, SIGABRT}},
                    kAllow, kKill);
}

/// Where libraries look for something, and go on when they do not find it: a fault would otherwise cost the document
/// that only made a library write to a log.
static void RefuseFiles(Jail::CCallFilter& filter)
{
    const uint32_t refuse = Jail::FailWith(EACCES);
    filter.Answer(refuse,
                  {SYS_openat, SYS_newfstatat, SYS_fstat, SYS_statx, SYS_faccessat, SYS_readlinkat, SYS_getcwd,
                   SYS_unlinkat, SYS_mkdirat, SYS_renameat, SYS_statfs, SYS_getpeername, SYS_getsockname, SYS_pipe2});
    // Newer calls: "not there" makes a library take the older ones.
    filter.Answer(Jail::FailWith(ENOSYS), {SYS_openat2, SYS_faccessat2, SYS_renameat2});
    filter.Answer(Jail::FailWith(ENOTTY), {SYS_ioctl});
#if defined(SYS_open) // not on processors that came later
    filter.Answer(
        refuse, {SYS_open, SYS_stat, SYS_lstat, SYS_access, SYS_readlink, SYS_unlink, SYS_mkdir, SYS_rename, SYS_pipe});
#endif
}

/// Drawing asks for fonts when a text needs them.
static void AllowDrawing(Jail::CCallFilter& filter)
{
    const uint32_t refuse = Jail::FailWith(EACCES);
    filter.AnswerIf(SYS_openat, {{2, tTest::kHasNoneOf, kWritingFlags}}, kAllow, refuse);
    filter.AnswerIf(SYS_newfstatat, {{3, tTest::kEquals, AT_EMPTY_PATH}}, kAllow, refuse);
    filter.Answer(kAllow, {SYS_fstat, SYS_faccessat});
#if defined(SYS_open)
    filter.AnswerIf(SYS_open, {{1, tTest::kHasNoneOf, kWritingFlags}}, kAllow, refuse);
    filter.Answer(kAllow, {SYS_access});
#endif
    // What runs in place of a thread gives itself a name.
    filter.AnswerIf(SYS_prctl, {{0, tTest::kEquals, PR_SET_NAME}}, kAllow, kKill);
}

Jail::CCallFilter Jail::MakeCallFilter(eProfile profile)
{
    CCallFilter filter;
    AllowConversation(filter);
    AllowMemory(filter);
    AllowQuestions(filter);
    if (profile == eProfile::kDraw) {
        AllowDrawing(filter);
    }
    RefuseFiles(filter);
    return filter;
}

#else // there are other calls, and nobody has tried which

Jail::CCallFilter Jail::MakeCallFilter(eProfile)
{
    return {};
}

#endif
