// Receiving frames piece by piece, from a sender that is not trusted.
#pragma once

#include "protocol/Frames.h"

/// Puts frames together from a stream socket. Serves blocking sockets (the worker's) and non-blocking ones (the
/// host's). Memory grows with the bytes that have arrived, not with the length a header claims.
class CFrameReader {
public:
    enum class eResult {
        kFrame,    ///< a frame is complete
        kMore,     ///< not complete yet; call again when the socket is readable (or at once, for a blocking one)
        kClosed,   ///< the other end is gone, or left in the middle of a frame
        kMalformed ///< wrong magic or kind, too long, or more than one descriptor; the stream is of no more use
    };

    /// @param socket       not owned
    /// @param maxPayload   longest payload to accept, in bytes
    CFrameReader(int socket, size_t maxPayload) : mSocket(socket), mMaxPayload(maxPayload) {}

    /// Receives once. @param frame  set when the result is kFrame
    eResult Read(tFrame& frame);

private:
    eResult Receive(void* destination, size_t size, size_t& received);

    int mSocket;
    size_t mMaxPayload;
    unsigned char mHeader[kFrameHeaderSize] = {};
    size_t mHeaderBytes = 0;  ///< of the header, how many have arrived
    size_t mPayloadSize = 0;  ///< what the complete header claims
    std::string mPayload;     ///< room for the bytes of one receive more than have arrived
    size_t mPayloadBytes = 0; ///< of the payload, how many have arrived
    CDescriptor mDescriptor;
};
