// What a helper process asks of the system about itself.
#pragma once

#include "Platform/Export.h"

namespace Platform {
/// Lets the system end this process when the one that started it dies, where it can; a parent that has died already
/// counts. To be called first thing.
PLATFORM_EXPORT void EndWithParent();

/// Closes every descriptor from this number on, whoever has opened it.
PLATFORM_EXPORT void CloseDescriptorsFrom(int first);

/// Keeps memory that was given back for the next use instead of returning it to the system: a process that handles one
/// document after another would fault the same pages in again for each. Where the allocator would keep areas for
/// threads, one has to do: each counts as 64 MB of address space. To be called before there are threads.
PLATFORM_EXPORT void KeepFreedMemory();

/// Has the system's libraries look up now what they would look up in files when they first need it: the time zone, the
/// main bundle. Afterwards they do without files, and times stay local times.
PLATFORM_EXPORT void LookUpSettings();
} // namespace Platform
