// The eight bytes in front of the records of a document, and of each element in it.
#pragma once

#include "CTaggedFile/BigEndian.h"
#include "Platform/Streams.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

/// Magic and version, 32 bits each, big-endian.
struct tDocumentHeader {
    static constexpr size_t kSize = 8;

    uint32_t magic = 0;
    uint32_t version = 0;

    /// Reads the header at the stream's position. @return false when the stream ends before its end
    bool Read(FILE* file)
    {
        unsigned char bytes[kSize];
        if (Platform::ReadUnlocked(file, bytes, sizeof bytes) != sizeof bytes) {
            return false;
        }
        magic = BigEndian::Unsigned32(bytes);
        version = BigEndian::Unsigned32(bytes + 4);
        return true;
    }

    /// @return false when the stream could not take it
    bool Write(FILE* file) const
    {
        unsigned char bytes[kSize];
        BigEndian::StoreUnsigned32(magic, bytes);
        BigEndian::StoreUnsigned32(version, bytes + 4);
        return fwrite(bytes, sizeof bytes, 1, file) == 1;
    }
};
