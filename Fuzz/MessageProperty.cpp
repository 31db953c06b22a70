#include "Properties.h"
#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/socket.h>

namespace {
/// Frames that may come in a stream have no longer payload: longer ones are tried, too.
constexpr size_t kLongest = 40000;

template <typename tMessage>
std::string Take(std::string_view bytes)
{
    tMessage message;
    return Decode(bytes, message) && Encode(message) != bytes ? "a message has two forms" : "";
}

/// What came out of a stream: each frame, then how it ended.
std::string Describe(CFrameReader& reader, bool& ended)
{
    std::string text;
    for (int waited = 0; waited < 2 && !ended;) {
        tFrame frame;
        const CFrameReader::eResult result = reader.Read(frame);
        switch (result) {
        case CFrameReader::eResult::kFrame:
            text += std::to_string(static_cast<uint32_t>(frame.kind)) + " " + std::to_string(frame.sequence) + " " +
                    std::to_string(frame.payload.size()) + " " + std::string(frame.payload) + "\n";
            waited = 0;
            break;
        case CFrameReader::eResult::kMore:
            ++waited;
            break;
        case CFrameReader::eResult::kClosed:
        case CFrameReader::eResult::kMalformed:
            text += result == CFrameReader::eResult::kClosed ? "closed" : "malformed";
            ended = true;
        }
    }
    return text;
}

/// @param random          cuts the stream; null: in one piece
/// @param hasDescriptors  some of the pieces come with one or two
std::string Receive(std::string_view stream, std::minstd_rand* random, bool hasDescriptors)
{
    CDescriptor sender;
    CDescriptor receiver;
    if (!MakeSocketPair(sender, receiver) || fcntl(receiver.Get(), F_SETFL, O_NONBLOCK) != 0) {
        std::abort();
    }
    CFrameReader reader(receiver.Get(), kLongest);
    std::string text;
    bool ended = false;
    while (!stream.empty() && !ended) {
        const size_t most = random == nullptr ? stream.size() : (*random)() % 3 == 0 ? 40 : 10000;
        const size_t piece = random == nullptr ? most : std::min<size_t>(stream.size(), 1 + (*random)() % most);
        iovec part = {const_cast<char*>(stream.data()), piece};
        const int descriptors[2] = {sender.Get(), sender.Get()};
        alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof descriptors)] = {};
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        if (hasDescriptors && (*random)() % 4 == 0) {
            const size_t size = (*random)() % 8 == 0 ? sizeof descriptors : sizeof descriptors[0];
            message.msg_control = control;
            message.msg_controllen = CMSG_SPACE(size);
            cmsghdr* entry = CMSG_FIRSTHDR(&message);
            entry->cmsg_level = SOL_SOCKET;
            entry->cmsg_type = SCM_RIGHTS;
            entry->cmsg_len = CMSG_LEN(size);
            memcpy(CMSG_DATA(entry), descriptors, size);
        }
        const ssize_t sent = sendmsg(sender.Get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
        stream.remove_prefix(sent > 0 ? static_cast<size_t>(sent) : 0);
        text += Describe(reader, ended);
    }
    sender.Reset();
    return text + Describe(reader, ended);
}

std::string TakeStream(std::string_view input)
{
    std::minstd_rand random(input.empty() ? 0U : static_cast<unsigned char>(input[0]));
    const std::string_view stream = input.substr(std::min<size_t>(input.size(), 1));
    if (Receive(stream, nullptr, false) != Receive(stream, &random, false)) {
        return "the frames depend on how they arrive";
    }
    Receive(stream, &random, true);
    return {};
}
} // namespace

std::string Properties::Message(std::string_view input)
{
    if (input.empty()) {
        return {};
    }
    const std::string_view message = input.substr(1);
    switch (static_cast<eMessageForm>(input[0] & 3)) {
    case eMessageForm::kGreeting:
        return Take<tHello>(message);
    case eMessageForm::kRequest:
        return Take<tRequest>(message);
    case eMessageForm::kAnswer:
        return Take<tAnswer>(message);
    case eMessageForm::kStream:
        return TakeStream(message);
    }
    return {};
}
