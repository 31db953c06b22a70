#include "pool/CWorker.h"

#include "Bounds.h"
#include "pool/PictureForm.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

extern char** environ;

/// What the worker's libraries ask the environment for: places, language, time zone; and what tells the tools that
/// programs are tested with how to work. Anything else may be a secret.
static constexpr std::string_view kPassedOn[] = {"HOME=",
                                                 "USER=",
                                                 "LOGNAME=",
                                                 "PATH=",
                                                 "TMPDIR=",
                                                 "TZ=",
                                                 "LANG=",
                                                 "LANGUAGE=",
                                                 "LC_",
                                                 "XDG_",
                                                 "FONTCONFIG_",
                                                 "GNUSTEP_",
                                                 "VELMORA_",
                                                 "ASAN_",
                                                 "UBSAN_",
                                                 "LSAN_",
                                                 "LLVM_PROFILE_FILE=",
                                                 "GCOV_",
                                                 "__CF_USER_TEXT_ENCODING=",
                                                 "LD_LIBRARY_PATH=",
                                                 "DYLD_LIBRARY_PATH="};

/// The part of the host's environment that is meant for workers, and that the C library keeps to one arena: each
/// further one would count as 64 MB of the memory granted.
static std::vector<char*> MakeEnvironment()
{
    static char sArenas[] = "MALLOC_ARENA_MAX=1";
    std::vector<char*> environment = {sArenas};
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        if (std::any_of(std::begin(kPassedOn), std::end(kPassedOn),
                        [text](std::string_view name) { return text.starts_with(name); })) {
            environment.push_back(*entry);
        }
    }
    environment.push_back(nullptr);
    return environment;
}

/// @param errors  what its standard error is
static bool SpawnWorker(const tWorkerSettings& settings, int socket, int errors, pid_t& process)
{
    const std::string number = std::to_string(kWorkerSocket);
    const std::string memory = std::to_string(settings.memoryMegabytes);
    const std::string user = std::to_string(settings.user) + ":" + std::to_string(settings.group);
    const char* arguments[] = {settings.program.c_str(),
                               "--socket",
                               number.c_str(),
                               "--plugin",
                               settings.plugIn.c_str(),
                               "--memory",
                               memory.c_str(),
                               "--sandbox",
                               settings.sandbox.c_str(),
                               "--profile",
                               settings.draws ? "draw" : "read",
                               "--user",
                               user.c_str(),
                               "--tell",
                               settings.tellsStockFile ? "stock-file" : "nothing",
                               nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (posix_spawn_file_actions_init(&actions) != 0) {
        return false;
    }
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return false;
    }
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGXFSZ);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    // A process group of its own: an interrupt typed at the terminal is the host's business alone.
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
    // Nothing a library says in there may reach the user's terminal or data.
    for (int descriptor = STDIN_FILENO; descriptor <= STDOUT_FILENO; ++descriptor) {
        posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&actions, socket, kWorkerSocket);
    const int error = posix_spawn(&process, settings.program.c_str(), &actions, &attributes,
                                  const_cast<char* const*>(arguments), MakeEnvironment().data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    errno = error;
    return error == 0;
}

/// A pipe that never makes its writer wait: what does not fit is lost.
static bool MakePipe(CDescriptor& out, CDescriptor& in)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return false;
    }
    out.Reset(ends[0]);
    in.Reset(ends[1]);
    return std::all_of(std::begin(ends), std::end(ends), [](int end) {
        return fcntl(end, F_SETFD, FD_CLOEXEC) == 0 && fcntl(end, F_SETFL, O_NONBLOCK) == 0;
    });
}

tAnswer MakeNoRoom()
{
    return MakeFailure(eFailure::kMemory, "the memory of this process does not suffice for the answer");
}

bool CWorker::Start(const tWorkerSettings& settings)
{
    CDescriptor other;
    CDescriptor errors;
    mComplaint.clear();
    if (!MakeSocketPair(mSocket, other) || fcntl(mSocket.Get(), F_SETFL, O_NONBLOCK) != 0 ||
        !MakePipe(mErrors, errors) || !SpawnWorker(settings, other.Get(), errors.Get(), mProcess)) {
        mProcess = 0;
        mSocket.Reset();
        mErrors.Reset();
        return false;
    }
    mReader.emplace(mSocket.Get(), Bounds::kMostAnswerBytes);
    mSequence = 0;
    mAnswered = 0;
    mAsked.clear();
    mFatalReport.clear();
    mOutOfMemory = false;
    mFaultCertain = false;
    mProcessorSeconds = settings.processorSeconds;
    mProcessorLife = settings.processorLife;
    mWornOut = false;
    mGrantedRequests = 0;
    mGreeting = tHello();
    mWasKilled = false;
    mState = eState::kStarting;
    return true;
}

