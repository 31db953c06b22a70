#include "CTaggedFile/CTag.h"
#include "CTaggedFile/CTaggedFile.h"
#include "Common/Reports.h"
#include "support/DocumentBuilder.h"
#include "support/Streams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using testing::ElementsAre;
using testing::Pair;

namespace {
std::string StoredDouble(double value)
{
    return Written([value](FILE* file) { CTaggedFile(file).Write(1, value); }).substr(4);
}

/// What a value becomes when it is read from a record of this data.
template <typename tValue>
tValue ReadFrom(const std::string& data, tValue value)
{
    const tStream file = StreamOf(CRecords().Record(1, data).Bytes());
    EXPECT_TRUE(CTaggedFile(file.get()).Read(1, value));
    return value;
}

double ReadDouble(const std::string& data)
{
    return ReadFrom(data, 77.0);
}

std::string Words(int64_t whole, int64_t fraction)
{
    return Bytes32(static_cast<uint32_t>(whole)) + Bytes32(static_cast<uint32_t>(fraction));
}
} // namespace

TEST(TaggedStream, WritesWholeTextsAndNoEmptyRecords)
{
    EXPECT_EQ(
        Written([](FILE* file) {
            CTaggedFile records(file);
            records.Write(409, -2);
            records.Write(414, "");
            records.Write(415, std::string("a\0b", 3));
            records.Write(416, "raw", size_t{2});
            records.Write(417, "nothing", size_t{0});
            records.Write(0, 1);
            records.Write(1, std::string(3000, 'y'));
        }),
        CRecords().Int(409, -2).Text(414, "").Text(415, "a").Record(416, "ra").Text(1, std::string(2047, 'y')).Bytes());
}

TEST(TaggedStream, StoresDoublesInFixedPoint)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        int64_t whole;
        int64_t fraction;
    } cases[] = {
        {2.5, 2, 5000000},
        {-0.25, 0, -2500000},
        {0.29, 0, 2900000}, // the decimal behind this double is below 0.29, its product with the units is not
        {-0.123456789, 0, -1234567},
        {-2147483648.0, INT32_MIN, 0},
        {1e300, INT32_MAX, 9999999},
        {infinity, INT32_MAX, 9999999},
        {-infinity, INT32_MIN, -9999999},
        {-std::nan(""), 0, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(StoredDouble(c.value), Words(c.whole, c.fraction)) << c.value;
    }
    // Words that no writer makes still have a value.
    EXPECT_DOUBLE_EQ(ReadDouble(Words(1, -5000000)), 0.5);
    EXPECT_DOUBLE_EQ(ReadDouble(Words(INT32_MAX, INT32_MAX)), 2147483647.0 + 214.7483647);
    EXPECT_DOUBLE_EQ(ReadDouble(Words(INT32_MIN, INT32_MIN)), -2147483648.0 - 214.7483648);
}

TEST(TaggedStream, DoublesAreCutOnceAndStableAfterThat)
{
    CRandom random(1);
    for (int i = 0; i < 3000; ++i) {
        // Magnitudes from 1e-7 to 9e8, and both ends of the range.
        const double exponent = static_cast<double>(random.Int(-7000000, 8954242)) / 1e6;
        const double sign = random.Bool() ? 1.0 : -1.0;
        const double value = sign * (i % 10 == 0 ? 9e8 - static_cast<double>(i) / 7.0 : std::pow(10.0, exponent));
        const std::string once = StoredDouble(value);
        const double back = ReadDouble(once);
        EXPECT_LE(std::fabs(back - value), 1e-7) << std::hexfloat << value;
        EXPECT_EQ(StoredDouble(back), once) << std::hexfloat << value;
    }
}

TEST(TaggedStream, SkipsWhatWasNotAskedFor)
{
    CReports reports;
    const auto file = StreamOf(
        CRecords().Text(400, "skipped").Int(0, 5).Text(401, "found").Int(402, 7).Record(403, "").Int(404, 9).Bytes());
    CTaggedFile records(file.get());
    char text[16] = "";
    EXPECT_TRUE(records.Read(401, text, sizeof text));
    EXPECT_STREQ(text, "found");
    EXPECT_THAT(
        reports.mMessages,
        ElementsAre(Pair(Platform::eReportLevel::kDebugPrint, "CTaggedFile::ReadNextMatchingTag -- Skipping '400' tag"),
                    Pair(Platform::eReportLevel::kDebugPrint, "CTaggedFile::ReadNextMatchingTag -- Skipping '0' tag")));
    // An empty record ends the one search that meets it; the next one goes on behind it.
    int value = 1;
    EXPECT_FALSE(records.Read(404, value));
    EXPECT_EQ(value, 1);
    EXPECT_FALSE(records.AtEnd());
    EXPECT_TRUE(records.Read(404, value));
    EXPECT_EQ(value, 9);
    EXPECT_FALSE(records.Read(400, value));
    EXPECT_TRUE(records.AtEnd());
    EXPECT_EQ(records.GetNumberOfRecordsRead(), 5);
    EXPECT_EQ(records.GetNumberOfRecordsSkipped(), 3);
    EXPECT_EQ(fgetc(file.get()), EOF);
}

TEST(TaggedStream, ReadsNoMoreThanTheFieldHolds)
{
    EXPECT_EQ(ReadFrom(std::string("\0\0\1", 3), 42), 42); // too short for an int
    EXPECT_EQ(ReadFrom(std::string("\0\0\0\1\xFF", 5), 42), 1);
    EXPECT_EQ(ReadFrom("\1\2\3\4\5\6\7", 0.5), 0.5);
    EXPECT_EQ(ReadFrom(Words(1, 5000000) + "more", 0.5), 1.5);
    EXPECT_TRUE(ReadFrom("\2more", false));
    EXPECT_EQ(ReadFrom(std::string("\0\1\0\2\0\3\0", 7), RGBColor{7, 8, 9}).blue, 3);
    EXPECT_EQ(ReadFrom(std::string(3000, 'z'), std::string()), std::string(2047, 'z'));
    const tStream file = StreamOf(CRecords()
                                      .Record(7, "without zero")
                                      .Record(8, std::string("in\0side", 7))
                                      .Record(10, "123")
                                      .Record(12, "123")
                                      .Bytes());
    CTaggedFile records(file.get());
    char text[8];
    std::fill(std::begin(text), std::end(text), '#');
    EXPECT_TRUE(records.Read(7, text, 7));
    EXPECT_STREQ(text, "withou");
    EXPECT_EQ(text[7], '#');
    EXPECT_TRUE(records.Read(8, text, sizeof text));
    EXPECT_STREQ(text, "in");
    char block[] = "----";
    EXPECT_TRUE(records.Read(10, static_cast<void*>(block), size_t{4}));
    EXPECT_STREQ(block, "----");
    size_t length = 0;
    EXPECT_TRUE(records.ReadBlock(12, block, 4, length));
    EXPECT_EQ(length, 3U);
}

TEST(TaggedStream, OneRecordInMemory)
{
    const std::string whole = CRecords().Text(5, "abc").Bytes();
    CTag tag;
    for (size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(tag.Read(StreamOf(whole.substr(0, length)).get())) << length;
    }
    const auto file = StreamOf(CRecords().Record(6, "").Bytes() + whole);
    EXPECT_FALSE(tag.Read(file.get()));
    EXPECT_EQ(ftell(file.get()), 4);
    EXPECT_TRUE(tag.Read(file.get()));
    char two[3] = "--";
    EXPECT_TRUE(tag.GetData(two, 2));
    EXPECT_STREQ(two, "ab");
}
