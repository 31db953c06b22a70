#include "Layers/CLayer.h"
#include "Layers/CLayerNameResolver.h"
#include "Source/Elements/Elements.h"
#include "support/Fatal.h"

#include <cstring>

using testing::ElementsAre;

namespace {
/// Knows one layer; what was installed before comes back afterwards.
class COneLayer : public CLayerNameResolver {
public:
    COneLayer() { CLayer::ConfigureLayerNameResolver(this); }
    ~COneLayer() override { CLayer::ConfigureLayerNameResolver(mBefore); }
    CLayer* GetLayer(const char* name) override { return strcmp(name, mLayer.GetName()) == 0 ? &mLayer : nullptr; }

    CLayer mLayer{"Upper level"};

private:
    CLayerNameResolver* mBefore = CLayer::GetLayerNameResolver();
};

tBytes RawOf(CCompositeGeometry& element)
{
    tBytes bytes(static_cast<size_t>(element.GetParameterRawSize()));
    EXPECT_EQ(element.GetParameterAsRaw(bytes.data()), bytes.data() + bytes.size());
    return bytes;
}

template <typename tValue>
tValue At(const tBytes& bytes, size_t offset)
{
    tValue value;
    memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

} // namespace

TEST(Element, RawRecordFieldByField)
{
    COneLayer resolver;
    const tElement element = FullElement(kCurveType, &resolver.mLayer);
    const tBytes raw = RawOf(*element);
    ASSERT_EQ(raw.size(), 422u + 40 + 4 + 80);
    const auto text = [&raw](size_t offset) { return reinterpret_cast<const char*>(raw.data() + offset); };
    EXPECT_STREQ(text(0), "A2");
    EXPECT_STREQ(text(32), "Curve 22.5");
    EXPECT_STREQ(text(96), "Maker");
    EXPECT_STREQ(text(128), "Alpha");
    EXPECT_STREQ(text(256), "P");
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(At<int>(raw, 264 + 4 * static_cast<size_t>(i)), (i == 1 ? -1 : 1) * (11 + i));
    }
    EXPECT_EQ(tBytes(raw.begin() + 280, raw.begin() + 284), (tBytes{1, 0, 0, 0})) << "the filler is always 0";
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(At<double>(raw, 284 + 8 * static_cast<size_t>(i)), 1.25 + i);
        EXPECT_EQ(At<uint16_t>(raw, 344 + 2 * static_cast<size_t>(i)), 1 + i);
    }
    EXPECT_EQ(At<int>(raw, 332), -15);
    EXPECT_EQ(At<double>(raw, 336), 33.5);
    EXPECT_EQ(raw[356], 0);
    EXPECT_EQ(raw[357], 0);
    EXPECT_STREQ(text(358), "Upper level");
    const double grade[] = {1, 2, 100, 50, 7.5};
    EXPECT_EQ(memcmp(raw.data() + 422, grade, sizeof grade), 0);
    EXPECT_EQ(At<int>(raw, 462), 1);
    EXPECT_EQ(At<int>(raw, 466), 2) << "the curve's type code";

    tBytes memory = raw;
    CCompositeGeometry copy(static_cast<void*>(memory.data()));
    EXPECT_EQ(RawOf(copy), raw);
    EXPECT_EQ(copy.GetLayer(), &resolver.mLayer);
    EXPECT_NE(copy.GetUniqueID(), element->GetUniqueID());
    EXPECT_FALSE(copy.IsSelected());
    memset(memory.data() + 358, 'x', 64); // a name without end, of no layer
    EXPECT_EQ(CCompositeGeometry(static_cast<void*>(memory.data())).GetLayer(), nullptr);
}

TEST(Element, CopiesEverythingButTheID)
{
    COneLayer resolver;
    const tElement element = FullElement(kCurveType, &resolver.mLayer);
    const uint32_t next = CCompositeGeometry::sNextUniqueID;
    CCompositeGeometry copy(element.get());
    EXPECT_EQ(copy.GetUniqueID(), next);
    EXPECT_EQ(CCompositeGeometry().GetUniqueID(), next + 1) << "each construction uses up one";
    EXPECT_EQ(RawOf(copy), RawOf(*element));
    EXPECT_TRUE(copy.IsSelected());
    EXPECT_TRUE(copy.Equals(element.get()));
    copy.SetPosition(99, 99);
    EXPECT_TRUE(copy.Equals(element.get()));
    copy.SetName("a2");
    EXPECT_FALSE(copy.Equals(element.get()));
}

