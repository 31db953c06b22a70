#include "protocol/Frames.h"

#include "Bounds.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/uio.h>

#if !defined(MSG_NOSIGNAL)
#define MSG_NOSIGNAL 0 // SO_NOSIGPIPE is set on the socket instead
#endif

bool MakeSocketPair(CDescriptor& one, CDescriptor& other)
{
    int pair[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0) {
        return false;
    }
    one.Reset(pair[0]);
    other.Reset(pair[1]);
    for (const int end : pair) {
        if (fcntl(end, F_SETFD, FD_CLOEXEC) != 0) {
            return false;
        }
#if defined(SO_NOSIGPIPE)
        const int on = 1;
        setsockopt(end, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
    }
    return true;
}

void EncodeHeader(eFrameKind kind, uint32_t sequence, size_t payloadSize, unsigned char* header)
{
    const uint32_t words[] = {kFrameMagic, static_cast<uint32_t>(kind), sequence, static_cast<uint32_t>(payloadSize)};
    for (const uint32_t word : words) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            *header++ = static_cast<unsigned char>(word >> shift);
        }
    }
}

bool SendFrame(int socket, eFrameKind kind, uint32_t sequence, std::string_view payload, int descriptor)
{
    if (payload.size() > Bounds::kMostAnswerBytes) {
        errno = EMSGSIZE;
        return false;
    }
    unsigned char header[kFrameHeaderSize];
    EncodeHeader(kind, sequence, payload.size(), header);
    iovec parts[2] = {{header, sizeof header}, {const_cast<char*>(payload.data()), payload.size()}};
    alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    if (descriptor >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr* entry = CMSG_FIRSTHDR(&message);
        entry->cmsg_level = SOL_SOCKET;
        entry->cmsg_type = SCM_RIGHTS;
        entry->cmsg_len = CMSG_LEN(sizeof descriptor);
        memcpy(CMSG_DATA(entry), &descriptor, sizeof descriptor);
    }
    while (message.msg_iovlen > 0) {
        const ssize_t sent = sendmsg(socket, &message, MSG_NOSIGNAL);
        if (sent < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        message.msg_control = nullptr; // the descriptor went with the first byte
        message.msg_controllen = 0;
        size_t done = static_cast<size_t>(sent);
        while (message.msg_iovlen > 0 && done >= message.msg_iov->iov_len) {
            done -= message.msg_iov->iov_len;
            ++message.msg_iov;
            --message.msg_iovlen;
        }
        if (message.msg_iovlen > 0) {
            message.msg_iov->iov_base = static_cast<char*>(message.msg_iov->iov_base) + done;
            message.msg_iov->iov_len -= done;
        }
    }
    return true;
}
