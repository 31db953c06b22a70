// The search index: storing rows, ranked queries, and whole runs of the host over a folder of small documents.
#include "Documents.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexSearch.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace {
namespace fs = std::filesystem;
using tClock = std::chrono::steady_clock;

constexpr int kDocuments = 100000;
constexpr int kFilesInFolder = 1000;

double SecondsSince(tClock::time_point start)
{
    return std::chrono::duration<double>(tClock::now() - start).count();
}

/// The processor's time, which other programs on a busy machine do not lengthen as much.
double ProcessorSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

class CTemporaryFolder {
public:
    CTemporaryFolder()
    {
        mPath = (fs::temp_directory_path() / "velmora-benchmark-XXXXXX").string();
        if (mkdtemp(mPath.data()) == nullptr) {
            std::abort();
        }
    }
    ~CTemporaryFolder()
    {
        std::error_code ignored;
        fs::remove_all(mPath, ignored);
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    const std::string& GetPath() const { return mPath; }

private:
    std::string mPath;
};

/// Texts as people write them: the word of rank n is n times rarer than the most common one.
class CWriter {
public:
    std::string Words(int count, int vocabulary, const char* stem)
    {
        std::string text;
        for (int i = 0; i < count; ++i) {
            const double rank = std::exp(std::uniform_real_distribution<>(0.0, std::log(vocabulary))(mRandom));
            text += (i == 0 ? "" : " ") + (stem + std::to_string(static_cast<int>(rank)));
        }
        return text;
    }

