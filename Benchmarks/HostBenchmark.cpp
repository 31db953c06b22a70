// What the host makes of many documents: a program of its own, because it starts whole runs and looks at them from
// outside. Prints a table; docs/performance.md tells how to read it.
#include "Documents.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {
namespace fs = std::filesystem;
using tClock = std::chrono::steady_clock;

constexpr int kRuns = 5;

struct tRun {
    double seconds = 0;
    double hostSeconds = 0;   ///< processor time of the host itself
    double workerSeconds = 0; ///< of its workers together
    long peakKilobytes = 0;   ///< resident memory of the host
};

/// A folder of copies of one document, gone with the object.
class CFolderOfCopies {
public:
    CFolderOfCopies(const tDocumentShape& shape, int count)
    {
        std::string pattern = (fs::temp_directory_path() / "velmora-host-XXXXXX").string();
        mPath = mkdtemp(pattern.data());
        const CTemporaryDocument document(shape);
        mDocumentSize = document.GetSize();
        for (int i = 0; i < count; ++i) {
            char name[32];
            snprintf(name, sizeof name, "plan-%06d.velmora", i);
            fs::copy_file(document.GetPath(), mPath / name);
        }
    }
    ~CFolderOfCopies() { fs::remove_all(mPath); }
    CFolderOfCopies(const CFolderOfCopies&) = delete;
    CFolderOfCopies& operator=(const CFolderOfCopies&) = delete;

    std::string GetPath() const { return mPath.string(); }
    size_t GetDocumentSize() const { return mDocumentSize; }

private:
    fs::path mPath;
    size_t mDocumentSize = 0;
};

/// The largest resident size a process has had, in kilobytes; 0 when it is gone.
long ReadPeak(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::atol(line.c_str() + 6);
        }
    }
    return 0;
}

/// Processor times of an ended process that has not been collected yet.
void ReadTimes(pid_t process, tRun& run)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::vector<std::string> values;
    for (std::string value; fields >> value;) {
        values.push_back(value);
    }
    const double tick = static_cast<double>(sysconf(_SC_CLK_TCK));
    run.hostSeconds = (std::stod(values.at(11)) + std::stod(values.at(12))) / tick;
    run.workerSeconds = (std::stod(values.at(13)) + std::stod(values.at(14))) / tick;
}

tRun RunImport(const std::string& velmora, const std::string& folder, int jobs)
{
    const std::string number = std::to_string(jobs);
    tRun run;
    const tClock::time_point start = tClock::now();
    const pid_t process = fork();
    if (process == 0) {
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDOUT_FILENO);
        execl(velmora.c_str(), "velmora", "import", "--format", "json", "--jobs", number.c_str(), "--quiet",
              folder.c_str(), nullptr);
        _exit(127);
    }
    siginfo_t info = {};
    while (waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOWAIT | WNOHANG) == 0 && info.si_pid == 0) {
        run.peakKilobytes = std::max(run.peakKilobytes, ReadPeak(process));
        usleep(2000);
    }
    run.seconds = std::chrono::duration<double>(tClock::now() - start).count();
    ReadTimes(process, run);
    int status = 0;
    waitpid(process, &status, 0);
    if (status != 0) {
        fprintf(stderr, "velmora import %s failed\n", folder.c_str());
        exit(1);
    }
    return run;
}

/// The fastest of several runs: what else goes on only makes them slower.
tRun BestRun(const std::string& velmora, const CFolderOfCopies& folder, int documents, int jobs)
{
    std::vector<tRun> runs;
    for (int i = 0; i < kRuns; ++i) {
        runs.push_back(RunImport(velmora, folder.GetPath(), jobs));
    }
    const tRun best = *std::min_element(runs.begin(), runs.end(),
                                        [](const tRun& one, const tRun& other) { return one.seconds < other.seconds; });
    printf("%9d  %9.1f  %7d  %7.3f  %12.0f  %18.1f  %20.1f  %9ld\n", documents,
           static_cast<double>(folder.GetDocumentSize()) / 1000, jobs, best.seconds, documents / best.seconds,
           best.hostSeconds / documents * 1e6, best.workerSeconds / documents * 1e6, best.peakKilobytes);
    fflush(stdout);
    return best;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: velmora-host-benchmark VELMORA\n");
        return 2;
    }
    const std::string velmora = argv[1];
    const tDocumentShape small = {.elements = 8, .articleNames = 4, .layers = 2, .texts = 1};
    const tDocumentShape middle = {
        .elements = 440, .articleNames = 40, .libraries = 3, .layers = 8, .texts = 10, .flexTracks = 10};
    printf("documents  kB each    workers  seconds  documents/s  host, us/document  workers, us/document  host, kB\n");
    const CFolderOfCopies few(small, 1000);
    const CFolderOfCopies many(small, 10000);
    const CFolderOfCopies larger(middle, 2000);
    BestRun(velmora, few, 1000, 2);
    BestRun(velmora, many, 10000, 1);
    BestRun(velmora, many, 10000, 2);
    const double one = BestRun(velmora, larger, 2000, 1).seconds;
    const double two = BestRun(velmora, larger, 2000, 2).seconds;
    printf("two workers are %.2f times as fast as one on the larger documents\n", one / two);
}
