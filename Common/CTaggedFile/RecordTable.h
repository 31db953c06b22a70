// Tables of records: what a document holds, in the order in which it is written. Readers, writers and checks of a
// document walk the same table.
#pragma once

#include "CTaggedFile/BigEndian.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

/// Largest number of data bytes of one record.
constexpr size_t kLargestRecord = 65535;
/// Bytes of key and size in front of the data.
constexpr size_t kRecordHeader = 4;

/// What the data of a record looks like.
enum class eRecordType : uint8_t {
    kBool,   ///< one byte, 0 or 1
    kChar,   ///< one byte
    kInt,    ///< 4 bytes
    kDouble, ///< 8 bytes: whole and fraction of one sign, the fraction below 1
    kText,   ///< characters and one zero at the end, in a field of `size` bytes
    kRaw     ///< `size` bytes
};

/// A record of a document.
struct tRecord {
    constexpr tRecord(uint16_t itsKey, eRecordType itsType, const char* itsName, int firstVersion = 0)
        : tRecord(itsKey, itsType, SizeOf(itsType), itsName, firstVersion)
    {}
    constexpr tRecord(uint16_t itsKey, eRecordType itsType, uint16_t itsSize, const char* itsName, int firstVersion = 0)
        : key(itsKey), type(itsType), size(itsSize), since(firstVersion), name(itsName)
    {}

    uint16_t key;
    eRecordType type;
    uint16_t size;    ///< bytes of the data; of a text, bytes of the field that takes it
    int since;        ///< first version of the document that has the record
    const char* name; ///< what it holds, in words

private:
    static constexpr uint16_t SizeOf(eRecordType type)
    {
        return type == eRecordType::kDouble ? 8 : type == eRecordType::kInt ? 4 : 1;
    }
};

/// Whether a variable of this type takes the data of the record.
template <typename tField>
constexpr bool TakesRecord(const tRecord& record)
{
    if constexpr (std::is_same_v<tField, bool>) {
        return record.type == eRecordType::kBool;
    } else if constexpr (std::is_same_v<tField, char>) {
        return record.type == eRecordType::kChar;
    } else if constexpr (std::is_same_v<tField, int>) {
        return record.type == eRecordType::kInt;
    } else if constexpr (std::is_same_v<tField, double>) {
        return record.type == eRecordType::kDouble;
    } else if constexpr (std::is_same_v<tField, std::string>) {
        return record.type == eRecordType::kText;
    } else if constexpr (std::is_same_v<std::remove_extent_t<tField>, char>) {
        return record.type == eRecordType::kText && record.size == sizeof(tField);
    } else {
        return record.type == eRecordType::kRaw && record.size == sizeof(tField);
    }
}

/// A table of records of fixed size that follow each other directly, as nearly every document holds them. Tested as a
/// whole, they cost one pass over their headers instead of a search each.
template <size_t kCount>
class CRecordRun {
public:
    constexpr explicit CRecordRun(const tRecord (&records)[kCount])
    {
        for (size_t i = 0; i < kCount; ++i) {
            mHeaders[i] = uint32_t{records[i].key} << 16 | records[i].size;
            mOffsets[i] = mSize;
            mSize += kRecordHeader + records[i].size;
            mVersion = std::max(mVersion, records[i].since);
        }
    }

    /// Bytes of the whole run.
    constexpr size_t GetSize() const { return mSize; }
    /// First version of a document that has them all.
    constexpr int GetVersion() const { return mVersion; }
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
    size_t mOffsets[kCount] = {};
    size_t mSize = 0;
    int mVersion = 0;
};
