// The user's wish to end (SIGINT), as a flag and as something to wait for.
#pragma once

namespace Interrupt {
/// Catches SIGINT from now on, unless the caller had it ignored. The first one sets the flag, a second one ends the
/// process at once with 130. SIGPIPE and SIGXFSZ are ignored from now on: writes report a closed pipe, and a file that
/// may not grow, themselves.
void Install();

/// Takes SIGTERM like SIGINT from now on, for a program that runs until it is told to end.
void InstallForService();

/// Whether SIGINT has arrived, or SIGTERM after InstallForService.
bool IsRequested();

/// Whether it was SIGTERM: to end like this is then what was wanted.
bool IsTermination();

/// Becomes readable when SIGINT arrives, and stays so; -1 before Install.
int GetDescriptor();
} // namespace Interrupt
