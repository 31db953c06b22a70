// A seccomp program, put together rule by rule.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <linux/filter.h>
#include <string>
#include <vector>

namespace Jail {
/// A condition on one argument of a system call. Only the low 32 bits are looked at: of all arguments asked about here
/// the kernel itself uses no more.
struct tCondition {
    enum class eTest { kEquals, kHasNoneOf };
    unsigned argument; ///< 0 to 5
    eTest test;
    uint32_t value;
};

/// Rules are tried in the order in which they were added; the first one for a call decides.
class CCallFilter {
public:
    /// The processor's way of calling is checked first: with another one the numbers would mean other calls.
    CCallFilter();

    /// Answers for these calls, whatever their arguments. @param answer  SECCOMP_RET_...
    void Answer(uint32_t answer, std::initializer_list<int> calls);

    /// Answers `yes` where all conditions hold, else `no`.
    void AnswerIf(int call, std::initializer_list<tCondition> conditions, uint32_t yes, uint32_t no);

    /// Answers `yes` where the argument is one of the values, else `no`.
    void AnswerIfOneOf(int call, unsigned argument, std::initializer_list<uint32_t> values, uint32_t yes, uint32_t no);

    /// Puts the filter on all threads of this process, everything without a rule ending it. It cannot be taken off.
    /// @param detail  set to how far it reaches, or why it failed
    bool Install(std::string& detail);

private:
    void Add(uint16_t code, uint32_t value, uint8_t yes = 0, uint8_t no = 0);

    std::vector<sock_filter> mProgram;
};

/// Whether this processor's calls are known here.
bool KnowsThisProcessor();

/// SECCOMP_RET_... for a call that fails with that error number.
uint32_t FailWith(int error);
} // namespace Jail