/// Bounds the processor time of the requests under way. The owner's clock notices a slow worker earlier; this one also
/// holds while the host itself is stopped. The soft limit is moved, whose signal a process that was taken over could
/// block; the hard one, which it cannot, is set once, as it could never be raised again: a process is renewed before it
/// comes near.
void CWorker::GrantProcessorTime()
{
#if defined(__linux__)
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    // Once a second and whenever more requests are under way than before: the process has one thread, so it has used
    // no more than has passed.
    if (mProcessorSeconds == 0 || (now.tv_sec == mGrantedAt && mAsked.size() <= mGrantedRequests)) {
        return;
    }
    clockid_t clock = 0;
    timespec used = {};
    if (clock_getcpuclockid(mProcess, &clock) != 0 || clock_gettime(clock, &used) != 0) {
        return;
    }
    mGrantedAt = now.tv_sec;
    mGrantedRequests = mAsked.size();
    // Two more, because seconds are counted whole, here and by the system.
    const rlim_t seconds = static_cast<rlim_t>(used.tv_sec) + rlim_t{mGrantedRequests} * mProcessorSeconds + 2;
    const rlim_t most = rlim_t{mProcessorLife} + rlim_t{Bounds::kMostRequestsAhead} * mProcessorSeconds + 2;
    rlimit limit = {};
    if (prlimit(mProcess, RLIMIT_CPU, nullptr, &limit) == 0) {
        limit.rlim_max = std::min(limit.rlim_max, most);
        limit.rlim_cur = std::min(limit.rlim_max, seconds);
        prlimit(mProcess, RLIMIT_CPU, &limit, nullptr);
    }
    mWornOut = used.tv_sec >= static_cast<time_t>(mProcessorLife);
#endif
}

bool CWorker::Ask(const tRequest& request, int document)
{
    struct stat status = {};
    const bool isKnown = document >= 0 && fstat(document, &status) == 0 && status.st_size > 0;
    mAsked.push_back({request.verb, isKnown ? static_cast<uint64_t>(status.st_size) : 0, request.picture});
    GrantProcessorTime();
    if (!SendFrame(mSocket.Get(), eFrameKind::kRequest, mSequence + 1, Encode(request), document)) {
        mAsked.pop_back();
        return false;
    }
    ++mSequence;
    return true;
}

CWorker::eEvent CWorker::Read(tAnswer& answer)
{
    try {
        return ReadFrame(answer);
    } catch (const std::bad_alloc&) {
        mFaultCertain = !mAsked.empty();
        answer = MakeNoRoom();
        Kill();
        return eEvent::kLost;
    }
}

CWorker::eEvent CWorker::ReadFrame(tAnswer& answer)
{
    tFrame frame;
    switch (mReader->Read(frame)) {
    case CFrameReader::eResult::kMore:
        return eEvent::kNothing;
    case CFrameReader::eResult::kClosed:
        return Lose(answer, nullptr);
    case CFrameReader::eResult::kMalformed:
        return Lose(answer, "the worker process answered out of form");
    case CFrameReader::eResult::kFrame:
        break;
    }
    return HandleFrame(frame, answer);
}

/// Whether a frame holds an answer to the oldest request.
bool CWorker::TakeAnswer(std::string_view payload, tAnswer& answer) const
{
    const tAsked& asked = mAsked.front();
    return payload.size() <= MaxAnswerSize(asked.verb, asked.documentSize) && Decode(payload, answer) &&
           (!answer.ok || answer.verb == asked.verb) && IsAffordable(answer, asked.documentSize) &&
           (!answer.ok || asked.verb != eVerb::kRender || PictureForm::IsSound(asked.picture, answer.picture));
}

CWorker::eEvent CWorker::HandleFrame(const tFrame& frame, tAnswer& answer)
{
    answer = tAnswer();
    // The greeting has the number 0; everything else is about the oldest request.
    const uint32_t expected = mState == eState::kStarting ? 0 : mSequence + 1 - static_cast<uint32_t>(mAsked.size());
    const bool asked = mState == eState::kReady && !mAsked.empty();
    if (frame.sequence == expected && !frame.descriptor.IsOpen()) {
        switch (frame.kind) {
        case eFrameKind::kHello:
            if (mState != eState::kStarting || !Decode(frame.payload, mGreeting)) {
                break;
            }
            if (!mGreeting.ready) {
                ReadComplaint();
                answer = MakeFailure(mGreeting.reason, mGreeting.message);
                Dismiss(std::chrono::milliseconds(Bounds::kEndMilliseconds));
                return eEvent::kRefused;
            }
            mErrors.Reset();
            mState = eState::kReady;
            return eEvent::kReady;
        case eFrameKind::kAnswer:
            if (!asked || !TakeAnswer(frame.payload, answer)) {
                break;
            }
            mAsked.pop_front();
            ++mAnswered;
            return eEvent::kAnswer;
        case eFrameKind::kFatalReport:
            if (!mFatalReport.empty() || frame.payload.empty() || frame.payload.size() > Bounds::kMostFatalReport ||
                !UTF8::IsValid(frame.payload)) {
                break;
            }
            mFatalReport = frame.payload;
            mFaultCertain = asked;
            return ReadFrame(answer); // what follows, if it has come
        case eFrameKind::kOutOfMemory:
            mOutOfMemory = true;
            mFaultCertain = asked;
            return Lose(answer, nullptr);
        case eFrameKind::kRequest:
            break;
        }
    }
    mFaultCertain = false;
    return Lose(answer, "the worker process answered out of form");
}

