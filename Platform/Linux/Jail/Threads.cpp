#include "Threads.h"

#include <dlfcn.h>
#include <pthread.h>

// The font library has each new kind of font looked for by a thread that it does not wait for. In a jail without
// threads that has to be done all the same, so this process stands in front of the C library's function.

static bool sRunAtOnce = false;

void Jail::RunThreadsAtOnce()
{
    sRunAtOnce = true;
}

extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument) noexcept
{
    if (sRunAtOnce) {
        *thread = pthread_self();
        run(argument);
        return 0;
    }
    using tCreate = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto sCreate = reinterpret_cast<tCreate>(dlsym(RTLD_NEXT, "pthread_create"));
    return sCreate(thread, attributes, run, argument);
}
