#include "CTaggedFile/CTaggedFile.h"

#include "CTaggedFile/CTag.h"
#include "CheckError/CErr.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {
constexpr size_t kLargestText = 2047; ///< characters of a std::string in a record
}

bool CTaggedFile::ReadNextMatchingTag(CTag& tag, unsigned short key)
{
    for (;;) {
        if (!tag.Read(mFile)) {
            mAtEnd = feof(mFile) != 0 || ferror(mFile) != 0;
            return false;
        }
        ++mNumRead;
        if (tag.GetKey() == key) {
            return true;
        }
        Skip(tag.GetKey());
    }
}

void CTaggedFile::Skip(unsigned short key)
{
    ++mNumSkipped;
    CErr::DebugPrint("CTaggedFile::ReadNextMatchingTag -- Skipping '%d' tag", key);
}

// Nearly every record lies whole in the stream's buffer and is the one that was asked for: one compare of key and size,
// no call into the C library.
inline const unsigned char* CTaggedFile::Find(unsigned short key, size_t& size)
{
    const unsigned char* bytes = nullptr;
    const size_t available = Platform::BufferedBytes(mFile, bytes);
    if (available >= kRecordHeader) {
        const uint32_t header = BigEndian::Unsigned32(bytes);
        size = header & 0xFFFF;
        if (header >> 16 == key && size > 0 && available >= kRecordHeader + size) {
            Platform::ConsumeBuffered(mFile, kRecordHeader + size);
            ++mNumRead;
            return bytes + kRecordHeader;
        }
    }
    return FindSlowly(key, size);
}

const unsigned char* CTaggedFile::FindSlowly(unsigned short key, size_t& size)
{
    for (;;) {
        const unsigned char* bytes = nullptr;
        const size_t available = Platform::BufferedBytes(mFile, bytes);
        unsigned char header[kRecordHeader];
        const bool whole =
            available >= kRecordHeader && available >= kRecordHeader + (size = BigEndian::Unsigned16(bytes + 2));
        const unsigned char* data = nullptr;
        if (whole) {
            std::memcpy(header, bytes, kRecordHeader);
            Platform::ConsumeBuffered(mFile, kRecordHeader + size);
            data = bytes + kRecordHeader;
        } else {
            if (Platform::ReadUnlocked(mFile, header, kRecordHeader) != kRecordHeader) {
                mAtEnd = true;
                return nullptr;
            }
            size = BigEndian::Unsigned16(header + 2);
        }
        if (size == 0) {
            mAtEnd = false;
            return nullptr;
        }
        if (!whole) {
            if (!mScratch) {
                mScratch.reset(new (std::nothrow) unsigned char[kLargestRecord]);
                CErr::CheckNull(mScratch.get(), "bool CTag::Read(FILE *)", "Failed to allocate memory for tag data");
            }
            if (Platform::ReadUnlocked(mFile, mScratch.get(), size) != size) {
                mAtEnd = true;
                return nullptr;
            }
            data = mScratch.get();
        }
        ++mNumRead;
        const unsigned short found = BigEndian::Unsigned16(header);
        if (found == key) {
            return data;
        }
        Skip(found);
    }
}

bool CTaggedFile::Read(unsigned short key, bool& value)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    value = data[0] != 0;
    return true;
}

bool CTaggedFile::Read(unsigned short key, char& value)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    value = static_cast<char>(data[0]);
    return true;
}

bool CTaggedFile::Read(unsigned short key, int& value)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    if (size >= 4) {
        value = BigEndian::Signed32(data);
    }
    return true;
}

bool CTaggedFile::Read(unsigned short key, double& value)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    if (size >= 8) {
        value = BigEndian::FixedPoint(data);
    }
    return true;
}

bool CTaggedFile::Read(unsigned short key, char* text, size_t capacity)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    if (capacity > 0) {
        const size_t length = strnlen(reinterpret_cast<const char*>(data), std::min(size, capacity - 1));
        std::memcpy(text, data, length);
        text[length] = 0;
    }
    return true;
}

bool CTaggedFile::Read(unsigned short key, std::string& text)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    const char* characters = reinterpret_cast<const char*>(data);
    text.assign(characters, strnlen(characters, std::min(size, kLargestText)));
    return true;
}

bool CTaggedFile::Read(unsigned short key, void* destination, size_t capacity)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    if (size >= capacity) {
        std::memcpy(destination, data, capacity);
    }
    return true;
}

bool CTaggedFile::ReadBlock(unsigned short key, void* destination, size_t capacity, size_t& length)
{
    size_t size = 0;
    const unsigned char* data = Find(key, size);
    if (data == nullptr) {
        return false;
    }
    length = std::min(size, capacity);
    std::memcpy(destination, data, length);
    return true;
}

void CTaggedFile::Write(unsigned short key, bool value)
{
    const unsigned char byte = value ? 1 : 0;
    Write(key, &byte, 1);
}

void CTaggedFile::Write(unsigned short key, char value)
{
    Write(key, &value, 1);
}

void CTaggedFile::Write(unsigned short key, int value)
{
    unsigned char bytes[4];
    BigEndian::StoreUnsigned32(static_cast<uint32_t>(value), bytes);
    Write(key, bytes, sizeof bytes);
}

void CTaggedFile::Write(unsigned short key, double value)
{
    unsigned char bytes[8];
    BigEndian::StoreFixedPoint(value, bytes);
    Write(key, bytes, sizeof bytes);
}

void CTaggedFile::Write(unsigned short key, const char* text)
{
    Write(key, text, std::strlen(text) + 1);
}

void CTaggedFile::Write(unsigned short key, const std::string& text)
{
    const std::string carried(text, 0, std::min(strnlen(text.data(), text.size()), kLargestText));
    Write(key, carried.c_str(), carried.size() + 1);
}

void CTaggedFile::Write(unsigned short key, const void* data, size_t size)
{
    if (key == 0 || size == 0) {
        return;
    }
    const size_t carried = std::min(size, kLargestRecord);
    unsigned char header[kRecordHeader];
    BigEndian::StoreUnsigned16(key, header);
    BigEndian::StoreUnsigned16(static_cast<uint16_t>(carried), header + 2);
    if (fwrite(header, sizeof header, 1, mFile) == 1) {
        fwrite(data, carried, 1, mFile);
    }
}
