// Time of a load, as multiples of the bare walk through the same file's records.
#include "Documents.h"

#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/Utilities/CBoundLayout.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace {
using tClock = std::chrono::steady_clock;

double SecondsSince(tClock::time_point start)
{
    return std::chrono::duration<double>(tClock::now() - start).count();
}

void LoadOnce(const std::string& path)
{
    CBoundLayout layout;
    if (layout.Load(path) != CLayout::kLoaded) {
        std::abort();
    }
    benchmark::DoNotOptimize(layout.GetElements().size());
}

double Median(std::vector<double>& values)
{
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

/// Load with construction and destruction, interleaved with walks so that both see the same machine.
void Load(benchmark::State& state, const tDocumentShape& shape)
{
    const CTemporaryDocument document(shape);
    std::vector<double> walks;
    std::vector<double> loads;
    for (auto unused : state) {
        tClock::time_point start = tClock::now();
        benchmark::DoNotOptimize(WalkRecords(document.GetPath()));
        walks.push_back(SecondsSince(start));
        start = tClock::now();
        LoadOnce(document.GetPath());
        loads.push_back(SecondsSince(start));
        state.SetIterationTime(loads.back());
    }
    state.counters["kB"] = static_cast<double>(document.GetSize()) / 1000.0;
    state.counters["walk_us"] = Median(walks) * 1e6;
    state.counters["load_us"] = Median(loads) * 1e6;
    state.counters["x_walk"] = Median(loads) / Median(walks);
}

void Summary(benchmark::State& state, const tDocumentShape& shape)
{
    const CTemporaryDocument document(shape);
    CBoundLayout layout;
    layout.Load(document.GetPath());
    for (auto unused : state) {
        benchmark::DoNotOptimize(UElementStatistics::GetContentSummaryAsString(layout.GetElements()));
    }
}

const tDocumentShape kSmall = {.elements = 8, .articleNames = 4, .layers = 2, .texts = 1};
const tDocumentShape kMiddle = {
    .elements = 440, .articleNames = 40, .libraries = 3, .layers = 8, .texts = 10, .flexTracks = 10};
const tDocumentShape kManyNames = {.elements = 400, .articleNames = 360, .libraries = 3, .layers = 8};
const tDocumentShape kTexts = {.elements = 400, .articleNames = 40, .layers = 8, .texts = 300};
const tDocumentShape kFlex = {.elements = 400, .articleNames = 40, .layers = 8, .flexTracks = 400};
const tDocumentShape kLarge = {.elements = 100000, .articleNames = 40, .libraries = 5, .layers = 12};
const tDocumentShape kManyLibraries = {.elements = 100000, .articleNames = 40, .libraries = 50000, .layers = 12};
} // namespace

BENCHMARK_CAPTURE(Load, small_8_elements, kSmall)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Load, middle_440_elements, kMiddle)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Load, 400_elements_360_names, kManyNames)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Load, 300_texts, kTexts)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Load, 400_flexible_tracks, kFlex)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Load, large_100000_elements, kLarge)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Summary, 100000_elements_5_libraries, kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Summary, 100000_elements_50000_libraries, kManyLibraries)->Unit(benchmark::kMillisecond);
