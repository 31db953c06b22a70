#include "CMemoryFile.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

CMemoryFile::CMemoryFile(const char* name)
    : mDescriptor(memfd_create(name, MFD_CLOEXEC)), mPath("/proc/self/fd/" + std::to_string(mDescriptor))
{
    if (mDescriptor < 0) {
        std::abort();
    }
}

CMemoryFile::~CMemoryFile()
{
    close(mDescriptor);
}

void CMemoryFile::Set(const uint8_t* bytes, size_t size)
{
    if (ftruncate(mDescriptor, 0) != 0 || pwrite(mDescriptor, bytes, size, 0) != static_cast<ssize_t>(size)) {
        std::abort();
    }
}
