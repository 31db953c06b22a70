#include "CTaggedFile/CTag.h"

#include "CheckError/CErr.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {
constexpr char kReadFunction[] = "bool CTag::Read(FILE *)";

CTag::tScratch Allocate(size_t size, const char* function)
{
    CTag::tScratch bytes(new (std::nothrow) unsigned char[size]);
    CErr::CheckNull(bytes.get(), function, "Failed to allocate memory for tag data");
    return bytes;
}
} // namespace

CTag::CTag(unsigned short key, unsigned long size, const void* data) : mKey(key)
{
    const size_t carried = std::min<size_t>(size, kLargestRecord);
    if (carried > 0 && data != nullptr) {
        mData = Allocate(carried, "CTag::CTag(UInt16, size_t, const void *)");
        mSize = static_cast<unsigned short>(carried);
        std::memcpy(mData.get(), data, carried);
    }
}

bool CTag::Take(FILE* file, tView& record, tScratch& scratch)
{
    if (Peek(file, record)) {
        Platform::ConsumeBuffered(file, kRecordHeader + record.size);
        return true;
    }
    unsigned char header[kRecordHeader];
    if (feof(file) || Platform::ReadUnlocked(file, header, sizeof header) != sizeof header) {
        return false;
    }
    record = {BigEndian::Unsigned16(header), BigEndian::Unsigned16(header + 2), nullptr};
    if (record.size > 0) {
        scratch = Allocate(record.size, kReadFunction);
        record.data = scratch.get();
    }
    return Platform::ReadUnlocked(file, scratch.get(), record.size) == record.size;
}

bool CTag::Read(FILE* file)
{
    tView record;
    tScratch bytes;
    const bool whole = Take(file, record, bytes) && record.size > 0;
    mKey = record.key;
    mSize = whole ? record.size : 0;
    if (whole && !bytes) {
        bytes = Allocate(record.size, kReadFunction);
        std::memcpy(bytes.get(), record.data, record.size);
    }
    mData = std::move(bytes);
    return whole;
}

bool CTag::Write(FILE* file, unsigned short key, size_t size, const void* data)
{
    if (key == 0 || size == 0 || data == nullptr) {
        return false;
    }
    const size_t carried = std::min(size, kLargestRecord);
    unsigned char header[kRecordHeader];
    BigEndian::StoreUnsigned16(key, header);
    BigEndian::StoreUnsigned16(static_cast<uint16_t>(carried), header + 2);
    return fwrite(header, sizeof header, 1, file) == 1 && fwrite(data, carried, 1, file) == 1;
}

bool CTag::GetData(void* destination, int max) const
{
    if (mSize == 0 || !mData) {
        return false;
    }
    std::memcpy(destination, mData.get(), static_cast<size_t>(std::clamp<int>(max, 0, mSize)));
    return true;
}
