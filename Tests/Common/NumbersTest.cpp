#include "KVUNum/KVUNum.h"
#include "KVURawMem/KVURawMem.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <limits>
#include <vector>

TEST(KVUNum, RoundingAndLimits)
{
    EXPECT_EQ(KVUNum::d2i(2.5), 3);
    EXPECT_EQ(KVUNum::d2i(-2.5), -2);
    EXPECT_EQ(KVUNum::d2i(1e300), INT_MAX);
    EXPECT_EQ(KVUNum::d2i(std::numeric_limits<double>::quiet_NaN()), 0);

    double cut = -7.9;
    KVUNum::FixFloatingPrecision(cut, 0.5);
    EXPECT_DOUBLE_EQ(cut, -7.5) << "towards zero";
    const struct {
        int value, min, max, result;
        bool changed;
    } cases[] = {{0, 1, 9, 1, true}, {10, 1, 9, 9, true}, {9, 1, 9, 9, false}, {0, 9, 1, 9, true}};
    for (const auto& c : cases) {
        int value = c.value;
        EXPECT_EQ(KVUNum::EnsureMaxMinLimits(value, c.min, c.max), c.changed);
        EXPECT_EQ(value, c.result);
    }
    EXPECT_FALSE(KVUNum::DeltaEquals(1.25, 1.0, 0.25)) << "exactly the tolerance is too far";
}

TEST(KVUNum, Angles)
{
    const struct {
        double angle, in360, in180;
    } cases[] = {{-30, 330, -30}, {370, 370, 10}, {-190, 170, 170}, {180, 180, 180}, {-180, 180, -180},
                 {900, 900, 540}, {400, 400, 40}, {-1000, 80, 80},  {-720, 0, 0},    {-1e-20, 0, -1e-20}};
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(KVUNum::NormalizeAngle360(c.angle), c.in360) << c.angle;
        EXPECT_DOUBLE_EQ(KVUNum::NormalizeAnglePlusMinus180(c.angle), c.in180) << c.angle;
    }
    // What no turn can lift above 0 must not hang.
    EXPECT_TRUE(std::isnan(KVUNum::NormalizeAngle360(-std::numeric_limits<double>::infinity())));
    EXPECT_GE(KVUNum::NormalizeAngle360(-1e300), 0.0);
}

TEST(KVURawMem, FieldsArePackedAndComeBack)
{
    const std::string text("na\0me", 5);
    std::vector<char> memory(1 + 8 + 6 + 3 + 2 + 5);
    void* cursor = KVURawMem::AppendDataToRawMem(memory.data(), true); // all that follows lies at odd addresses
    cursor = KVURawMem::AppendDataToRawMem(cursor, -1.5);
    cursor = KVURawMem::AppendDataToRawMem(cursor, RGBColor{1, 2, 65535});
    cursor = KVURawMem::AppendDataToRawMem(cursor, "xyz", 3);
    cursor = KVURawMem::AppendDataToRawMem(cursor, text);
    EXPECT_EQ(cursor, memory.data() + memory.size());

    bool flag = false;
    double number = 0;
    RGBColor color = {};
    char characters[4] = "###";
    std::string name;
    memory[0] = 7; // foreign memory may hold any byte
    const void* read = KVURawMem::FetchDataFromRawMem(static_cast<const void*>(memory.data()), flag);
    read = KVURawMem::FetchDataFromRawMem(read, number);
    read = KVURawMem::FetchDataFromRawMem(read, color);
    read = KVURawMem::FetchDataFromRawMem(read, characters, 3);
    read = KVURawMem::FetchDataFromRawMem(read, name);
    EXPECT_EQ(read, memory.data() + memory.size());
    EXPECT_TRUE(flag && number == -1.5 && color.blue == 65535);
    EXPECT_EQ(characters + name, "xyz" + text);

    const std::string tooLong(65536 + 3, 'x'); // lengths are cut to 16 bits
    EXPECT_EQ(KVURawMem::AppendDataToRawMem(memory.data(), tooLong), memory.data() + 5);
    KVURawMem::FetchDataFromRawMem(static_cast<void*>(memory.data()), name);
    EXPECT_EQ(name, "xxx");
}
