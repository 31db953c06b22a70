#include "Platform/Process.h"

// A worker there ends when its socket closes; the allocator keeps pages by itself.
void Platform::EndWithParent() {}

void Platform::KeepFreedMemory() {}

void Platform::LookUpSettings() {}
