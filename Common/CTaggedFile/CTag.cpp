#include "CTaggedFile/CTag.h"

#include "CTaggedFile/BigEndian.h"
#include "CheckError/CErr.h"

#include <algorithm>
#include <cstring>
#include <new>

CTag::CTag(unsigned short key, unsigned long size, const void* data) : mKey(key)
{
    const size_t carried = std::min<size_t>(size, kLargestRecord);
    if (carried > 0 && data != nullptr) {
        Allocate(carried, "CTag::CTag(UInt16, size_t, const void *)");
        std::memcpy(mData.get(), data, carried);
    }
}

void CTag::Allocate(size_t size, const char* function)
{
    mData.reset(new (std::nothrow) unsigned char[size]);
    CErr::CheckNull(mData.get(), function, "Failed to allocate memory for tag data");
    mSize = static_cast<unsigned short>(size);
}

bool CTag::Read(FILE* file)
{
    mData.reset();
    mSize = 0;
    unsigned char word[2];
    if (feof(file) || fread(word, sizeof word, 1, file) != 1) {
        return false;
    }
    mKey = BigEndian::Unsigned16(word);
    if (fread(word, sizeof word, 1, file) != 1) {
        return false;
    }
    const unsigned short size = BigEndian::Unsigned16(word);
    if (size == 0) {
        return false;
    }
    Allocate(size, "bool CTag::Read(FILE *)");
    return fread(mData.get(), size, 1, file) == 1;
}

bool CTag::Write(FILE* file) const
{
    if (mKey == 0 || mSize == 0 || !mData) {
        return false;
    }
    unsigned char key[2];
    unsigned char size[2];
    BigEndian::StoreUnsigned16(mKey, key);
    BigEndian::StoreUnsigned16(mSize, size);
    return fwrite(key, sizeof key, 1, file) == 1 && fwrite(size, sizeof size, 1, file) == 1 &&
           fwrite(mData.get(), mSize, 1, file) == 1;
}

bool CTag::GetData(void* destination, int max) const
{
    if (mSize == 0 || !mData) {
        return false;
    }
    std::memcpy(destination, mData.get(), static_cast<size_t>(std::clamp<int>(max, 0, mSize)));
    return true;
}
