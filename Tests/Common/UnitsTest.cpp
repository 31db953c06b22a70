#include "Reports.h"
#include "UnitLength/URailConstants.h"
#include "UnitLength/UUnits.h"
#include "support/Fatal.h"

#include <climits>

TEST(URailConstants, Scales)
{
    const struct {
        int code;
        const char* name;
        const char* longText;
        double ratio, gauge, railWidth, height, width;
    } cases[] = {
        {URailConstants::kScaleH0, "H0", "H0  (1:87)", 87, 16.5, 0.9, 65, 48},
        {URailConstants::kScaleCustom, "Custom Scale", "Custom Scale", 1, 50, 5, 250, 200},
        {URailConstants::kScale00, "00", "00  (1:76)", 76, 16.5, 1.1, 87, 66},
        {INT_MIN, "???", "???", 1, 1, 1, 100, 100},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        EXPECT_EQ(URailConstants::GetModelScale(c.code), 1.0 / c.ratio);
        EXPECT_EQ(URailConstants::GetModelScaleTW(c.code), c.gauge);
        EXPECT_EQ(URailConstants::GetDefaultRailWidth(c.code), c.railWidth);
        EXPECT_EQ(URailConstants::NEM102_GetMaxHeight(c.code), c.height);
        EXPECT_EQ(URailConstants::NEM102_GetMaxWidth(c.code), c.width);
        EXPECT_EQ(URailConstants::GetModelScaleTxt(c.code, true), c.name);
        EXPECT_EQ(URailConstants::GetModelScaleTxt(c.code, false), c.longText);
    }
}

TEST(UUnits, ConversionsAndTexts)
{
    const struct {
        int unit;
        double millimetres;
        const char* longText;
        const char* of16_5;
        const char* of1000;
    } cases[] = {{1, 1.0, "mm", "16.5 mm", "1000 mm"},
                 {2, 10.0, "cm", "1.6 cm", "100 cm"},
                 {3, 25.4, "Inch", "0.65 \"", "39 \""},
                 {4, 304.8, "Feet", "0.05 Ft", "3 Ft"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.unit);
        EXPECT_DOUBLE_EQ(UUnits::MM2Unit(c.unit, c.millimetres), 1.0);
        EXPECT_DOUBLE_EQ(UUnits::Unit2MM(c.unit, 1.0), c.millimetres);
        EXPECT_STREQ(UUnits::GetUnitStr(c.unit, false), c.longText);
        EXPECT_EQ(UUnits::IsDecBased(c.unit), c.unit <= 2);
        const char* const exact = UUnits::BuildMeasureUnitString(c.unit, 16.5);
        EXPECT_STREQ(UUnits::BuildMeasureUnitString(c.unit, 1000), c.of1000);
        EXPECT_STREQ(exact, c.of16_5) << "kept beside the text of the other form";
    }
    const CReports reports;
    testing::internal::CaptureStderr();
    EXPECT_EQ(std::string(UUnits::BuildMeasureUnitString(1, 1e200)).size(), 127u) << "cut and reported";
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("205\n Description :  Input parameter"));
    ExpectFatal({{"double UUnits::MM2Unit.*\n.*-1\n.*Unsupported Measure Unit!", [] { UUnits::MM2Unit(5, 1.0); }},
                 {"UUnits::GetUnitStr.*Unsupported Measure Unit!", [] { UUnits::GetUnitStr(0, true); }}});
}
