#include "protocol/CFrameReader.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/uio.h>

#if !defined(MSG_CMSG_CLOEXEC)
#define MSG_CMSG_CLOEXEC 0 // set afterwards
#endif

/// Room for bytes that have not arrived. Dozens of usual answers find place in it.
static constexpr size_t kReceiveSize = 64 << 10;
/// A long frame gets its room in steps of this size.
static constexpr size_t kGrowth = 256 << 10;

static uint32_t DecodeWord(const unsigned char* bytes)
{
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

/// Room behind the bytes that have arrived. Those that wait for the rest of their frame move to the front.
void CFrameReader::MakeRoom()
{
    const size_t held = mEnd - mStart;
    if (mStart > 0) {
        memmove(mBuffer.data(), mBuffer.data() + mStart, held);
        mDescriptorEnd -= mDescriptor.IsOpen() ? mStart : 0;
        mStart = 0;
        mEnd = held;
    }
    if (held == 0 && mBuffer.size() > 4 * kGrowth) { // after a long frame
        mBuffer = std::vector<char>();
    }
    if (mBuffer.size() < held + kReceiveSize) {
        mBuffer.resize(held + (held == 0 ? kReceiveSize : kGrowth));
    }
}

CFrameReader::eResult CFrameReader::Receive()
{
    MakeRoom();
    iovec part = {mBuffer.data() + mEnd, mBuffer.size() - mEnd};
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
    mDrained = static_cast<size_t>(count) < part.iov_len;
    mEnd += static_cast<size_t>(count);
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
        mDescriptorEnd = mEnd; // nothing is received across the end of what a descriptor came with
        if (MSG_CMSG_CLOEXEC == 0) {
            fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        }
    }
    if (malformed) {
        return eResult::kMalformed;
    }
    return count == 0 ? eResult::kClosed : eResult::kFrame;
}

/// Takes a frame that has arrived as a whole.
CFrameReader::eResult CFrameReader::TakeFrame(tFrame& frame)
{
    const size_t held = mEnd - mStart;
    if (held < kFrameHeaderSize) {
        return eResult::kMore;
    }
    const auto* header = reinterpret_cast<const unsigned char*>(mBuffer.data() + mStart);
    const uint32_t kind = DecodeWord(header + 4);
    const size_t size = DecodeWord(header + 12);
    if (DecodeWord(header) != kFrameMagic || kind < static_cast<uint32_t>(eFrameKind::kHello) ||
        kind > static_cast<uint32_t>(eFrameKind::kOutOfMemory) || size > mMaxPayload) {
        return eResult::kMalformed;
    }
    if (held < kFrameHeaderSize + size) {
        return eResult::kMore;
    }
    frame.kind = static_cast<eFrameKind>(kind);
    frame.sequence = DecodeWord(header + 8);
    frame.payload = std::string_view(mBuffer.data() + mStart + kFrameHeaderSize, size);
    frame.descriptor.Reset();
    mStart += kFrameHeaderSize + size;
    if (mDescriptor.IsOpen() && mStart >= mDescriptorEnd) { // it came with this frame's bytes
        frame.descriptor = std::move(mDescriptor);
    }
    return eResult::kFrame;
}

CFrameReader::eResult CFrameReader::Read(tFrame& frame)
{
    eResult result = TakeFrame(frame);
    if (result != eResult::kMore) {
        return result;
    }
    if (mDrained) { // there was no more a moment ago
        mDrained = false;
        return eResult::kMore;
    }
    result = Receive();
    return result == eResult::kFrame ? TakeFrame(frame) : result;
}
