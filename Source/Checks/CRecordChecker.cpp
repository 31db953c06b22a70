#include "Checks/CRecordChecker.h"

#include "CTaggedFile/BigEndian.h"

#include <algorithm>
#include <cstring>

namespace {
/// Parts into which a whole is divided.
constexpr int32_t kFractionUnits = 10000000;

std::string Number(long long value)
{
    return std::to_string(value);
}

std::string Describe(const tRecordRule& rule)
{
    return "record " + Number(rule.key) + " (" + rule.name + ")";
}

/// Bytes that a record of this kind always has; 0 for a text.
size_t FixedSize(const tRecordRule& rule)
{
    switch (rule.type) {
    case eRecordType::kBool:
    case eRecordType::kChar:
        return 1;
    case eRecordType::kInt:
        return 4;
    case eRecordType::kDouble:
        return 8;
    case eRecordType::kRaw:
        return rule.size;
    case eRecordType::kText:
        break;
    }
    return 0;
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
    if (mFindings.size() < kMostFindings) {
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

void CRecordChecker::Expect(std::span<const tRecordRule> rules, std::initializer_list<int> follow)
{
    for (size_t i = 0; i < rules.size() && !mLost; ++i) {
        if (FindRecord(rules[i], follow, rules.subspan(i + 1))) {
            CheckData(rules[i]);
        }
    }
}

bool CRecordChecker::ExpectOne(const tRecordRule& rule, std::initializer_list<int> follow)
{
    if (mLost || !FindRecord(rule, follow, {})) {
        return false;
    }
    const size_t fixed = FixedSize(rule);
    CheckData(rule);
    return fixed == 0 || mData.size() == fixed;
}

// Takes the record if it is there. Otherwise says so, and either leaves what stands there to the rules that follow, or
// passes over it when none of them knows it.
bool CRecordChecker::FindRecord(const tRecordRule& rule, std::initializer_list<int> follow,
                                std::span<const tRecordRule> later)
{
    bool reported = false;
    while (!mLost) {
        if (GetBytesLeft() < kRecordHeader) {
            ReportEnd(rule.key, Describe(rule));
            return false;
        }
        mRecordOffset = mPosition;
        const int key = PeekKey();
        const size_t size = BigEndian::Unsigned16(&mBytes[mPosition + 2]);
        const bool isKnownLater =
            std::find(follow.begin(), follow.end(), key) != follow.end() ||
            std::any_of(later.begin(), later.end(), [key](const tRecordRule& next) { return next.key == key; });
        if (key != rule.key) {
            if (!reported) {
                Report(mPosition, rule.key, Describe(rule) + " was expected, key " + Number(key) + " was found");
                reported = true;
            }
            if (isKnownLater) {
                return false;
            }
        }
        if (size > GetBytesLeft() - kRecordHeader) {
            if (key == rule.key || !reported) {
                Report(mPosition, rule.key,
                       Describe(rule) + " claims " + Number(static_cast<long long>(size)) + " bytes, " +
                           Number(static_cast<long long>(GetBytesLeft() - kRecordHeader)) + " are left in the file");
            }
            mLost = true;
            return false;
        }
        mData = mBytes.subspan(mPosition + kRecordHeader, size);
        mPosition += kRecordHeader + size;
        if (key == rule.key) {
            return true;
        }
    }
    return false;
}

void CRecordChecker::CheckData(const tRecordRule& rule)
{
    const size_t fixed = FixedSize(rule);
    const auto report = [&](const std::string& text, tFinding::eKind kind = tFinding::eKind::kDamage) {
        Report(mRecordOffset, rule.key, Describe(rule) + " " + text, kind);
    };
    if (mData.empty() || (fixed != 0 && mData.size() != fixed)) {
        report("has " + Number(static_cast<long long>(mData.size())) + " bytes of data" +
               (fixed != 0 ? ", not " + Number(static_cast<long long>(fixed)) : std::string()));
        return;
    }
    switch (rule.type) {
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
        if (length >= rule.size) {
            report("holds " + Number(static_cast<long long>(length)) + " characters, of which readers keep " +
                       Number(static_cast<long long>(rule.size - 1)),
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
