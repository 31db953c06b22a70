#include "FileRules.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

// Names and numbers of the kernel's interface are our own here: the headers of older systems end at its second version.
namespace {
constexpr long kCreateRuleset = 444;
constexpr long kAddRule = 445;
constexpr long kRestrictSelf = 446;
constexpr uint32_t kAskVersion = 1;
constexpr int kRuleBeneathFolder = 1;

/// What a rule set decides about; the fields after the first came with versions 4 and 6.
struct tRuleset {
    uint64_t files;
    uint64_t network;
    uint64_t scopes;
};

struct tFolderRule {
    uint64_t files;
    int32_t folder;
} __attribute__((packed));

constexpr uint64_t kReadFile = 1U << 2;
/// Execute, write file, read file, read folder, remove and make of eight kinds: version 1.
constexpr uint64_t kFirstRights = (1U << 13) - 1;
constexpr uint64_t kMoveBetweenFolders = 1U << 13; ///< version 2
constexpr uint64_t kTruncate = 1U << 14;           ///< version 3
constexpr uint64_t kControlDevices = 1U << 15;     ///< version 5
constexpr uint64_t kBindAndConnectTCP = 3;         ///< version 4
constexpr uint64_t kSocketsAndSignals = 3;         ///< version 6
} // namespace

int Jail::GetFileRulesVersion()
{
    const long version = syscall(kCreateRuleset, nullptr, 0, kAskVersion);
    return version > 0 ? static_cast<int>(version) : 0;
}

/// Grants reading below a folder. One that cannot be looked at is passed over: its files could not be read anyway.
static bool Grant(int ruleset, const std::string& folder)
{
    tFolderRule rule = {kReadFile, open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (rule.folder < 0) {
        return true;
    }
    const bool granted = syscall(kAddRule, ruleset, kRuleBeneathFolder, &rule, 0) == 0;
    close(rule.folder);
    return granted;
}

bool Jail::RestrictFiles(const std::vector<std::string>& readableFolders, std::string& detail)
{
    const int version = GetFileRulesVersion();
    if (version == 0) {
        detail = std::string("the system has none: ") + strerror(errno);
        return false;
    }
    tRuleset rules = {kFirstRights, 0, 0};
    size_t size = sizeof rules.files;
    rules.files |= version >= 2 ? kMoveBetweenFolders : 0;
    rules.files |= version >= 3 ? kTruncate : 0;
    rules.files |= version >= 5 ? kControlDevices : 0;
    if (version >= kTCPVersion) {
        rules.network = kBindAndConnectTCP;
        size += sizeof rules.network;
    }
    if (version >= kScopesVersion) {
        rules.scopes = kSocketsAndSignals;
        size += sizeof rules.scopes;
    }
    const long created = syscall(kCreateRuleset, &rules, size, 0);
    const int ruleset = static_cast<int>(created);
    const bool restricted = created >= 0 &&
                            std::all_of(readableFolders.begin(), readableFolders.end(),
                                        [ruleset](const std::string& folder) { return Grant(ruleset, folder); }) &&
                            syscall(kRestrictSelf, ruleset, 0) == 0;
    const int error = errno;
    if (created >= 0) {
        close(ruleset);
    }
    if (!restricted) {
        detail = std::string("refused by the system: ") + strerror(error);
        return false;
    }
    detail = "version " + std::to_string(version) + ": files";
    detail += version >= kTCPVersion ? ", TCP" : "";
    detail += version >= kScopesVersion ? ", abstract sockets, signals" : "";
    return true;
}
