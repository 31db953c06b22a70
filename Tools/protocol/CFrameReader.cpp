#include "protocol/CFrameReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/uio.h>

#if !defined(MSG_CMSG_CLOEXEC)
#define MSG_CMSG_CLOEXEC 0 // set afterwards
#endif

/// Room that is made for the payload at a time: about what one receive brings.
static constexpr size_t kReceiveSize = 256 << 10;

static uint32_t DecodeWord(const unsigned char* bytes)
{
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

CFrameReader::eResult CFrameReader::Receive(void* destination, size_t size, size_t& received)
{
    iovec part = {destination, size};
    alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t count = recvmsg(mSocket, &message, MSG_CMSG_CLOEXEC);
    if (count < 0) {
        const bool later = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
        return later ? eResult::kMore : eResult::kClosed;
    }
    bool malformed = (message.msg_flags & MSG_CTRUNC) != 0; // more descriptors than one, or none left in this process
    for (cmsghdr* entry = CMSG_FIRSTHDR(&message); entry != nullptr; entry = CMSG_NXTHDR(&message, entry)) {
        if (entry->cmsg_level != SOL_SOCKET || entry->cmsg_type != SCM_RIGHTS ||
            entry->cmsg_len != CMSG_LEN(sizeof(int))) {
            malformed = true;
            continue;
        }
        int descriptor = -1;
        memcpy(&descriptor, CMSG_DATA(entry), sizeof descriptor);
        malformed = malformed || mDescriptor.IsOpen();
        mDescriptor.Reset(descriptor);
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
    if (malformed) {
        return eResult::kMalformed;
    }
    received = static_cast<size_t>(count);
    return count == 0 ? eResult::kClosed : eResult::kFrame;
}

CFrameReader::eResult CFrameReader::Read(tFrame& frame)
{
    size_t received = 0;
    if (mHeaderBytes < kFrameHeaderSize) {
        const eResult result = Receive(mHeader + mHeaderBytes, kFrameHeaderSize - mHeaderBytes, received);
        if (result != eResult::kFrame) {
            return result;
        }
        mHeaderBytes += received;
        if (mHeaderBytes < kFrameHeaderSize) {
            return eResult::kMore;
        }
        const uint32_t kind = DecodeWord(mHeader + 4);
        mPayloadSize = DecodeWord(mHeader + 12);
        if (DecodeWord(mHeader) != kFrameMagic || kind < static_cast<uint32_t>(eFrameKind::kHello) ||
            kind > static_cast<uint32_t>(eFrameKind::kOutOfMemory) || mPayloadSize > mMaxPayload) {
            return eResult::kMalformed;
        }
    } else {
        mPayload.resize(std::min(mPayloadSize, mPayloadBytes + kReceiveSize));
        const eResult result = Receive(mPayload.data() + mPayloadBytes, mPayload.size() - mPayloadBytes, received);
        if (result != eResult::kFrame) {
            return result;
        }
        mPayloadBytes += received;
    }
    if (mPayloadBytes < mPayloadSize) {
        return eResult::kMore;
    }
    frame.kind = static_cast<eFrameKind>(DecodeWord(mHeader + 4));
    frame.sequence = DecodeWord(mHeader + 8);
    frame.payload = std::move(mPayload);
    frame.descriptor = std::move(mDescriptor);
    mHeaderBytes = 0;
    mPayloadBytes = 0;
    mPayloadSize = 0;
    mPayload.clear();
    return eResult::kFrame;
}
