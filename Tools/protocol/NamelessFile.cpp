#include "protocol/NamelessFile.h"

#include <cstdio>
#include <fcntl.h>
#if defined(__linux__)
#include <sys/mman.h>
#endif

CDescriptor MakeNamelessFile()
{
#if defined(__linux__)
    return CDescriptor(memfd_create("velmora", MFD_CLOEXEC));
#else
    CDescriptor file;
    if (FILE* temporary = tmpfile()) {
        file.Reset(fcntl(fileno(temporary), F_DUPFD_CLOEXEC, 0));
        fclose(temporary);
    }
    return file;
#endif
}
