// A run of records that nearly every document holds in the same shape.
#pragma once

#include "CTaggedFile/BigEndian.h"

#include <cstddef>
#include <cstdint>

/// Key and data size of a record.
struct tRecordShape {
    uint16_t key;
    uint16_t size;
};

/// Records of fixed size that follow each other directly. Tested as a whole, they cost one pass over their headers
/// instead of a search each; a document that holds them otherwise is read record by record.
template <size_t kCount>
class CRecordRun {
public:
    constexpr explicit CRecordRun(const tRecordShape (&shapes)[kCount])
    {
        size_t offset = 0;
        for (size_t i = 0; i < kCount; ++i) {
            mHeaders[i] = uint32_t{shapes[i].key} << 16 | shapes[i].size;
            mOffsets[i] = static_cast<uint32_t>(offset);
            offset += kRecordHeader + shapes[i].size;
        }
        mSize = offset;
    }

    /// Bytes of the whole run.
    constexpr size_t GetSize() const { return mSize; }
    /// Where the data of record `i` lies from the run's beginning.
    constexpr size_t GetDataOffset(size_t i) const { return mOffsets[i] + kRecordHeader; }
    /// Whether the bytes, GetSize() of them, are this run.
    bool Matches(const unsigned char* bytes) const
    {
        uint32_t difference = 0;
        for (size_t i = 0; i < kCount; ++i) {
            difference |= BigEndian::Unsigned32(bytes + mOffsets[i]) ^ mHeaders[i];
        }
        return difference == 0;
    }

private:
    uint32_t mHeaders[kCount] = {};
    uint32_t mOffsets[kCount] = {};
    size_t mSize = 0;
};
