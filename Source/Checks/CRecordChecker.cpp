#include "Checks/CRecordChecker.h"

#include "Bounds.h"
#include "CTaggedFile/BigEndian.h"

#include <algorithm>
#include <cstring>

namespace {
constexpr auto kFractionUnits = static_cast<int32_t>(BigEndian::kFixedPointUnits);

std::string Number(long long value)
{
    return std::to_string(value);
}

std::string Describe(const tRecord& record)
{
    return "record " + Number(record.key) + " (" + record.name + ")";
}

/// Bytes that a record of this kind always has; 0 for a text.
size_t FixedSize(const tRecord& record)
{
    return record.type == eRecordType::kText ? 0 : record.size;
}
} // namespace

CRecordChecker::CRecordChecker(std::span<const unsigned char> bytes, std::vector<tFinding>& findings)
    : mBytes(bytes), mFindings(findings)
{}

uint32_t CRecordChecker::PeekWord(size_t behind) const
{
    return !mLost && GetBytesLeft() >= behind + 4 ? BigEndian::Unsigned32(&mBytes[mPosition + behind]) : 0;
}

int CRecordChecker::PeekKey() const
{
    return !mLost && GetBytesLeft() >= kRecordHeader ? BigEndian::Unsigned16(&mBytes[mPosition]) : -1;
}

void CRecordChecker::Skip(size_t count)
{
    mPosition += std::min(count, GetBytesLeft());
}

void CRecordChecker::SeekWord(uint32_t word)
{
    while (!mLost && PeekWord() != word) {
        if (GetBytesLeft() <= 4) {
            mLost = true;
        } else {
            ++mPosition;
        }
    }
}

void CRecordChecker::Report(size_t offset, int key, const std::string& text, tFinding::eKind kind)
{
    if (mFindings.size() < Bounds::kMostFindings) {
        mFindings.push_back({kind, offset, key, mElement, mComponent, text});
    } else {
        mLost = true;
    }
}

void CRecordChecker::CheckCount(size_t offset, int key, long long promised, long long there, const char* what)
{
    if (!mLost && promised != there) {
        Report(offset, key,
               "record " + Number(key) + " promises " + Number(promised) + " " + what + ", " + Number(there) +
                   " are there");
    }
}

void CRecordChecker::ReportEnd(int key, const std::string& expected)
{
    if (!mLost) {
        Report(mPosition, key, "the file ends where " + expected + " was expected");
        mLost = true;
    }
}

int32_t CRecordChecker::DataAsInt() const
{
    return mData.size() >= 4 ? BigEndian::Signed32(mData.data()) : 0;
}

std::string CRecordChecker::DataAsText() const
{
    const char* text = reinterpret_cast<const char*>(mData.data());
    return std::string(text, strnlen(text, mData.size()));
}

std::span<const tRecord> CRecordChecker::Since(std::span<const tRecord> table, int version)
{
    const auto isOther = [version](const tRecord& record) { return record.since != version; };
    const auto begin = std::find_if_not(table.begin(), table.end(), isOther);
    return {begin, std::find_if(begin, table.end(), isOther)};
}

std::vector<tRecord> CRecordChecker::Join(std::initializer_list<std::span<const tRecord>> tables)
{
    std::vector<tRecord> all;
    for (const std::span<const tRecord> table : tables) {
        all.insert(all.end(), table.begin(), table.end());
    }
    return all;
}

void CRecordChecker::Expect(std::span<const tRecord> table, std::initializer_list<int> follow)
{
    for (size_t i = 0; i < table.size() && !mLost; ++i) {
        if (FindRecord(table[i], follow, table.subspan(i + 1))) {
            CheckData(table[i]);
        }
    }
}

bool CRecordChecker::ExpectOne(const tRecord& record, std::initializer_list<int> follow)
{
    if (mLost || !FindRecord(record, follow, {})) {
        return false;
    }
    const size_t fixed = FixedSize(record);
    CheckData(record);
    return fixed == 0 || mData.size() == fixed;
}

bool CRecordChecker::HasRecordsOnly() const
{
    size_t at = mPosition;
    while (mBytes.size() - at >= kRecordHeader) {
        const size_t size = BigEndian::Unsigned16(&mBytes[at + 2]);
        if (size > mBytes.size() - at - kRecordHeader) {
            return false;
        }
        at += kRecordHeader + size;
    }
    return at == mBytes.size();
}

