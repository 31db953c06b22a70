// What must stay linear: distinct article names, layers and groups, at 10,000 and 100,000 of them.
#include "Documents.h"

#include "Layers/CLayerManager.h"
#include "Layouts/Utilities/CBoundLayout.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {
/// Loads and destroys a layout; the argument is the number of things that are many.
void LoadMany(benchmark::State& state, tDocumentShape (*shapeFor)(int))
{
    const CTemporaryDocument document(shapeFor(static_cast<int>(state.range(0))));
    for (auto unused : state) {
        CBoundLayout layout;
        benchmark::DoNotOptimize(layout.Load(document.GetPath()));
    }
    state.SetComplexityN(state.range(0));
    state.counters["kB"] = static_cast<double>(document.GetSize()) / 1000.0;
}

tDocumentShape Names(int count)
{
    return {.elements = count, .articleNames = count, .libraries = count};
}
tDocumentShape Layers(int count)
{
    return {.elements = count, .layers = count};
}
tDocumentShape Groups(int count)
{
    return {.elements = 2 * count + 2, .groups = count};
}
tDocumentShape NestedGroups(int count)
{
    return {.elements = 2 * count + 2, .groups = count, .nested = true};
}

/// Layers that all want the same name.
void EqualLayerNames(benchmark::State& state)
{
    for (auto unused : state) {
        CLayerManager layers("Track");
        for (int64_t i = 0; i < state.range(0); ++i) {
            layers.AddLayer(layers.TestMakeUniqueName("Track").c_str());
        }
    }
}
} // namespace

BENCHMARK_CAPTURE(LoadMany, distinct_names, &Names)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadMany, layers, &Layers)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadMany, groups, &Groups)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadMany, nested_groups, &NestedGroups)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(EqualLayerNames)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
