#include "ProgramRun.h"

#include "support/DocumentBuilder.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

[[noreturn]] static void StartProgram(const tProgramRun& run, int in, int out, int err)
{
    std::vector<std::string> texts = run.arguments;
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    if (run.emptyEnvironment) {
        clearenv();
    }
    for (const std::string& entry : run.environment) {
        const size_t equals = entry.find('=');
        setenv(entry.substr(0, equals).c_str(), entry.substr(equals + 1).c_str(), 1);
    }
    if (!run.folder.empty() && chdir(run.folder.c_str()) != 0) {
        _exit(126);
    }
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

tProgramResult RunProgram(const tProgramRun& run)
{
    tProgramResult result;
    int in[2];
    int out[2];
    int err[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        return result;
    }
    if (run.columns > 0) {
        winsize size = {40, run.columns, 0, 0};
        close(out[0]);
        close(out[1]);
        EXPECT_EQ(openpty(&out[0], &out[1], nullptr, nullptr, &size), 0);
    }
    const pid_t process = fork();
    if (process == 0) {
        StartProgram(run, in[0], out[1], err[1]);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);
    // Inputs of tests fit into a pipe.
    EXPECT_EQ(write(in[1], run.input.data(), run.input.size()), static_cast<ssize_t>(run.input.size()));
    close(in[1]);
    using tClock = std::chrono::steady_clock;
    const tClock::time_point due = tClock::now() + run.signalAfter;
    bool isDue = run.signal != 0;
    pollfd waits[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
    std::string* texts[2] = {&result.out, &result.err};
    while (waits[0].fd >= 0 || waits[1].fd >= 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - tClock::now()).count();
        if (poll(waits, 2, isDue ? static_cast<int>(std::max<int64_t>(left, 0)) : -1) == 0) {
            kill(process, run.signal);
            isDue = false;
        }
        for (int i = 0; i < 2; ++i) {
            if (waits[i].fd < 0 || waits[i].revents == 0) {
                continue;
            }
            char buffer[65536];
            const ssize_t count = read(waits[i].fd, buffer, sizeof buffer);
            if (count > 0) {
                texts[i]->append(buffer, static_cast<size_t>(count));
            }
            const bool wanted = i != 0 || !run.onOutput || count <= 0 || run.onOutput(process, result.out);
            if (count <= 0 || !wanted) {
                close(waits[i].fd);
                waits[i].fd = -1;
            }
        }
    }
    int status = 0;
    rusage usage = {};
    wait4(process, &status, 0, &usage);
    result.peakMemory = static_cast<size_t>(usage.ru_maxrss) << 10;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

tProgramResult RunVelmora(std::vector<std::string> arguments, const std::string& input,
                          const std::vector<std::string>& environment)
{
    tProgramRun run;
    run.arguments = std::move(arguments);
    run.arguments.insert(run.arguments.begin(), BUILD_FOLDER "/velmora");
    run.input = input;
    run.environment = environment;
    return RunProgram(run);
}

std::vector<nlohmann::ordered_json> ParseLines(const std::string& text)
{
    std::vector<nlohmann::ordered_json> records;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        records.push_back(nlohmann::ordered_json::parse(line, nullptr, false));
    }
    return records;
}

std::string MakeLayout(const std::string& description, unsigned layers, unsigned elements)
{
    tLayout layout;
    layout.author.clear();
    layout.description = description;
    layout.layers.clear();
    for (unsigned i = 0; i < layers; ++i) {
        layout.layers.push_back({"Layer " + std::to_string(i)});
    }
    return Layout(layout).Replace(423, Bytes32(elements)).Bytes();
}
