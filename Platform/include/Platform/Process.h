// What a helper process asks of the system about itself.
#pragma once

#include "Platform/Export.h"

namespace Platform {
/// Lets the system end this process when the one that started it dies, where it can; a parent that has died already
/// counts. To be called first thing.
PLATFORM_EXPORT void EndWithParent();

/// Keeps memory that was given back for the next use instead of returning it to the system: a process that handles one
/// document after another would fault the same pages in again for each.
PLATFORM_EXPORT void KeepFreedMemory();
} // namespace Platform
