#include "CCallFilter.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <linux/audit.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#if defined(__x86_64__)
static constexpr uint32_t kArchitecture = AUDIT_ARCH_X86_64;
/// Set in the numbers of a second set of calls, for programs with short pointers.
static constexpr uint32_t kOtherCallsBit = 0x40000000;
#elif defined(__aarch64__)
static constexpr uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
static constexpr uint32_t kArchitecture = 0;
#endif

static constexpr uint16_t kLoad = BPF_LD | BPF_W | BPF_ABS;
static constexpr uint16_t kJumpIfEqual = BPF_JMP | BPF_JEQ | BPF_K;
static constexpr uint16_t kJumpIfAnyBit = BPF_JMP | BPF_JSET | BPF_K;
static constexpr uint16_t kReturn = BPF_RET | BPF_K;

/// Arguments are 64 bits wide, their low word first on both processors.
static constexpr size_t kArgumentSize = sizeof(uint64_t);

bool Jail::KnowsThisProcessor()
{
    return kArchitecture != 0;
}

uint32_t Jail::FailWith(int error)
{
    return SECCOMP_RET_ERRNO | (static_cast<uint32_t>(error) & SECCOMP_RET_DATA);
}

void Jail::CCallFilter::Add(uint16_t code, uint32_t value, uint8_t yes, uint8_t no)
{
    mProgram.push_back({code, yes, no, value});
}

Jail::CCallFilter::CCallFilter()
{
    Add(kLoad, offsetof(seccomp_data, arch));
    Add(kJumpIfEqual, kArchitecture, 1, 0);
    Add(kReturn, SECCOMP_RET_KILL_PROCESS);
    Add(kLoad, offsetof(seccomp_data, nr));
#if defined(__x86_64__)
    Add(kJumpIfAnyBit, kOtherCallsBit, 0, 1);
    Add(kReturn, SECCOMP_RET_KILL_PROCESS);
#endif
}

void Jail::CCallFilter::Answer(uint32_t answer, std::initializer_list<int> calls)
{
    for (const int call : calls) {
        Add(kJumpIfEqual, static_cast<uint32_t>(call), 0, 1);
        Add(kReturn, answer);
    }
}

void Jail::CCallFilter::AnswerIf(int call, std::initializer_list<tCondition> conditions, uint32_t yes, uint32_t no)
{
    // Two instructions a condition, then the two answers; jumps count from the next instruction.
    uint8_t left = static_cast<uint8_t>(2 * conditions.size());
    Add(kJumpIfEqual, static_cast<uint32_t>(call), 0, static_cast<uint8_t>(left + 2));
    for (const tCondition& condition : conditions) {
        left = static_cast<uint8_t>(left - 2);
        const uint8_t toNo = static_cast<uint8_t>(left + 1);
        Add(kLoad, static_cast<uint32_t>(offsetof(seccomp_data, args) + kArgumentSize * condition.argument));
        if (condition.test == tCondition::eTest::kEquals) {
            Add(kJumpIfEqual, condition.value, 0, toNo);
        } else {
            Add(kJumpIfAnyBit, condition.value, toNo, 0);
        }
    }
    Add(kReturn, yes);
    Add(kReturn, no);
}

void Jail::CCallFilter::AnswerIfOneOf(int call, unsigned argument, std::initializer_list<uint32_t> values, uint32_t yes,
                                      uint32_t no)
{
    uint8_t left = static_cast<uint8_t>(values.size());
    Add(kJumpIfEqual, static_cast<uint32_t>(call), 0, static_cast<uint8_t>(left + 3));
    Add(kLoad, static_cast<uint32_t>(offsetof(seccomp_data, args) + kArgumentSize * argument));
    for (const uint32_t value : values) {
        Add(kJumpIfEqual, value, left, 0); // over the values left and the first answer
        --left;
    }
    Add(kReturn, no);
    Add(kReturn, yes);
}

bool Jail::CCallFilter::Install(std::string& detail)
{
    Add(kReturn, SECCOMP_RET_KILL_PROCESS);
    const sock_fprog program = {static_cast<unsigned short>(mProgram.size()), mProgram.data()};
    const long result = syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program);
    if (result == 0) {
        detail = "all threads";
        return true;
    }
    if (result > 0) {
        detail = "refused: a thread has a filter of its own";
        return false;
    }
    const int error = errno;
    // The older way, which a container may still allow; it binds the calling thread, of which there is but one.
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0) {
        detail = "the only thread";
        return true;
    }
    detail = std::string("refused by the system: ") + strerror(error);
    return false;
}
