#include "Source/Elements/Elements.h"
#include "support/Fatal.h"

#include <cstring>

namespace {
/// Fields of raw memory in host order.
class CExpected {
public:
    template <typename tValue>
    CExpected& Raw(tValue value)
    {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&value);
        mBytes.insert(mBytes.end(), bytes, bytes + sizeof value);
        return *this;
    }
    CExpected& Text(const std::string& text)
    {
        mBytes.insert(mBytes.end(), text.begin(), text.end());
        return *this;
    }
    const tBytes& Bytes() const { return mBytes; }

private:
    tBytes mBytes;
};

tBytes RawOf(CBasicGeometry& component)
{
    const size_t size = static_cast<size_t>(component.GetParameterRawSize());
    tBytes bytes(size + 8, 0xEE);
    EXPECT_EQ(component.GetParameterAsRaw(bytes.data()), bytes.data() + size);
    EXPECT_EQ(bytes.back(), 0xEE) << "nothing behind the record";
    return {bytes.data(), bytes.data() + size};
}

CExpected RawCommon(int type, double gauge, double trackbed, bool joint0, bool joint1)
{
    CExpected bytes;
    bytes.Raw(type).Raw(1.5).Raw(-2.25).Raw(gauge).Raw(30.0).Raw(joint0).Raw(joint1).Raw(trackbed).Raw(0.75);
    return bytes.Raw(-5).Raw(uint16_t{1}).Raw(uint16_t{2}).Raw(uint16_t{0xFF03});
}

std::unique_ptr<CBasicGeometry> FromRaw(int type, void* raw)
{
    return UComponentKinds::Find(type)->makeFromRaw(raw);
}
} // namespace

TEST(Components, RawRecordsByteForByteAndBack)
{
    CExpected straight = RawCommon(1, 16.5, 40, true, false);
    straight.Raw(200.5);
    CExpected curve = RawCommon(2, 16.5, 40, false, true);
    curve.Raw(437.5).Raw(22.5);
    CExpected poly = RawCommon(3, 0, 40, false, false);
    poly.Raw(2).Raw(0.0).Raw(0.0).Raw(10.5).Raw(-3.0).Raw(false).Raw(true).Raw(7).Raw(4);
    CExpected text = RawCommon(4, 0, 0, false, false);
    text.Raw(36).Raw(0).Raw(uint16_t{5}).Text("Times").Raw(uint16_t{4}).Text("Yard");
    CExpected circle = RawCommon(5, 0, 0, false, false);
    circle.Raw(12.5).Raw(12.5).Raw(3);
    CExpected flex;
    CExpected polygonOfFlex = RawCommon(3, 0, 40, true, true);
    polygonOfFlex.Raw(2).Raw(0.0).Raw(0.0).Raw(10.5).Raw(-3.0).Raw(true).Raw(true).Raw(1).Raw(1);
    flex.Raw(6).Text({polygonOfFlex.Bytes().begin(), polygonOfFlex.Bytes().end()}).Raw(850.5);
    const struct {
        int type;
        const CExpected& expected;
        size_t size;
    } cases[] = {{1, straight, 72}, {2, curve, 80},  {3, poly, 60 + 8 + 16 * 2 + 10},
                 {4, text, 85},     {5, circle, 84}, {6, flex, 60 + 8 + 16 * 2 + 10 + 12}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        const std::unique_ptr<CBasicGeometry> component(NewComponent(c.type));
        tBytes bytes = RawOf(*component);
        EXPECT_EQ(bytes, c.expected.Bytes());
        EXPECT_EQ(bytes.size(), c.size);
        const auto copy = FromRaw(c.type, bytes.data() + 4);
        EXPECT_EQ(RawOf(*copy), bytes);
        EXPECT_TRUE(copy->GetJoint(0)->IsActive() && copy->GetJoint(1)->IsActive()) << "as constructed";
        EXPECT_EQ(copy->IsJointAllowed(0), component->IsJointAllowed(0));
        EXPECT_DOUBLE_EQ(copy->GetTrackLength(), component->GetTrackLength()) << "measured anew";
    }
}

TEST(Components, Descriptions)
{
    const struct {
        int type;
        const char* inMillimetres;
        const char* inInches;
    } cases[] = {{1, "Straight 200.5 mm", "Straight 7.89 \""},
                 {2, "Curve 22.5, R:437.5 mm", "Curve 22.5, R:17.22 \""},
                 {3, "Polygon (2)", "Polygon (2)"},
                 {4, "Yard", "Yard"},
                 {5, "Circle (R:12.5 mm)", "Circle (R:0.49 \")"},
                 {6, "Flex 850.5 mm", "Flex 33.48 \""}};
    for (const auto& c : cases) {
        const std::unique_ptr<CBasicGeometry> component(NewComponent(c.type));
        EXPECT_EQ(component->ToString(1), c.inMillimetres);
        EXPECT_EQ(component->ToString(3), c.inInches);
    }
}

TEST(Components, CopiesAndAssignment)
{
    for (const int type : kAllTypes) {
        SCOPED_TRACE(type);
        const std::unique_ptr<CBasicGeometry> source(NewComponent(type));
        CJoint partner;
        source->GetJoint(0)->ConnectToJoint(&partner);
        EXPECT_EQ(RawOf(*source->Clone()), RawOf(*source));
        CStraightBIG target;
        static_cast<CBasicGeometry&>(target) = *source;
        for (short i = 0; i < 2; ++i) {
            EXPECT_EQ(target.IsJointAllowed(i), source->IsJointAllowed(i));
            EXPECT_EQ(target.GetJoint(i)->IsActive(), source->IsJointAllowed(i)) << "free, whatever the source's";
            EXPECT_EQ(target.GetJointConnection(i), nullptr);
        }
        EXPECT_EQ(source->GetJointConnection(0), &partner);
        tBytes common = RawOf(target);
        tBytes expected = RawOf(*source);
        const size_t start = type == kFlexTrackType ? 8 : 4; // behind the polygon's code
        EXPECT_TRUE(std::equal(common.begin() + 4, common.begin() + 64, expected.begin() + static_cast<long>(start)));
    }
    CTextBIG text;
    const std::unique_ptr<CBasicGeometry> other(NewComponent(kTextType));
    text.MoveItemBy(7, 8);
    text = static_cast<CTextBIG&>(*other);
    EXPECT_EQ(text.GetText() + text.GetFontName() + std::to_string(text.GetTextSize()), "YardTimes36");
    EXPECT_EQ(text.GetItemXOffset(), 7.0) << "what all components have stays";
    text.EnableJoint(0);
    EXPECT_FALSE(CTextBIG(&text).IsJointAllowed(0));
    const std::unique_ptr<CBasicGeometry> poly(NewComponent(kPolyType));
    tBytes raw = RawOf(*poly);
    raw[raw.size() - 9] = 0; // the flag that no file has
    EXPECT_EQ(RawOf(*CPolyBIG(static_cast<void*>(raw.data() + 4)).Clone()), raw);
}
