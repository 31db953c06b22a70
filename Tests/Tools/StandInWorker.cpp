// Stands in for the worker in tests of the supervisor: the document says what to do. What is no command of the table
// below comes back as the document's description.
#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <unistd.h>

static int sSocket = kWorkerSocket;

static std::string ReadDocument(int document)
{
    std::string text(4096, '\0');
    const ssize_t count = pread(document, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<size_t>(count) : 0);
    return text;
}

static tAnswer MakeAnswer(const std::string& text)
{
    tAnswer answer;
    answer.ok = true;
    answer.attributes.push_back({"kMDItemDescription", false, {text}});
    return answer;
}

[[noreturn]] static void Hang()
{
    std::this_thread::sleep_for(std::chrono::hours(1));
    _exit(0);
}

static void SendHeader(uint32_t magic, uint32_t kind, uint32_t sequence, uint32_t size)
{
    unsigned char header[kFrameHeaderSize];
    EncodeHeader(static_cast<eFrameKind>(kind), sequence, size, header);
    memcpy(header, &magic, sizeof magic);
    [[maybe_unused]] const ssize_t written = write(sSocket, header, sizeof header);
}

/// Does what the document says. @return false when it named nothing to do
static bool Misbehave(const std::string& command, const tFrame& request)
{
    const uint32_t sequence = request.sequence;
    const std::string good = Encode(MakeAnswer("good"));
    const auto send = [&](eFrameKind kind, uint32_t number, std::string_view payload, int descriptor = -1) {
        SendFrame(sSocket, kind, number, payload, descriptor);
    };
    if (command == "crash") {
        signal(SIGSEGV, SIG_DFL);
        raise(SIGSEGV);
    } else if (command == "exit 0") {
        _exit(0);
    } else if (command == "exit 3") {
        _exit(3);
    } else if (command == "hang") {
        Hang();
    } else if (command == "spin") {
        const pid_t host = getppid();
        while (getppid() == host) {
        }
    } else if (command == "close and hang") {
        close(sSocket);
        Hang();
    } else if (command == "fatal") {
        send(eFrameKind::kFatalReport, sequence, "Layer list is null");
        _exit(0);
    } else if (command == "memory") {
        send(eFrameKind::kOutOfMemory, sequence, {});
        _exit(1);
    } else if (command == "half a header") {
        [[maybe_unused]] const ssize_t written = write(sSocket, "VLMP\3", 5);
        _exit(0);
    } else if (command == "half an answer") {
        SendHeader(kFrameMagic, 3, sequence, 1000);
        Hang();
    } else if (command == "wrong magic") {
        SendHeader(0, 3, sequence, 0);
    } else if (command == "unknown kind") {
        SendHeader(kFrameMagic, 6, sequence, 0);
    } else if (command == "greeting") {
        send(eFrameKind::kHello, sequence, Encode(tHello{true, {}}));
    } else if (command == "request") {
        send(eFrameKind::kRequest, sequence, Encode(tRequest{}));
    } else if (command == "wrong sequence") {
        send(eFrameKind::kAnswer, sequence + 1, good);
    } else if (command == "too long") {
        SendHeader(kFrameMagic, 3, sequence, kMaxAnswerSize + 1);
    } else if (command == "cut") {
        send(eFrameKind::kAnswer, sequence, good.substr(0, good.size() - 1));
    } else if (command == "longer") {
        send(eFrameKind::kAnswer, sequence, good + "x");
    } else if (command == "bad UTF-8") {
        send(eFrameKind::kAnswer, sequence, Encode(MakeAnswer("\xC3(")));
    } else if (command == "wrong verb") {
        tAnswer answer;
        answer.ok = true;
        answer.verb = eVerb::kSchema;
        send(eFrameKind::kAnswer, sequence, Encode(answer));
    } else if (command == "descriptor") {
        send(eFrameKind::kAnswer, sequence, good, request.descriptor.Get());
    } else if (command == "flood") {
        for (;;) {
            send(eFrameKind::kFatalReport, sequence, "again");
        }
    } else if (command == "flood bytes") {
        SendHeader(kFrameMagic, 3, sequence, kMaxAnswerSize);
        const std::string bytes(1 << 20, 'x');
        while (write(sSocket, bytes.data(), bytes.size()) > 0) {
        }
    } else if (command == "answer twice") {
        send(eFrameKind::kAnswer, sequence, good);
        send(eFrameKind::kAnswer, sequence, good);
        return true;
    } else if (command == "answer and die") {
        send(eFrameKind::kAnswer, sequence, good);
        _exit(0);
    } else if (command == "long") {
        send(eFrameKind::kAnswer, sequence, Encode(MakeAnswer(std::string(5000000, 'y'))));
        return true;
    } else {
        return false;
    }
    Hang(); // whoever has sent nonsense waits to be ended for it
}

int main(int argc, char** argv)
{
    const std::string plugIn = argc > 4 ? argv[4] : ""; // --socket N --plugin PATH and more
    if (plugIn.ends_with("/dies")) {
        return 5;
    }
    if (plugIn.ends_with("/refuses")) {
        SendFrame(sSocket, eFrameKind::kHello, 0, Encode(tHello{false, "the plug-in is of another kind"}));
        return 1;
    }
    SendFrame(sSocket, eFrameKind::kHello, 0, Encode(tHello{true, {}}));
    CFrameReader reader(sSocket, kMaxRequestSize);
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
        if (!Misbehave(document, frame)) {
            SendFrame(sSocket, eFrameKind::kAnswer, frame.sequence, Encode(MakeAnswer(document)));
        }
    }
}
