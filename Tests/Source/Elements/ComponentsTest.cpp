#include "CTaggedFile/CTaggedFile.h"
#include "Source/Elements/Elements.h"

#include <cstring>

namespace {
/// Writes what the tests expect: fields of raw memory in host order, records of files big-endian.
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
    /// Key and size, then the bytes as they stand.
    CExpected& Record(int key, const std::vector<int>& data)
    {
        for (const int value : {key >> 8, key, static_cast<int>(data.size()) >> 8, static_cast<int>(data.size())}) {
            mBytes.push_back(static_cast<unsigned char>(value));
        }
        for (const int value : data) {
            mBytes.push_back(static_cast<unsigned char>(value));
        }
        return *this;
    }
    CExpected& Int(int key, int value) { return Record(key, {value >> 24, value >> 16, value >> 8, value}); }
    /// An integer part and a fraction in units of 1e-7, both with the value's sign.
    CExpected& Number(int key, int whole, int fraction)
    {
        return Record(key, {whole >> 24, whole >> 16, whole >> 8, whole, fraction >> 24, fraction >> 16, fraction >> 8,
                            fraction});
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

tBytes SavedBytes(CBasicGeometry& component)
{
    const tFile file = NewFile();
    component.Save(file.get());
    tBytes bytes(static_cast<size_t>(ftell(file.get())));
    rewind(file.get());
    EXPECT_EQ(fread(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
    return bytes;
}

/// Key 300 and the common block of NewComponent's components.
CExpected Common(int type, int gauge, int gaugeFraction, int trackbed, bool joint0, bool joint1)
{
    CExpected bytes;
    bytes.Int(300, type).Number(301, 1, 5000000).Number(302, -2, -2500000).Number(303, gauge, gaugeFraction);
    bytes.Number(304, 30, 0).Record(305, {joint0}).Record(306, {joint1}).Number(307, trackbed, 0);
    return bytes.Number(308, 0, 7500000).Int(309, -5).Record(310, {0, 1, 0, 2, 0xFF, 3});
}

CExpected RawCommon(int type, double gauge, double trackbed, bool joint0, bool joint1)
{
    CExpected bytes;
    bytes.Raw(type).Raw(1.5).Raw(-2.25).Raw(gauge).Raw(30.0).Raw(joint0).Raw(joint1).Raw(trackbed).Raw(0.75);
    return bytes.Raw(-5).Raw(uint16_t{1}).Raw(uint16_t{2}).Raw(uint16_t{0xFF03});
}

std::unique_ptr<CBasicGeometry> FromRaw(int type, void* raw)
{
    switch (type) {
    case kStraightType:
        return std::make_unique<CStraightBIG>(raw);
    case kCurveType:
        return std::make_unique<CCurveBIG>(raw);
    case kPolyType:
        return std::make_unique<CPolyBIG>(raw);
    case kTextType:
        return std::make_unique<CTextBIG>(raw);
    case kOvalType:
        return std::make_unique<COvalBIG>(raw);
    default:
        return std::make_unique<CFlexTrackBIG>(raw);
    }
}
} // namespace

TEST(Components, FileRecordsByteForByte)
{
    CExpected straight = Common(1, 16, 5000000, 40, true, false);
    straight.Number(311, 200, 5000000);
    CExpected curve = Common(2, 16, 5000000, 40, false, true);
    curve.Number(312, 437, 5000000).Number(313, 22, 5000000);
    CExpected poly = Common(3, 0, 0, 40, false, false);
    poly.Int(318, 2).Number(319, 0, 0).Number(320, 0, 0).Number(319, 10, 5000000).Number(320, -3, 0);
    poly.Record(321, {0}).Int(322, 7).Int(323, 4);
    std::vector<int> font(256);
    std::copy_n("Arial", 5, font.begin());
    CExpected text = Common(4, 0, 0, 0, false, false);
    text.Int(324, 36).Int(325, 0).Record(326, font).Record(327, {'Y', 'a', 'r', 'd', 0});
    CExpected circle = Common(5, 0, 0, 0, false, false);
    circle.Number(315, 12, 5000000).Number(316, 12, 5000000).Int(317, 3);
    CExpected flex;
    flex.Int(300, 6); // the polygon's record follows with a code of its own
    const tBytes polygonOfFlex = [] {
        CExpected bytes = Common(3, 0, 0, 40, true, true);
        bytes.Int(318, 2).Number(319, 0, 0).Number(320, 0, 0).Number(319, 10, 5000000).Number(320, -3, 0);
        return bytes.Record(321, {1}).Int(322, 1).Int(323, 1).Bytes();
    }();
    flex.Text({polygonOfFlex.begin(), polygonOfFlex.end()}).Number(314, 850, 5000000);
    const struct {
        int type;
        const CExpected& expected;
    } cases[] = {{1, straight}, {2, curve}, {3, poly}, {4, text}, {5, circle}, {6, flex}};
    CReports reports;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        const std::unique_ptr<CBasicGeometry> component(NewComponent(c.type));
        EXPECT_EQ(component->GetType(), c.type);
        EXPECT_EQ(SavedBytes(*component), c.expected.Bytes());
    }
    EXPECT_THAT(TakeWarnings(reports), testing::ElementsAre("No saving fontnames yet!"));
    CPolyBIG none;
    const tBytes bytes = SavedBytes(none);
    EXPECT_EQ(bytes.size(), 8u + 100 + 8 + 5 + 8 + 8) << "a count and no points";
}

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

TEST(Components, LoadsWhatItSaved)
{
    CReports reports;
    for (const int type : kAllTypes) {
        SCOPED_TRACE(type);
        for (const int version : {2, 3, 4, 5}) {
            const std::unique_ptr<CBasicGeometry> component(NewComponent(type));
            const tFile file = NewFile();
            component->Save(file.get());
            rewind(file.get());
            int code = 0;
            CTaggedFile(file.get()).Read(300, code);
            EXPECT_EQ(code, type);
            TakeWarnings(reports);
            std::unique_ptr<CBasicGeometry> loaded;
            const tBytes blank(200);
            loaded = FromRaw(type, const_cast<unsigned char*>(blank.data())); // every field is 0 or empty
            if (version == 3 || version == 4) {
                EXPECT_TRUE(loaded->Load(file.get(), version));
                tBytes expected = RawOf(*component);
                if (type == kTextType) {
                    EXPECT_EQ(static_cast<CTextBIG&>(*loaded).GetFontName(), "rial") << "the A was read as a length";
                    static_cast<CTextBIG&>(*component).SpecifyTextGeometry("Yard", "rial", 36);
                    expected = RawOf(*component);
                } else if (IsPolygonType(type)) {
                    // The second flag is stored in raw memory alone; here it was read as 0.
                    expected[expected.size() - (type == kPolyType ? 9 : 17)] = 0;
                }
                EXPECT_EQ(RawOf(*loaded), expected);
                EXPECT_EQ(loaded->GetJoint(0)->IsActive(), component->IsJointAllowed(0));
                EXPECT_EQ(loaded->GetJoint(1)->IsActive(), component->IsJointAllowed(1));
                EXPECT_EQ(fgetc(file.get()), EOF);
            } else {
                EXPECT_FALSE(loaded->Load(file.get(), version));
                std::vector<std::string> expected;
                for (const char* reader : {"CBasicGeometry", "CPolyBIG", "CFlexTrackBIG"}) {
                    expected.push_back("virtual bool " + std::string(reader) + "::Load(FILE *, int): Unsupported " +
                                       "file format (version " + std::to_string(version) + ")");
                }
                expected.resize(type == kFlexTrackType ? 3 : type == kPolyType ? 2 : 1);
                EXPECT_EQ(TakeWarnings(reports), expected);
            }
        }
    }
    const std::unique_ptr<CBasicGeometry> poly(NewComponent(kPolyType));
    const tFile file = NewFile();
    poly->Save(file.get());
    rewind(file.get());
    CPolyBIG loaded;
    ASSERT_TRUE(loaded.Load(file.get(), 4));
    EXPECT_EQ(static_cast<CPolyBIG&>(*poly).GetPoint(1).z, 9.0);
    EXPECT_EQ(loaded.GetPoint(1).z, 0.0) << "heights are not stored";
    EXPECT_EQ(loaded.GetPoint(1).x, 10.5);
    EXPECT_EQ(loaded.GetPoint(2).x, 0.0);
    EXPECT_EQ(loaded.GetPoint(-1).x, 0.0);
}

TEST(Components, Descriptions)
{
    const struct {
        int type;
        const char* texts[4]; // in mm, cm, inch, foot
    } cases[] = {
        {1, {"Straight 200.5 mm", "Straight 20.1 cm", "Straight 7.89 \"", "Straight 0.66 Ft"}},
        {2, {"Curve 22.5, R:437.5 mm", "Curve 22.5, R:43.8 cm", "Curve 22.5, R:17.22 \"", "Curve 22.5, R:1.44 Ft"}},
        {3, {"Polygon (2)", "Polygon (2)", "Polygon (2)", "Polygon (2)"}},
        {4, {"Yard", "Yard", "Yard", "Yard"}},
        {5, {"Circle (R:12.5 mm)", "Circle (R:1.2 cm)", "Circle (R:0.49 \")", "Circle (R:0.04 Ft)"}},
        {6, {"Flex 850.5 mm", "Flex 85.0 cm", "Flex 33.48 \"", "Flex 2.79 Ft"}}};
    for (const auto& c : cases) {
        const std::unique_ptr<CBasicGeometry> component(NewComponent(c.type));
        for (int unit = 1; unit <= 4; ++unit) {
            EXPECT_EQ(component->ToString(unit), c.texts[unit - 1]);
        }
    }
    CCurveBIG curve;
    EXPECT_EQ(curve.ToString(1), "Curve 15.0, R:360.0 mm");
    EXPECT_DOUBLE_EQ(curve.GetTrackLength(), 94.24777960769379);
    curve.SpecifyCurveGeometry(0, 0, 360, 7.5, 0, 0, 0, true, true);
    EXPECT_EQ(curve.ToString(1), "Curve  7.5, R:360.0 mm");
}

TEST(Components, CopiesAndAssignment)
{
    for (const int type : kAllTypes) {
        SCOPED_TRACE(type);
        const std::unique_ptr<CBasicGeometry> source(NewComponent(type));
        CJoint partner;
        source->GetJoint(0)->ConnectToJoint(&partner);
        CCompositeGeometry element;
        element.AppendBIG(NewComponent(type)); // its copying constructor is the element's business
        const CCompositeGeometry copied(&element);
        const CBasicGeometry* copy = copied.GetBIGAtIndex(0);
        EXPECT_EQ(RawOf(const_cast<CBasicGeometry&>(*copy)), RawOf(*source));
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
    EXPECT_FALSE(text.IsJointAllowed(0) || text.GetJoint(0)->IsActive());
    const std::unique_ptr<CBasicGeometry> other(NewComponent(kTextType));
    text.MoveItemBy(7, 8);
    text = static_cast<CTextBIG&>(*other);
    EXPECT_EQ(text.GetText() + text.GetFontName() + std::to_string(text.GetTextSize()), "YardTimes36");
    EXPECT_EQ(text.GetItemXOffset(), 7.0) << "what all components have stays";
    text.EnableJoint(0);
    EXPECT_FALSE(CTextBIG(&text).IsJointAllowed(0));
    text.SetText("");
    EXPECT_EQ(text.ToString(3), " ");
    const std::unique_ptr<CBasicGeometry> poly(NewComponent(kPolyType));
    tBytes raw = RawOf(*poly);
    raw[raw.size() - 9] = 0; // the flag that no file has
    CPolyBIG unflagged(static_cast<void*>(raw.data() + 4));
    CPolyBIG again(&unflagged);
    EXPECT_EQ(RawOf(again), raw);
    EXPECT_EXIT(text.SetText(nullptr), testing::ExitedWithCode(0), "CTextBIG::SetText.*(\n.*)*No text supplied");
    EXPECT_EXIT(CStraightBIG(static_cast<CStraightBIG*>(nullptr)), testing::ExitedWithCode(0),
                "CBasicGeometry::CBasicGeometry.CBasicGeometry .*(\n.*)*Invalid input parameter for copy constructor");

    std::vector<CJoint*> joints = {nullptr, nullptr, nullptr};
    text.GetJoints(CPoint::ZeroPos, 0, CGradeVector::ZeroGrade, joints, false);
    EXPECT_THAT(joints, testing::ElementsAre(text.GetJoint(0), text.GetJoint(1))) << "disabled ones included";
}
