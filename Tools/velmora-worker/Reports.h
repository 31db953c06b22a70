// What the core says while it works, in the worker's own copy and in the plug-in's.
#pragma once

#include <cstdint>
#include <string>

namespace Reports {
/// From now on a fatal report is sent to the host before the process ends, and reasons of failed loads are kept.
/// @param socket  not owned
void Begin(int socket);

/// Starts listening for a request. @param sequence  its number
void Reset(uint32_t sequence);

/// Why the last load failed, in the loader's words (UTF-8); empty when it did not say.
std::string GetLoadFailure();
} // namespace Reports
