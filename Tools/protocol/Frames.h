// The frames that host and worker exchange over a stream socket pair.
//
//   offset  bytes  little-endian
//        0      4  magic 0x504D4C56 ("VLMP")
//        4      4  kind (eFrameKind)
//        8      4  sequence: 0 for the greeting; a request's number, which its answer repeats
//       12      4  payload length in bytes
//       16         payload
//
// A request carries the document's descriptor in its ancillary data, with the header's first byte.
#pragma once

#include "protocol/CDescriptor.h"

#include <cstdint>
#include <string_view>

enum class eFrameKind : uint32_t {
    kHello = 1,       ///< worker: ready, or why not (tHello)
    kRequest = 2,     ///< host: tRequest
    kAnswer = 3,      ///< worker: tAnswer
    kFatalReport = 4, ///< worker: the text of a fatal report (UTF-8); the process ends without an answer
    kOutOfMemory = 5  ///< worker: nothing; memory has run out and the process ends
};

inline constexpr uint32_t kFrameMagic = 0x504D4C56;
inline constexpr size_t kFrameHeaderSize = 16;

/// The descriptor number at which a started worker finds its end of the socket pair.
inline constexpr int kWorkerSocket = 3;

struct tFrame {
    eFrameKind kind = eFrameKind::kHello;
    uint32_t sequence = 0;
    std::string_view payload; ///< lies in the reader's buffer, until it reads again
    CDescriptor descriptor;   ///< open only where one came with the frame
};

/// Makes a connected pair of stream sockets, closed on exec. @return false with errno set
bool MakeSocketPair(CDescriptor& one, CDescriptor& other);

/// A header, ready to be sent; `header` has room for kFrameHeaderSize bytes.
void EncodeHeader(eFrameKind kind, uint32_t sequence, size_t payloadSize, unsigned char* header);

/// Sends one frame. On a non-blocking socket whose buffer is full this fails, with part of the frame perhaps sent.
/// @param descriptor  passed along, not owned; -1 for none
/// @return false with errno set; a closed other end is EPIPE, never a signal
bool SendFrame(int socket, eFrameKind kind, uint32_t sequence, std::string_view payload, int descriptor = -1);
