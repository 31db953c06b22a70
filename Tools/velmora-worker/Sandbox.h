// How far a worker confines itself, by what its host asked for.
#pragma once

#include "Platform/Jail.h"
#include "protocol/Messages.h"

#include <optional>
#include <string>
#include <string_view>

namespace Sandbox {
/// What the host may ask for.
struct tMode {
    unsigned layers = Jail::kAllLayers; ///< of Jail::eLayer
    bool isRequired = false;            ///< do not serve without seccomp and landlock
    unsigned user = 0;                  ///< whom to become; 0 for nobody else
    unsigned group = 0;
    std::string note; ///< why there is no sandbox; empty where there is one
};

/// @param text  "auto", "require", "off" (then only the memory is bounded), or the names of layers with plus signs
///              between them, for trying each alone
/// @return none for another text
std::optional<tMode> ParseMode(std::string_view text);

/// Closes the jail.
/// @param hello  its sandbox is set, and that it is not ready, where one is required and cannot be had
void Close(const tMode& mode, Jail::eProfile profile, size_t memoryMegabytes, tHello& hello);
} // namespace Sandbox