TEST(Element, ComponentsComeAndGo)
{
    CCompositeGeometry element;
    std::vector<CBasicGeometry*> all;
    for (int i = 0; i < 500; ++i) {
        all.push_back(NewComponent(kAllTypes[i % 6]));
        all.back()->SetMidRailFlag(i == 0 ? 3 : 0);
        element.AppendBIG(all.back());
        EXPECT_EQ(all.back()->GetMidRailFlag(), 3) << "all share that of the first";
    }
    const std::unique_ptr<CBasicGeometry> tooMany(NewComponent(kStraightType));
    element.AppendBIG(tooMany.get());
    EXPECT_EQ(element.GetNumberOfComponents(), 500u);
    EXPECT_EQ(tooMany->GetMidRailFlag(), -5) << "not touched";
    EXPECT_EQ(tooMany->GetJoint(0)->GetOwner(), nullptr);
    EXPECT_TRUE(element.GetBIGAtIndex(-1) == nullptr && element.GetBIGAtIndex(500) == nullptr);
    EXPECT_EQ(element.GetIndexOfBIG(tooMany.get()), -1);
    EXPECT_EQ(element.GetNumberOfTrackBIGs(), 84 + 84 + 83);
    element.DeleteBIG(500);
    element.DeleteBIG(0);
    const std::unique_ptr<CBasicGeometry> first(all[0]); // the caller's now
    EXPECT_EQ(first->GetJoint(1)->GetOwner(), nullptr);
    EXPECT_EQ(element.GetFirstTrackBIG(), all[1]);
    CBasicGeometry* fresh = NewComponent(kOvalType);
    element.ReplaceBIG(2, fresh);
    const std::unique_ptr<CBasicGeometry> replaced(all[3]);
    EXPECT_EQ(element.GetBIGAtIndex(2), fresh);
    EXPECT_EQ(fresh->GetJoint(0)->GetOwner(), &element);
    EXPECT_EQ(element.GetNumberOfComponents(), 499u);
}

TEST(Element, OwnsItsJointsHoweverItGotThem)
{
    CCompositeGeometry appended;
    for (const int type : kAllTypes) {
        appended.AppendBIG(NewComponent(type));
    }
    CCompositeGeometry copied(&appended);
    tBytes raw = RawOf(appended);
    CCompositeGeometry pasted(static_cast<void*>(raw.data()));
    for (CCompositeGeometry* element : {&appended, &copied, &pasted}) {
        ASSERT_EQ(element->GetNumberOfComponents(), 6u);
        for (CBasicGeometry* component : element->GetComponents()) {
            EXPECT_EQ(component->GetJoint(0)->GetOwner(), element);
            EXPECT_EQ(component->GetJoint(1)->GetOwner(), element);
        }
    }
    // Allowed are joint 0 of the straight, joint 1 of the curve, both of the flexible track.
    std::vector<CJoint*> joints;
    const auto joint = [&appended](short component, int i) { return appended.GetBIGAtIndex(component)->GetJoint(i); };
    appended.GetJoints(joints, false, true);
    EXPECT_THAT(joints, ElementsAre(joint(0, 0), joint(1, 1), joint(5, 0), joint(5, 1)));
    CJoint partner;
    joint(1, 1)->ConnectToJoint(&partner);
    appended.GetBIGAtIndex(5)->DisableJoint(0);
    appended.GetJoints(joints, false, false);
    EXPECT_THAT(joints, ElementsAre(joint(0, 0), joint(5, 1))) << "free ones";
}

TEST(Element, ScalesAllThatIsDrawnAndNoFartherThanADocumentReaches)
{
    CCompositeGeometry element;
    for (const int type : kAllTypes) {
        element.AppendBIG(NewComponent(type));
    }
    CBasicGeometry* poly = element.GetBIGAtIndex(2);
    CBasicGeometry* circle = element.GetBIGAtIndex(4);
    circle->SetTrackbedWidth(20);
    element.SetGrade(CGradeVector({1, 2, 0}, {100, 50, 0}, 7.5));
    element.Scale(2.5);
    EXPECT_EQ(poly->GetLineThickness(), 10);
    EXPECT_EQ(circle->GetLineThickness(), 8);
    EXPECT_EQ(circle->GetTrackbedWidth(), 50.0);
    element.Scale(0.01);
    EXPECT_EQ(poly->GetLineThickness(), 1) << "still drawn";
    for (int i = 0; i < 40; ++i) {
        element.Scale(1e9);
    }
    tBytes raw = RawOf(element);
    CCompositeGeometry clamped(static_cast<void*>(raw.data())); // brings everything within reach
    EXPECT_EQ(RawOf(clamped), raw);
}
