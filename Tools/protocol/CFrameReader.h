// Receiving frames from a sender that is not trusted.
#pragma once

#include "protocol/Frames.h"

#include <vector>

/// Takes frames from a stream socket, as many with one system call as have arrived. Serves blocking sockets (the
/// worker's) and non-blocking ones (the host's). Memory grows with the bytes that have arrived, not with the length a
/// header claims.
class CFrameReader {
public:
    enum class eResult {
        kFrame,    ///< a frame is complete
        kMore,     ///< none is; call again when the socket is readable (or at once, for a blocking one)
        kClosed,   ///< the other end is gone, or left in the middle of a frame
        kMalformed ///< wrong magic or kind, too long, or more than one descriptor; the stream is of no more use
    };

    /// @param socket       not owned
    /// @param maxPayload   longest payload to accept, in bytes
    CFrameReader(int socket, size_t maxPayload) : mSocket(socket), mMaxPayload(maxPayload) {}

    /// The next frame; receives at most once. @param frame  set when the result is kFrame
    eResult Read(tFrame& frame);

private:
    eResult TakeFrame(tFrame& frame);
    eResult Receive();
    void MakeRoom();

    int mSocket;
    size_t mMaxPayload;
    std::vector<char> mBuffer;
    size_t mStart = 0;     ///< of the bytes not yet taken
    size_t mEnd = 0;       ///< of the bytes that have arrived
    bool mDrained = false; ///< the last receive brought less than there was room for
    CDescriptor mDescriptor;
    size_t mDescriptorEnd = 0; ///< of the bytes that came with it
};