// Takes the record if it is there, behind others that nobody knows. Otherwise says so, and either leaves what stands
// there to the records that follow, or passes over it when none of them knows it.
bool CRecordChecker::FindRecord(const tRecord& record, std::initializer_list<int> follow,
                                std::span<const tRecord> later)
{
    int foreignKey = -1; // of the first record that stands in the way
    size_t foreignOffset = 0;
    const auto reportForeign = [&](tFinding::eKind kind) {
        if (foreignKey >= 0) {
            Report(foreignOffset, record.key,
                   Describe(record) + " was expected, key " + Number(foreignKey) + " was found" +
                       (kind == tFinding::eKind::kOddity ? "; readers pass over it" : ""),
                   kind);
        }
    };
    while (!mLost) {
        if (GetBytesLeft() < kRecordHeader) {
            reportForeign(tFinding::eKind::kDamage);
            ReportEnd(record.key, Describe(record));
            return false;
        }
        mRecordOffset = mPosition;
        const int key = PeekKey();
        const size_t size = BigEndian::Unsigned16(&mBytes[mPosition + 2]);
        const bool isKnownLater =
            std::find(follow.begin(), follow.end(), key) != follow.end() ||
            std::any_of(later.begin(), later.end(), [key](const tRecord& next) { return next.key == key; });
        if (key != record.key) {
            if (foreignKey < 0) {
                foreignKey = key;
                foreignOffset = mPosition;
            }
            if (isKnownLater) {
                reportForeign(tFinding::eKind::kDamage);
                return false;
            }
        }
        if (size > GetBytesLeft() - kRecordHeader) {
            reportForeign(tFinding::eKind::kDamage);
            if (key == record.key) {
                Report(mPosition, record.key,
                       Describe(record) + " claims " + Number(static_cast<long long>(size)) + " bytes, " +
                           Number(static_cast<long long>(GetBytesLeft() - kRecordHeader)) + " are left in the file");
            }
            mLost = true;
            return false;
        }
        mData = mBytes.subspan(mPosition + kRecordHeader, size);
        mPosition += kRecordHeader + size;
        if (key == record.key) {
            reportForeign(tFinding::eKind::kOddity); // where it belonged to a list, that list's count is wrong
            return true;
        }
    }
    return false;
}

void CRecordChecker::CheckData(const tRecord& record)
{
    const size_t fixed = FixedSize(record);
    const auto report = [&](const std::string& text, tFinding::eKind kind = tFinding::eKind::kDamage) {
        Report(mRecordOffset, record.key, Describe(record) + " " + text, kind);
    };
    if (mData.empty() || (fixed != 0 && mData.size() != fixed)) {
        report("has " + Number(static_cast<long long>(mData.size())) + " bytes of data" +
               (fixed != 0 ? ", not " + Number(static_cast<long long>(fixed)) : std::string()));
        return;
    }
    switch (record.type) {
    case eRecordType::kBool:
        if (mData[0] > 1) {
            report("holds " + Number(mData[0]) + ", neither 0 nor 1");
        }
        break;
    case eRecordType::kDouble: {
        const int32_t whole = BigEndian::Signed32(mData.data());
        const int32_t fraction = BigEndian::Signed32(mData.data() + 4);
        if (fraction <= -kFractionUnits || fraction >= kFractionUnits || (whole > 0 && fraction < 0) ||
            (whole < 0 && fraction > 0)) {
            report("holds no number: " + Number(whole) + " and " + Number(fraction) + " ten-millionths");
        }
        break;
    }
    case eRecordType::kText: {
        const void* zero = std::memchr(mData.data(), 0, mData.size());
        const size_t length = zero != nullptr
                                  ? static_cast<size_t>(static_cast<const unsigned char*>(zero) - mData.data())
                                  : mData.size();
        if (zero == nullptr) {
            report("holds a text without its zero at the end");
        } else if (length + 1 != mData.size()) {
            report("holds " + Number(static_cast<long long>(mData.size() - length - 1)) +
                   " bytes behind the end of its text");
        }
        if (length >= record.size) {
            report("holds " + Number(static_cast<long long>(length)) + " characters, of which readers keep " +
                       Number(static_cast<long long>(record.size - 1)),
                   tFinding::eKind::kOddity);
        }
        break;
    }
    case eRecordType::kChar:
    case eRecordType::kInt:
    case eRecordType::kRaw:
        break;
    }
}
