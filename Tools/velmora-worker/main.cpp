// The worker process: holds the plug-in and the core,
// and answers one request at a time until the host closes the socket.
#include "Bounds.h"
#include "CPlugIn.h"
#include "Limits.h"
#include "Reports.h"
#include "Requests.h"
#include "Sandbox.h"
#include "WarmUp.h"
#include "protocol/CFrameReader.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace {
struct tArguments {
    int socket = -1;
    size_t megabytes = 0;
    std::string plugIn;
    Sandbox::tMode sandbox;
    Jail::eProfile profile = Jail::eProfile::kRead;
    unsigned user = 0;
    unsigned group = 0;
    bool tellsStockFile = false;
};
} // namespace

template <typename tNumber>
static bool ParseNumber(const char* text, tNumber& number)
{
    const char* end = text + strlen(text);
    const auto result = std::from_chars(text, end, number);
    return result.ec == std::errc() && result.ptr == end;
}

static bool ParseSandbox(const char* text, Sandbox::tMode& mode)
{
    const std::optional<Sandbox::tMode> parsed = Sandbox::ParseMode(text);
    mode = parsed.value_or(mode);
    return parsed.has_value();
}

static bool ParseProfile(std::string_view text, Jail::eProfile& profile)
{
    profile = text == "draw" ? Jail::eProfile::kDraw : Jail::eProfile::kRead;
    return text == "draw" || text == "read";
}

/// @param text  two numbers with a colon between them
static bool ParseUser(std::string_view text, unsigned& user, unsigned& group)
{
    const size_t colon = text.find(':');
    return colon != std::string_view::npos && ParseNumber(std::string(text.substr(0, colon)).c_str(), user) &&
           ParseNumber(std::string(text.substr(colon + 1)).c_str(), group);
}

static bool ParseTell(std::string_view text, bool& tellsStockFile)
{
    tellsStockFile = text == "stock-file";
    return tellsStockFile || text == "nothing";
}

static bool ParseArgument(std::string_view name, const char* value, tArguments& arguments)
{
    if (name == "--plugin") {
        arguments.plugIn = value;
        return true;
    }
    return name == "--socket"    ? ParseNumber(value, arguments.socket)
           : name == "--memory"  ? ParseNumber(value, arguments.megabytes)
           : name == "--sandbox" ? ParseSandbox(value, arguments.sandbox)
           : name == "--profile" ? ParseProfile(value, arguments.profile)
           : name == "--user"    ? ParseUser(value, arguments.user, arguments.group)
           : name == "--tell"    ? ParseTell(value, arguments.tellsStockFile)
                                 : false;
}

static bool ParseArguments(int argc, char** argv, tArguments& arguments)
{
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!ParseArgument(argv[i], argv[i + 1], arguments)) {
            return false;
        }
    }
    return argc % 2 == 1 && arguments.socket >= 0 && arguments.megabytes > 0 && !arguments.plugIn.empty();
}

/// Whether an answer keeps to what the host accepts.
static bool FitsProtocol(const tAnswer& answer, const std::string& encoded, eVerb verb, int document)
{
    const off_t end = document >= 0 ? lseek(document, 0, SEEK_END) : 0; // the sandbox refuses to look at its status
    const uint64_t size = end > 0 ? static_cast<uint64_t>(end) : 0;
    return encoded.size() <= MaxAnswerSize(verb, size) && IsAffordable(answer, size);
}

static tAnswer Answer(const CPlugIn& plugIn, const tRequest& request, int document)
{
    if (request.verb == eVerb::kSchema) {
        return AnswerSchema(plugIn);
    }
    if (request.verb == eVerb::kExamine) {
        return AnswerExamine(plugIn, request.contentType);
    }
    if (document < 0) {
        return MakeFailure(eFailure::kCrash, "the request came without its document");
    }
    const std::string path = PathOfDescriptor(document);
    switch (request.verb) {
    case eVerb::kCheck:
        return AnswerCheck(path, document);
    case eVerb::kParts:
        return AnswerParts(path, document);
    case eVerb::kLibrary:
        return AnswerLibrary(path, request.fileName);
    case eVerb::kStock:
        return AnswerStock(path);
    case eVerb::kBalance:
        return AnswerBalance(document);
    case eVerb::kIndex:
        return AnswerIndex(plugIn, request.contentType, document);
    case eVerb::kRender:
        return AnswerRender(path, document, request.picture);
    case eVerb::kImport:
    case eVerb::kSchema:
    case eVerb::kExamine:
        break;
    }
    return AnswerImport(plugIn, request.contentType, document);
}

static bool AnswerRequest(int socket, const CPlugIn& plugIn, const tFrame& frame)
{
    tRequest request;
    if (frame.kind != eFrameKind::kRequest || !Decode(frame.payload, request)) {
        return false;
    }
    Limits::SetSequence(frame.sequence);
    Reports::Reset(frame.sequence);
    const tAnswer answer = Answer(plugIn, request, frame.descriptor.Get());
    std::string encoded = Encode(answer);
    if (!FitsProtocol(answer, encoded, request.verb, frame.descriptor.Get())) {
        encoded = Encode(MakeFailure(eFailure::kMemory, "the document's attributes are too large to be handed over"));
    }
    return SendFrame(socket, eFrameKind::kAnswer, frame.sequence, encoded);
}

static int Serve(int socket, const CPlugIn& plugIn)
{
    CFrameReader reader(socket, Bounds::kMostRequestBytes);
    for (;;) {
        tFrame frame;
        switch (reader.Read(frame)) {
        case CFrameReader::eResult::kMore:
            break;
        case CFrameReader::eResult::kClosed: // the host needs it no longer
            return 0;
        case CFrameReader::eResult::kMalformed:
            return 1;
        case CFrameReader::eResult::kFrame:
            if (!AnswerRequest(socket, plugIn, frame)) {
                return 1;
            }
            break;
        }
    }
}

/// The host listens to standard error until the libraries are loaded, for what the dynamic loader says. What is said
/// later is for nobody.
static void SilenceErrors()
{
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nothing >= 0) {
        dup2(nothing, STDERR_FILENO);
        close(nothing);
    }
}

int main(int argc, char** argv)
{
    tArguments arguments;
    if (!ParseArguments(argc, argv, arguments)) {
        fprintf(stderr, "velmora-worker is started by velmora; try 'velmora --help'.\n");
        return 2;
    }
    arguments.sandbox.user = arguments.user;
    arguments.sandbox.group = arguments.group;
    Limits::Begin(arguments.socket);
    Reports::Begin(arguments.socket);
    CPlugIn plugIn;
    tHello hello;
    hello.ready = plugIn.Load(arguments.plugIn, hello.message);
    SilenceErrors();
    if (hello.ready) {
        CWarmUp warmUp(plugIn);
        warmUp.Run(arguments.profile);
        if (arguments.tellsStockFile) { // the preferences are a file, too
            hello.stockFile = GetStockFileName();
        }
        Sandbox::Close(arguments.sandbox, arguments.profile, arguments.megabytes, hello);
        warmUp.Rehearse();
    }
    if (!SendFrame(arguments.socket, eFrameKind::kHello, 0, Encode(hello)) || !hello.ready) {
        return 1;
    }
    return Serve(arguments.socket, plugIn);
}
