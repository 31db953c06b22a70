// A cursor over a stream of tagged records, the form of every binary document.
#pragma once

#include "CTaggedFile/CTag.h"
#include "CTaggedFile/RecordData.h"
#include "CTaggedFile/RecordTable.h"
#include "Platform/Streams.h"

#include <climits>
#include <cstddef>
#include <cstdio>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

/// Reads and writes typed values by key. Readers ask for keys in the order in which they were written; records of other
/// keys on the way are consumed and lost, so that asking for an absent key runs to the end of the stream. A record of
/// size 0 ends the one search that meets it; the next search goes on behind its four bytes.
///
/// Values in records: bool one byte, 0 or 1; char one byte; int signed 32-bit; double two signed 32-bit integers, the
/// integer part and the fraction in units of 1e-7; text its characters and a zero byte; raw data as it stands.
/// All big-endian.
///
/// Does not own the stream and keeps none of its bytes: others may use the stream between two calls.
class CTaggedFile {
public:
    explicit CTaggedFile(FILE* file) : mFile(file) {}
    virtual ~CTaggedFile() = default;
    CTaggedFile(const CTaggedFile&) = delete;
    CTaggedFile& operator=(const CTaggedFile&) = delete;

    /// Fills `tag` with the next record of that key. @return false at the end of the stream or at a record of size 0
    bool ReadNextMatchingTag(CTag& tag, unsigned short key);

    /// Typed reads: true when a record of the key was found. A value stays untouched when it was not, and also when the
    /// record is shorter than the type; a longer record gives its first bytes.
    template <RecordData::cFixed tValue>
    bool Read(unsigned short key, tValue& value)
    {
        CTag::tView record;
        if (!Find(key, record)) {
            return false;
        }
        if (record.size >= RecordData::kSize<tValue>) {
            RecordData::Decode(record.data, value);
        }
        return true;
    }
    /// A text into a buffer of `size` bytes: cut to size - 1 characters, always terminated.
    bool Read(unsigned short key, char* text, size_t size);
    /// A text of at most 2,047 characters.
    bool Read(unsigned short key, std::string& text);
    /// Raw data into a structure of `size` bytes; a shorter record leaves it untouched.
    bool Read(unsigned short key, void* destination, size_t size);
    /// Raw data of any length up to `size`: the first bytes of the record.
    /// @param length set to the number of bytes copied
    bool ReadBlock(unsigned short key, void* destination, size_t size, size_t& length);
    /// Reads the records of a table one after the other, each into the field at its place; those that the document's
    /// version does not have are not asked for.
    /// @param kTable  an array of tRecord
    template <const auto& kTable, typename... tFields>
    void ReadTable(const std::tuple<tFields&...>& fields, int version = INT_MAX)
    {
        static_assert(FitsTable<kTable, tFields...>(std::index_sequence_for<tFields...>()));
        ReadTable<kTable>(fields, version, std::index_sequence_for<tFields...>());
    }

    /// Typed writes. A failure shows in the stream's error state; an empty block is not written.
    template <RecordData::cFixed tValue>
    void Write(unsigned short key, const tValue& value)
    {
        unsigned char bytes[RecordData::kSize<tValue>];
        RecordData::Encode(value, bytes);
        Write(key, bytes, sizeof bytes);
    }
    void Write(unsigned short key, const char* text);
    /// At most 2,047 characters are carried, and none behind a zero character.
    void Write(unsigned short key, const std::string& text);
    void Write(unsigned short key, const void* data, size_t size) { CTag::Write(mFile, key, size, data); }
    /// Writes all records of a table, each from the field at its place.
    template <const auto& kTable, typename... tFields>
    void WriteTable(const std::tuple<tFields&...>& fields)
    {
        static_assert(FitsTable<kTable, tFields...>(std::index_sequence_for<tFields...>()));
        [&]<size_t... i>(std::index_sequence<i...>)
        {
            (Write(kTable[i].key, std::get<i>(fields)), ...);
        }
        (std::index_sequence_for<tFields...>());
    }

    /// True when a search ended because the stream did: nothing more will be found.
    bool AtEnd() const { return mAtEnd; }
    int GetNumberOfRecordsRead() const { return mNumRead; }
    int GetNumberOfRecordsSkipped() const { return mNumSkipped; }

private:
    /// Whether the fields are as many as the table's records, and each takes its record's data.
    template <const auto& kTable, typename... tFields, size_t... i>
    static constexpr bool FitsTable(std::index_sequence<i...>)
    {
        return std::size(kTable) == sizeof...(tFields) && (TakesRecord<std::remove_const_t<tFields>>(kTable[i]) && ...);
    }

    template <const auto& kTable, typename... tFields, size_t... i>
    void ReadTable(const std::tuple<tFields&...>& fields, int version, std::index_sequence<i...>)
    {
        if constexpr (sizeof...(i) > 1 && (RecordData::cFixed<tFields> && ...)) {
            static constexpr CRecordRun kRun(kTable);
            if (const unsigned char* bytes = version >= kRun.GetVersion() ? TakeRun(kRun) : nullptr) {
                (RecordData::Decode(bytes + kRun.GetDataOffset(i), std::get<i>(fields)), ...);
                return;
            }
        }
        const auto read = [this, version](const tRecord& record, auto& field) {
            if (version >= record.since) {
                this->Read(record.key, field);
            }
        };
        (read(kTable[i], std::get<i>(fields)), ...);
    }

    template <size_t kSize>
    bool Read(unsigned short key, char (&text)[kSize])
    {
        return Read(key, text, kSize);
    }

    /// The next records where they lie in the stream's buffer, consumed as a whole, if they are the run.
    /// @return null, with nothing consumed, when they are others or not all in the buffer;
    ///         valid until the stream is touched
    template <size_t kCount>
    const unsigned char* TakeRun(const CRecordRun<kCount>& run)
    {
        const unsigned char* bytes = nullptr;
        if (Platform::BufferedBytes(mFile, bytes) < run.GetSize() || !run.Matches(bytes)) {
            return nullptr;
        }
        Platform::ConsumeBuffered(mFile, run.GetSize());
        mNumRead += static_cast<int>(kCount);
        return bytes;
    }

    /// The next record with the key, where it lies. @return false when the search ended without one
    bool Find(unsigned short key, CTag::tView& record)
    {
        // Nearly every record is the one that was asked for, and whole in the buffer: no call.
        if (CTag::Peek(mFile, record) && record.key == key && record.size > 0) {
            Platform::ConsumeBuffered(mFile, kRecordHeader + record.size);
            ++mNumRead;
            return true;
        }
        return Search(key, record);
    }
    bool Search(unsigned short key, CTag::tView& record);

    FILE* mFile;
    int mNumRead = 0;
    int mNumSkipped = 0;
    bool mAtEnd = false;
    CTag::tScratch mScratch;
};
