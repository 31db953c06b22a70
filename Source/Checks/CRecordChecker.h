// Holds the records of a document against what a writer would have written.
#pragma once

#include "CTaggedFile/RecordTable.h"
#include "Checks/tFinding.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

/// Walks over the records of a file in memory. Every header is tested before it is believed, so that a wrong byte in a
/// key or size is found at its record or at the next.
class CRecordChecker {
public:
    /// @param bytes  the whole file; not owned
    CRecordChecker(std::span<const unsigned char> bytes, std::vector<tFinding>& findings);

    /// True when nothing more can be read: the file has ended, or the walk has lost its way.
    bool IsLost() const { return mLost; }
    size_t GetPosition() const { return mPosition; }
    size_t GetBytesLeft() const { return mBytes.size() - mPosition; }
    /// The next 32 bits without moving; 0 where there are none.
    uint32_t PeekWord(size_t behind = 0) const;
    /// Key of the next record without moving, or -1.
    int PeekKey() const;
    void Skip(size_t count);
    /// Moves to the next place from here on that holds this 32-bit word; else the walk is lost.
    void SeekWord(uint32_t word);

    /// The part of a table that documents have from this version on.
    static std::span<const tRecord> Since(std::span<const tRecord> table, int version);
    /// Tables that lie behind each other in a document as one.
    static std::vector<tRecord> Join(std::initializer_list<std::span<const tRecord>> tables);

    /// Checks the records of a table one after the other. A record that is missing is reported where the next one
    /// stands; foreign ones in front of one that is there are passed over, as readers do it, and noted.
    void Expect(std::span<const tRecord> table, std::initializer_list<int> follow);
    /// Checks one record. @return true when it was there, whole and of the right size; its data is then in Data()
    bool ExpectOne(const tRecord& record, std::initializer_list<int> follow);
    /// Whether what is left of the file is whole records.
    bool HasRecordsOnly() const;
    std::span<const unsigned char> Data() const { return mData; }
    int32_t DataAsInt() const;
    std::string DataAsText() const;
    /// Where the record that was checked last begins.
    size_t GetRecordOffset() const { return mRecordOffset; }

    void SetElement(int element) { mElement = element; }
    void SetComponent(int component) { mComponent = component; }
    void Report(size_t offset, int key, const std::string& text, tFinding::eKind kind = tFinding::eKind::kDamage);
    /// Reports a count record that does not agree with what is there, unless the walk got lost on the way.
    void CheckCount(size_t offset, int key, long long promised, long long there, const char* what);
    /// Reports that the file ends, and ends the walk.
    void ReportEnd(int key, const std::string& expected);

private:
    bool FindRecord(const tRecord& record, std::initializer_list<int> follow, std::span<const tRecord> later);
    void CheckData(const tRecord& record);

    std::span<const unsigned char> mBytes;
    std::vector<tFinding>& mFindings;
    size_t mPosition = 0;
    size_t mRecordOffset = 0;
    std::span<const unsigned char> mData;
    int mElement = 0;
    int mComponent = 0;
    bool mLost = false;
};
