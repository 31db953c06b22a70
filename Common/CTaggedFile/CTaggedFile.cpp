#include "CTaggedFile/CTaggedFile.h"

#include "Bounds.h"
#include "CheckError/CErr.h"

#include <algorithm>
#include <cstring>

bool CTaggedFile::ReadNextMatchingTag(CTag& tag, unsigned short key)
{
    CTag::tView record;
    const bool found = Find(key, record);
    tag = found ? CTag(record.key, record.size, record.data) : CTag();
    return found;
}

bool CTaggedFile::Search(unsigned short key, CTag::tView& record)
{
    for (;;) {
        if (!CTag::Take(mFile, record, mScratch)) {
            mAtEnd = true;
            return false;
        }
        if (record.size == 0) {
            return false;
        }
        ++mNumRead;
        if (record.key == key) {
            return true;
        }
        ++mNumSkipped;
        CErr::DebugPrint("CTaggedFile::ReadNextMatchingTag -- Skipping '%d' tag", record.key);
    }
}

bool CTaggedFile::Read(unsigned short key, char* text, size_t capacity)
{
    CTag::tView record;
    if (!Find(key, record)) {
        return false;
    }
    if (capacity > 0) {
        const size_t most = std::min<size_t>(record.size, capacity - 1);
        const size_t length = strnlen(reinterpret_cast<const char*>(record.data), most);
        std::memcpy(text, record.data, length);
        text[length] = 0;
    }
    return true;
}

bool CTaggedFile::Read(unsigned short key, std::string& text)
{
    CTag::tView record;
    if (!Find(key, record)) {
        return false;
    }
    const char* characters = reinterpret_cast<const char*>(record.data);
    text.assign(characters, strnlen(characters, std::min<size_t>(record.size, Bounds::kMostRecordText)));
    return true;
}

bool CTaggedFile::Read(unsigned short key, void* destination, size_t size)
{
    CTag::tView record;
    if (!Find(key, record)) {
        return false;
    }
    if (record.size >= size) {
        std::memcpy(destination, record.data, size);
    }
    return true;
}

bool CTaggedFile::ReadBlock(unsigned short key, void* destination, size_t size, size_t& length)
{
    CTag::tView record;
    if (!Find(key, record)) {
        return false;
    }
    length = std::min<size_t>(record.size, size);
    std::memcpy(destination, record.data, length);
    return true;
}

void CTaggedFile::Write(unsigned short key, const char* text)
{
    Write(key, text, std::strlen(text) + 1);
}

void CTaggedFile::Write(unsigned short key, const std::string& text)
{
    const std::string carried(text, 0, std::min(strnlen(text.data(), text.size()), Bounds::kMostRecordText));
    Write(key, carried.c_str(), carried.size() + 1);
}
