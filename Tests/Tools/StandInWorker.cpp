// Stands in for the worker in tests of the supervisor: the document says what to do. What is no command of the table
// below comes back as the document's description.
#include "Bounds.h"
#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

static int sSocket = kWorkerSocket;

static std::string ReadDocument(int document)
{
    std::string text(4096, '\0');
    const ssize_t count = pread(document, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<size_t>(count) : 0);
    return text.substr(0, text.find('\0')); // large documents are padded
}

static tAnswer MakeAnswer(const std::string& text)
{
    tAnswer answer;
    answer.ok = true;
    answer.attributes.push_back({"kMDItemDescription", false, {text}});
    return answer;
}

static const std::string sGood = Encode(MakeAnswer("good"));

static void SendHeader(uint32_t magic, uint32_t kind, uint32_t sequence, uint32_t size)
{
    unsigned char header[kFrameHeaderSize];
    EncodeHeader(static_cast<eFrameKind>(kind), sequence, size, header);
    memcpy(header, &magic, sizeof magic);
    [[maybe_unused]] const ssize_t written = write(sSocket, header, sizeof header);
}

static std::string Repeat(const std::string& text, size_t count)
{
    std::string repeated;
    for (size_t i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

static void Send(eFrameKind kind, uint32_t sequence, std::string_view payload)
{
    SendFrame(sSocket, kind, sequence, payload);
}

static std::string MakeReport(const std::string& report)
{
    tAnswer answer;
    answer.ok = true;
    answer.verb = eVerb::kCheck;
    answer.report = report;
    return Encode(answer);
}

/// What a document may ask for. Whoever comes back from there waits to be ended for nonsense.
static const std::map<std::string, std::function<void(const tFrame&, uint32_t)>> kMisdeeds = {
    {"crash", [](auto&, auto) { signal(SIGSEGV, SIG_DFL), raise(SIGSEGV); }},
    {"exit 0", [](auto&, auto) { _exit(0); }},
    {"exit 3", [](auto&, auto) { _exit(3); }},
    {"hang", [](auto&, auto) {}},
    {"spin",
     [](auto&, auto) {
         for (const pid_t host = getppid(); getppid() == host;) {
         }
     }},
    {"close and hang", [](auto&, auto) { close(sSocket); }},
    {"fatal", [](auto&, auto number) { Send(eFrameKind::kFatalReport, number, "Layer list is null"), _exit(0); }},
    {"memory", [](auto&, auto number) { Send(eFrameKind::kOutOfMemory, number, {}), _exit(1); }},
    {"half a header",
     [](auto&, auto) {
         if (write(sSocket, "VLMP\3", 5) == 5) {
             _exit(0);
         }
     }},
    {"half an answer", [](auto&, auto number) { SendHeader(kFrameMagic, 3, number, 1000); }},
    {"wrong magic", [](auto&, auto number) { SendHeader(0, 3, number, 0); }},
    {"unknown kind", [](auto&, auto number) { SendHeader(kFrameMagic, 6, number, 0); }},
    {"greeting",
     [](auto&, auto number) {
         Send(eFrameKind::kHello, number, Encode(tHello{true, {}}));
     }},
    {"request", [](auto&, auto number) { Send(eFrameKind::kRequest, number, Encode(tRequest{})); }},
    {"wrong sequence", [](auto&, auto number) { Send(eFrameKind::kAnswer, number + 1, sGood); }},
    {"too long", [](auto&, auto number) { SendHeader(kFrameMagic, 3, number, Bounds::kMostAnswerBytes + 1); }},
    {"cut", [](auto&, auto number) { Send(eFrameKind::kAnswer, number, sGood.substr(0, sGood.size() - 1)); }},
    {"longer", [](auto&, auto number) { Send(eFrameKind::kAnswer, number, sGood + "x"); }},
    {"bad UTF-8", [](auto&, auto number) { Send(eFrameKind::kAnswer, number, Encode(MakeAnswer("\xC3("))); }},
    {"descriptor",
     [](auto& request, auto number) {
         SendFrame(sSocket, eFrameKind::kAnswer, number, sGood, request.descriptor.Get());
     }},
    {"flood",
     [](auto&, auto number) {
         for (;;) {
             Send(eFrameKind::kFatalReport, number, "again");
         }
     }},
    {"flood bytes",
     [](auto&, auto number) {
         SendHeader(kFrameMagic, 3, number, Bounds::kMostAnswerBytes);
         for (const std::string bytes(1 << 20, 'x'); write(sSocket, bytes.data(), bytes.size()) > 0;) {
         }
     }},
    {"answer and die", [](auto&, auto number) { Send(eFrameKind::kAnswer, number, sGood), _exit(0); }},
    {"wrong verb", [](auto&, auto number) { Send(eFrameKind::kAnswer, number, MakeReport("{}")); }}};

/// Answers other than the document's text.
static const std::map<std::string, std::function<std::string()>> kAnswers = {
    {"long", [] { return Encode(MakeAnswer(std::string(3000000, 'y'))); }},
    {"grow",
     [] {
         static const std::string sMemory(size_t{160} << 20, 'x');
         return Encode(MakeAnswer(sMemory.substr(0, 1)));
     }},
    {"limits",
     [] { // its number, and the hard limit of its processor time
         rlimit limit = {};
         getrlimit(RLIMIT_CPU, &limit);
         return Encode(MakeAnswer(std::to_string(getpid()) + " " + std::to_string(limit.rlim_max)));
     }},
    {"nested report", [] { return MakeReport("{\"findings\":" + Repeat("[", 100000) + Repeat("]", 100000) + "}"); }},
    {"report of many values", [] { return MakeReport("{\"findings\":[" + Repeat("{},", 1000000) + "1]}"); }},
    {"long report", [] { return MakeReport("{\"kind\":\"" + std::string(5000000, 'x') + "\"}"); }},
    {"strange report", [] { return MakeReport("{\"kind\":\"\\u001B[31m\",\"findings\":5,\"reader\":[1]}"); }}};

int main(int argc, char** argv)
{
    const std::string plugIn = argc > 4 ? argv[4] : ""; // --socket N --plugin PATH and more
    if (plugIn.ends_with("/dies")) {
        return 5;
    }
    if (plugIn.ends_with("/killed")) {
        raise(SIGKILL);
    }
    if (plugIn.ends_with("/refuses")) {
        SendFrame(sSocket, eFrameKind::kHello, 0, Encode(tHello{false, "the plug-in is of another kind"}));
        return 1;
    }
    SendFrame(sSocket, eFrameKind::kHello, 0, Encode(tHello{true, {}}));
    CFrameReader reader(sSocket, Bounds::kMostRequestBytes);
    for (;;) {
        tFrame frame;
        const CFrameReader::eResult result = reader.Read(frame);
        if (result == CFrameReader::eResult::kMore) {
            continue;
        }
        if (result != CFrameReader::eResult::kFrame) {
            return 0;
        }
        const std::string document = ReadDocument(frame.descriptor.Get());
        if (const auto misdeed = kMisdeeds.find(document); misdeed != kMisdeeds.end()) {
            misdeed->second(frame, frame.sequence);
            std::this_thread::sleep_for(std::chrono::hours(1));
        }
        const auto answer = kAnswers.find(document);
        const std::string payload = answer != kAnswers.end() ? answer->second() : Encode(MakeAnswer(document));
        Send(eFrameKind::kAnswer, frame.sequence, payload);
        if (document == "answer twice") {
            Send(eFrameKind::kAnswer, frame.sequence, payload);
        }
    }
}
