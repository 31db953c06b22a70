// One record of a tagged stream in memory.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>

/// A record: an unsigned 16-bit key, an unsigned 16-bit size and the data. On a stream all three follow each other
/// without padding, key and size big-endian. Owns its data.
class CTag {
public:
    /// Key 0, size 0, no data.
    CTag() = default;
    /// Copies `size` bytes of `data`; a size beyond 16 bits is cut to what a record can carry.
    CTag(unsigned short key, unsigned long size, const void* data);

    /// Replaces the content by the next record of the stream.
    /// @return false at the end of the stream, for a record cut short and for one of size 0, whose four bytes are
    /// consumed
    bool Read(FILE* file);

    /// Writes key, size and data. @return false, with nothing written, for key 0, size 0 or no data; false when a write
    /// fails
    bool Write(FILE* file) const;

    /// Copies min(size, max) bytes to `destination`. @return false when there is no data
    bool GetData(void* destination, int max) const;

    unsigned short GetKey() const { return mKey; }
    unsigned short GetSize() const { return mSize; }

private:
    /// Makes room for `size` bytes, which are left unset.
    void Allocate(size_t size, const char* function);

    unsigned short mKey = 0;
    unsigned short mSize = 0;
    std::unique_ptr<unsigned char[]> mData;
};
