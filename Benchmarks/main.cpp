#include "Platform/Process.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    Platform::KeepFreedMemory(); // as the worker does
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