/// How a process has ended, for people.
static std::string DescribeEnd(const std::optional<int>& status)
{
    if (status && WIFSIGNALED(*status)) {
        const int number = WTERMSIG(*status);
        return "the worker process was ended by signal " + std::to_string(number) + " (" + strsignal(number) + ")" +
               (number == SIGSYS ? ": it did what the sandbox forbids" : "");
    }
    const std::string code =
        status && WIFEXITED(*status) ? " (status " + std::to_string(WEXITSTATUS(*status)) + ")" : "";
    return "the worker process ended without an answer" + code;
}

/// Ends what is left of the process and says why it was lost.
/// @param misbehaviour  what it is ended for; null when it went by itself
CWorker::eEvent CWorker::Lose(tAnswer& answer, const char* misbehaviour)
{
    if (misbehaviour != nullptr) {
        answer = MakeFailure(eFailure::kCrash, misbehaviour);
    } else if (mOutOfMemory) {
        answer = MakeFailure(eFailure::kMemory, "the memory granted to the worker process did not suffice");
    } else {
        const std::optional<int> status = WaitForEnd(Bounds::kEndMilliseconds);
        ReadComplaint();
        const std::string end = DescribeEnd(status);
        mWasKilled = status && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGKILL;
        answer = MakeFailure(eFailure::kCrash, mFatalReport.empty() ? end : "the importer gave up: " + mFatalReport);
        if (status && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGXCPU) {
            answer = MakeFailure(eFailure::kTimeout, "the worker process has used up its processor time");
            mFaultCertain = !mAsked.empty(); // those before it have left it more than its own share
        }
    }
    Kill();
    return eEvent::kLost;
}

void CWorker::ReadComplaint()
{
    char text[Bounds::kMostComplaint];
    const ssize_t count = mErrors.IsOpen() ? read(mErrors.Get(), text, sizeof text) : 0;
    const std::string_view said(text, count > 0 ? static_cast<size_t>(count) : 0);
    mComplaint = UTF8::MakeValid(said.substr(0, said.find('\n')));
    mErrors.Reset();
}

std::optional<int> CWorker::WaitForEnd(int milliseconds)
{
    const timespec pause = {0, 500000};
    for (int halves = 0; mProcess > 0 && halves <= 2 * milliseconds; ++halves) {
        int status = 0;
        const pid_t ended = waitpid(mProcess, &status, WNOHANG);
        if (ended == mProcess) {
            mProcess = 0;
            return status;
        }
        if (ended < 0 && errno != EINTR) {
            mProcess = 0;
            return std::nullopt;
        }
        nanosleep(&pause, nullptr);
    }
    return std::nullopt;
}

void CWorker::Kill()
{
    mState = eState::kNone;
    mAsked.clear();
    mReader.reset();
    mSocket.Reset();
    mErrors.Reset();
    if (mProcess > 0) {
        kill(mProcess, SIGKILL);
        // One that hangs in the kernel (a dead network disk) is left to whoever ends the host.
        WaitForEnd(Bounds::kEndMilliseconds);
        mProcess = 0;
    }
}

void CWorker::SayGoodbye()
{
    if (mAsked.empty()) {
        mState = eState::kNone;
        mReader.reset();
        mSocket.Reset();
    }
}

void CWorker::Dismiss(std::chrono::steady_clock::duration patience)
{
    SayGoodbye();
    if (!mSocket.IsOpen()) {
        WaitForEnd(static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(patience).count()));
    }
    Kill();
}

size_t CWorker::GetResidentMemory() const
{
#if defined(__linux__)
    char path[32];
    snprintf(path, sizeof path, "/proc/%d/statm", static_cast<int>(mProcess));
    char text[64] = {};
    const CDescriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (file.IsOpen() && read(file.Get(), text, sizeof text - 1) > 0) {
        unsigned long total = 0;
        unsigned long resident = 0;
        if (sscanf(text, "%lu %lu", &total, &resident) == 2) {
            return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
        }
    }
#endif
    return 0;
}
