// One record of a tagged stream in memory.
#pragma once

#include "CTaggedFile/BigEndian.h"
#include "CTaggedFile/RecordTable.h"
#include "Platform/Streams.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

/// A record: an unsigned 16-bit key, an unsigned 16-bit size and the data. On a stream all three follow each other
/// without padding, key and size big-endian. Owns its data.
class CTag {
public:
    /// Bytes of one record that crosses the end of a stream's buffer.
    using tScratch = std::unique_ptr<unsigned char[]>;
    /// A record where it lies.
    struct tView {
        unsigned short key = 0;
        unsigned short size = 0;
        const unsigned char* data = nullptr; ///< in the stream's buffer or in the scratch; until either is touched
    };

    /// Key 0, size 0, no data.
    CTag() = default;
    /// Copies `size` bytes of `data`; a size beyond 16 bits is cut to what a record can carry.
    CTag(unsigned short key, unsigned long size, const void* data);

    /// Replaces the content by the next record of the stream.
    /// @return false at the end of the stream, for a record cut short and for one of size 0,
    /// whose four bytes are consumed
    bool Read(FILE* file);

    /// Writes key, size and data. @return false, with nothing written, for key 0, size 0 or no data;
    /// false when a write fails
    bool Write(FILE* file) const { return Write(file, mKey, mSize, mData.get()); }

    /// Copies min(size, max) bytes to `destination`. @return false when there is no data
    bool GetData(void* destination, int max) const;

    unsigned short GetKey() const { return mKey; }
    unsigned short GetSize() const { return mSize; }

    /// Shows the next record where it lies, without consuming it.
    /// @return false when it is not whole in the stream's buffer
    static bool Peek(FILE* file, tView& record)
    {
        const unsigned char* bytes = nullptr;
        const size_t available = Platform::BufferedBytes(file, bytes);
        if (available < kRecordHeader) {
            return false;
        }
        const uint32_t header = BigEndian::Unsigned32(bytes);
        record = {static_cast<unsigned short>(header >> 16), static_cast<unsigned short>(header),
                  bytes + kRecordHeader};
        return available >= kRecordHeader + record.size;
    }
    /// Consumes the next record of a stream, and shows it where it lies. A record of size 0 is one without data.
    /// @param scratch  takes a record that is not whole in the stream's buffer
    /// @return false at the end of the stream and for a record cut short
    static bool Take(FILE* file, tView& record, tScratch& scratch);
    /// Writes a record; data beyond what one can carry is cut. @return as the member
    static bool Write(FILE* file, unsigned short key, size_t size, const void* data);

private:
    unsigned short mKey = 0;
    unsigned short mSize = 0;
    tScratch mData;
};
