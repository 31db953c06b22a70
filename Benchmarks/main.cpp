#include <benchmark/benchmark.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

int main(int argc, char** argv)
{
#if defined(__GLIBC__)
    mallopt(M_TRIM_THRESHOLD, 64 << 20); // as in the worker: a process that stays keeps its memory between documents
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
