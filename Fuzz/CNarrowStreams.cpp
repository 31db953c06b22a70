#include "CNarrowStreams.h"

#include <algorithm>
#include <cstdio>
#include <dlfcn.h>

namespace {
bool sNarrow = false;
size_t sCount = 0;
size_t sWindow = 0;
} // namespace

/// Stands in front of the C library's, also for the shared library that opens documents.
extern "C" __attribute__((visibility("default"))) int setvbuf(FILE* stream, char* buffer, int mode,
                                                              size_t size) noexcept
{
    using tFunction = int (*)(FILE*, char*, int, size_t);
    static const auto sOwn = reinterpret_cast<tFunction>(dlsym(RTLD_NEXT, "setvbuf"));
    if (!sNarrow) {
        return sOwn(stream, buffer, mode, size);
    }
    ++sCount;
    return sWindow == 0 ? sOwn(stream, nullptr, _IONBF, 0) : sOwn(stream, buffer, mode, std::min(sWindow, size));
}

CNarrowStreams::CNarrowStreams(size_t window)
{
    sWindow = window;
    sNarrow = true;
    sCount = 0;
}

CNarrowStreams::~CNarrowStreams()
{
    sNarrow = false;
}

size_t CNarrowStreams::GetCount() const
{
    return sCount;
}