    /// About as many words as a layout of 4 kB has.
    tIndexedTexts Document(int number)
    {
        return {"Plan " + std::to_string(number),
                Words(2, 2000, "author"),
                Words(8, 20000, "word"),
                "1." + std::to_string(number % 10),
                Words(4, 500, "layer"),
                Words(2, 200, "library"),
                Words(6, 5000, "article"),
                Words(20, 20000, "word"),
                "Layouts, Folder " + std::to_string(number / kFilesInFolder)};
    }

private:
    std::mt19937 mRandom{1};
};

void Fill(CIndexDatabase& index)
{
    CWriter writer;
    for (int i = 0; i < kDocuments; ++i) {
        tOrigin origin;
        origin.path = "/home/someone/Layouts/Folder " + std::to_string(i / kFilesInFolder) + "/Plan " +
                      std::to_string(i) + ".velmora";
        origin.stamp = {4096, 1700000000000000000 + i, static_cast<uint64_t>(i)};
        origin.hash = "0123456789abcdef";
        origin.importer = "1";
        index.Find(origin.path);
        index.StoreTexts(origin, writer.Document(i), {1700000000, static_cast<uint32_t>(i % 200), 5000, {{"H0", 1650}}},
                         1700000000);
        if (i % 1000 == 999) {
            index.Commit();
        }
    }
    index.Optimize(); // as a run does that has added most of what there is
    index.Commit();
}

/// What making the texts costs is measured, too, and taken away.
void StoreRows(benchmark::State& state)
{
    for (auto unused : state) {
        const CTemporaryFolder folder;
        tClock::time_point start = tClock::now();
        double startCPU = ProcessorSeconds();
        CWriter writer;
        for (int i = 0; i < kDocuments; ++i) {
            benchmark::DoNotOptimize(writer.Document(i));
        }
        const double writing = SecondsSince(start);
        const double writingCPU = ProcessorSeconds() - startCPU;
        CIndexDatabase index(folder.GetPath() + "/index.db", CIndexDatabase::eAccess::kWrite);
        start = tClock::now();
        startCPU = ProcessorSeconds();
        Fill(index);
        const double seconds = SecondsSince(start) - writing;
        const double secondsCPU = ProcessorSeconds() - startCPU - writingCPU;
        state.SetIterationTime(seconds);
        state.counters["us_a_row"] = seconds / kDocuments * 1e6;
        state.counters["cpu_us_a_row"] = secondsCPU / kDocuments * 1e6;
        state.counters["MB"] = static_cast<double>(index.GetStatus().bytes) / 1e6;
    }
}

/// The twenty best of a query, passages included, on the rows of StoreRows.
void Query(benchmark::State& state, const char* text)
{
    static const CTemporaryFolder folder;
    const std::string path = folder.GetPath() + "/index.db";
    if (!fs::exists(path)) {
        CIndexDatabase index(path, CIndexDatabase::eAccess::kWrite);
        Fill(index);
    }
    CIndexDatabase index(path, CIndexDatabase::eAccess::kRead);
    for (auto unused : state) {
        CIndexSearch search(index, text);
        size_t found = 0;
        search.Find({{}, eSearchOrder::kRelevance, 0, 20}, [&](const tFoundDocument&) {
            ++found;
            return true;
        });
        benchmark::DoNotOptimize(found);
        if (found == 0) { // as a terminal is told
            const std::string suggestion = search.Suggest();
            state.SetLabel(suggestion);
        }
    }
    state.counters["whole"] = static_cast<double>(CIndexSearch(index, text, true).Count({}));
    state.counters["documents"] = static_cast<double>(CIndexSearch(index, text).Count({}));
}

/// Copies of one small layout that differ in their texts.
void MakeDocuments(const std::string& folder)
{
    const CTemporaryDocument document({.elements = 8, .articleNames = 4, .layers = 2, .texts = 1});
    std::stringstream content;
    content << std::ifstream(document.GetPath(), std::ios::binary).rdbuf();
    std::string bytes = content.str();
    const size_t place = bytes.find("Station 0");
    for (int i = 0; i < kDocuments; ++i) {
        const std::string in = folder + "/Folder " + std::to_string(i / kFilesInFolder);
        if (i % kFilesInFolder == 0) {
            fs::create_directory(in);
        }
        std::string number = std::to_string(i);
        number.insert(0, 8 - number.size(), '0');
        bytes.replace(place, 9, "S" + number);
        std::ofstream(in + "/Plan " + std::to_string(i) + ".velmora", std::ios::binary) << bytes;
    }
}

/// First and second run of the host; the counters are documents a second.
void IndexFolder(benchmark::State& state)
{
    const CTemporaryFolder folder;
    MakeDocuments(folder.GetPath());
    for (auto unused : state) {
        const CTemporaryFolder place;
        const std::string command = std::string("'" HOST_PROGRAM "' index --database '") + place.GetPath() +
                                    "/index.db' '" + folder.GetPath() + "' > '" + place.GetPath() + "/out'";
        tClock::time_point start = tClock::now();
        const bool good = std::system(command.c_str()) == 0;
        const double first = SecondsSince(start);
        start = tClock::now();
        if (!good || std::system(command.c_str()) != 0) {
            state.SkipWithError("velmora index failed");
            return;
        }
        const double second = SecondsSince(start);
        state.SetIterationTime(first);
        state.counters["first_per_s"] = kDocuments / first;
        state.counters["again_per_s"] = kDocuments / second;
        std::string line;
        std::getline(std::ifstream(place.GetPath() + "/out"), line);
        state.SetLabel(line);
    }
}
} // namespace

BENCHMARK(StoreRows)->UseManualTime()->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK_CAPTURE(Query, two_rare_words, "word1234 word777")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, two_usual_words, "word40 author:author12")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, two_common_words, "word5 word9")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, word_of_nearly_all, "word1 word2")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, one_word_of_most, "word2")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, two_words_of_most, "word2 word3")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, common_and_rare, "word2 word12345")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, words_never_together, "name:plan article:word2")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, part, "ticle77")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, two_parts, "ord40 thor12")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, part_of_all, "*ord*")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, mistyped, "autohr1234 word1")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, figure_alone, "elements:150..160")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, word_and_figure, "word2 elements:150")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, phrase, "\"word40 word12\"")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Query, beginning, "word77* layer4")->Unit(benchmark::kMillisecond);
BENCHMARK(IndexFolder)->UseManualTime()->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK_MAIN();
