// A cursor over a stream of tagged records, the form of every binary document.
#pragma once

#include "CTaggedFile/CRecordRun.h"
#include "Platform/Streams.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

class CTag;

/// Reads and writes typed values by key. Readers ask for keys in the order in which they were written; records of other
/// keys on the way are consumed and lost, so that asking for an absent key runs to the end of the stream. A record of
/// size 0 ends the one search that meets it; the next search goes on behind its four bytes.
///
/// Values in records: bool one byte, 0 or 1; char one byte; int signed 32-bit; double two signed 32-bit integers, the
/// integer part and the fraction in units of 1e-7; text its characters and a zero byte; raw data as it stands. All
/// big-endian.
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
    bool Read(unsigned short key, bool& value);
    bool Read(unsigned short key, char& value);
    bool Read(unsigned short key, int& value);
    bool Read(unsigned short key, double& value);
    /// A text into a buffer of `size` bytes: cut to size - 1 characters, always terminated.
    bool Read(unsigned short key, char* text, size_t size);
    /// A text of at most 2,047 characters.
    bool Read(unsigned short key, std::string& text);
    /// Raw data into a structure of `size` bytes; a shorter record leaves it untouched.
    bool Read(unsigned short key, void* destination, size_t size);
    /// Raw data of any length up to `size`: the first bytes of the record. @param length set to the number of bytes
    /// copied
    bool ReadBlock(unsigned short key, void* destination, size_t size, size_t& length);
    /// The next records where they lie in the stream's buffer, consumed as a whole, if they are the run. The numbers of
    /// records read and skipped do not count them.
    /// @return null, with nothing consumed, when they are others or not all in the buffer; valid until the stream is
    /// touched
    template <size_t kCount>
    const unsigned char* TakeRun(const CRecordRun<kCount>& run)
    {
        const unsigned char* bytes = nullptr;
        if (Platform::BufferedBytes(mFile, bytes) < run.GetSize() || !run.Matches(bytes)) {
            return nullptr;
        }
        Platform::ConsumeBuffered(mFile, run.GetSize());
        return bytes;
    }

    /// Typed writes. A failure shows in the stream's error state; an empty block is not written.
    void Write(unsigned short key, bool value);
    void Write(unsigned short key, char value);
    void Write(unsigned short key, int value);
    void Write(unsigned short key, double value);
    void Write(unsigned short key, const char* text);
    /// At most 2,047 characters are carried, and none behind a zero character.
    void Write(unsigned short key, const std::string& text);
    void Write(unsigned short key, const void* data, size_t size);

    /// True when the last search ended because the stream did.
    bool AtEnd() const { return mAtEnd; }
    int GetNumberOfRecordsRead() const { return mNumRead; }
    int GetNumberOfRecordsSkipped() const { return mNumSkipped; }

private:
    /// Data of the next record with the key, where it lies: in the stream's buffer or in the scratch buffer. Valid
    /// until the stream is touched again. @return null when the search ended without one
    const unsigned char* Find(unsigned short key, size_t& size);
    const unsigned char* FindSlowly(unsigned short key, size_t& size);
    void Skip(unsigned short key);

    FILE* mFile;
    int mNumRead = 0;
    int mNumSkipped = 0;
    bool mAtEnd = false;
    std::unique_ptr<unsigned char[]> mScratch; ///< a record that crosses the end of the stream's buffer
};
