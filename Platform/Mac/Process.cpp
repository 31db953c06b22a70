#include "Platform/Process.h"

#include <unistd.h>

// A worker there ends when its socket closes; the allocator keeps pages by itself.
void Platform::EndWithParent() {}

void Platform::CloseDescriptorsFrom(int first)
{
    for (int descriptor = getdtablesize() - 1; descriptor >= first; --descriptor) {
        close(descriptor);
    }
}

void Platform::KeepFreedMemory() {}

void Platform::LookUpSettings() {}
