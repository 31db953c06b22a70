// What a process that reads hostile documents gives up, for good, before it sees the first byte.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Jail {
/// One thing that is given up; each works without the others.
enum eLayer : unsigned {
    kMemory = 1,     ///< address space: what is mapped at closing, and what is granted beyond
    kLimits = 2,     ///< no file grows, few descriptors, no core files
    kPrivileges = 4, ///< the administrator's rights, new ones by starting programs; others may not look inside
    kFileRules = 8,  ///< Landlock: no files, no TCP, no abstract sockets, no signals to others
    kCallFilter = 16 ///< seccomp: a list of system calls; opening files is refused, most others end the process
};
inline constexpr unsigned kAllLayers = 31;

/// What remains allowed.
enum class eProfile {
    kRead, ///< memory, and descriptors that are open or handed in
    kDraw  ///< also reading files in some folders (fonts); what starts a thread runs at once
};

struct tOrder {
    eProfile profile = eProfile::kRead;
    unsigned layers = kAllLayers;             ///< those to be put on, of eLayer
    unsigned user = 0;                        ///< whom the process becomes, for kPrivileges; 0 to stay who it is
    unsigned group = 0;                       ///< and of which group
    size_t memoryMegabytes = 0;               ///< granted beyond what is mapped, for kMemory
    std::vector<std::string> readableFolders; ///< for kDraw; those that do not exist count as none
};

/// What became of a layer.
struct tState {
    eLayer layer;
    bool isOn;
    std::string detail; ///< how far it reaches, or why it is not on; for people
};

/// "memory", "limits", "privileges", "landlock" or "seccomp".
const char* GetName(eLayer layer);

/// Puts layers on. A layer that the system refuses is left out, the others are put on all the same.
/// The process should have one thread: landlock binds the calling thread and those it starts later.
/// @return the states of the layers ordered, in the order of eLayer; none where the system has no such thing
std::vector<tState> Close(const tOrder& order);

/// Waits until this process has one thread: libraries start some and do not wait for their end.
/// @return false when there are several after that time
bool WaitForOneThread(int milliseconds);

/// Something that a document's code must not be able to do, for trying it. Outside of a jail it leaves no trace.
struct tAct {
    const char* name;        ///< a word
    const char* description; ///< for people, "open a file"
    unsigned refusedBy;      ///< the layers (eLayer) of which each alone refuses it
};

/// All acts that can be tried on this system; none where there is no jail.
const std::vector<tAct>& GetActs();

/// Tries an act. A jail may end the process for it.
/// @param error  set to the system's error number when the answer is false; 0 for an unknown act
/// @return whether it succeeded
bool TryAct(const std::string& name, int& error);
} // namespace Jail
