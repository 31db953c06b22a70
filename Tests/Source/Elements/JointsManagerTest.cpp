#include "Layouts/CLayoutJointsManager.h"
#include "Preferences/CVLPreferences.h"
#include "Source/Elements/Elements.h"
#include "support/Random.h"

#include <algorithm>

using testing::ElementsAre;

namespace {
bool Fit(const CJoint& a, const CJoint& b)
{
    const CPoint between = a.GetPosition() - b.GetPosition();
    return std::fabs(between.x) <= 0.5 && std::fabs(between.y) <= 0.5 && std::fabs(between.z) <= 0.5 &&
           a.AppropriateAngleForConnection(b);
}

/// The register lives as long as the process: each test leaves it empty, and the radius as it was.
class CLayoutJointsManagerRegister : public testing::Test {
protected:
    ~CLayoutJointsManagerRegister() override
    {
        for (const tElement& element : mElements) {
            mManager->RemoveJointsForItem(element.get());
        }
        EXPECT_EQ(mManager->FindJointClosestToPoint(CPoint::ZeroPos), nullptr);
        CVLPreferences::Instance()->mSnapLimit = 135;
        mManager->SetSnapRadius(16.5);
    }

    /// A registered joint of an element of its own, or of the last one.
    CJoint* Add(const CPoint& position, double angle, bool ofTheLast = false)
    {
        if (!ofTheLast) {
            mElements.push_back(NewElement(kFlexTrackType));
        }
        CJoint* joint = mElements.back()->GetBIGAtIndex(0)->GetJoint(ofTheLast ? 1 : 0);
        joint->GetPosition() = position;
        joint->SetAngle(angle);
        mManager->InsertJoint(joint);
        return joint;
    }

    CLayoutJointsManager* mManager = CLayoutJointsManager::Instance();
    std::vector<tElement> mElements;
};
} // namespace

TEST_F(CLayoutJointsManagerRegister, SnapsWhatLiesOnEachOther)
{
    const struct {
        const char* what;
        CPoint place;
        double angle;
        bool sameElement;
        bool snaps;
    } cases[] = {{"half a millimetre each way", {0.5, 0.5, 0.5}, 180, false, true},
                 {"too far in x", {0.5000001, 0, 0}, 180, false, false},
                 {"too far in y", {0, -0.5000001, 0}, 180, false, false},
                 {"too far in z", {0, 0, 0.5000001}, 180, false, false},
                 {"of the same element", {0, 0, 0}, 180, true, false},
                 {"turned by 0.02 degrees", {0, 0, 0}, 180.02, false, false},
                 {"turned by 0.005 degrees", {0, 0, 0}, -180.005, false, true},
                 {"side by side", {0, 0, 0}, 0, false, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CJoint* a = Add(CPoint::ZeroPos, 0);
        CJoint* b = Add(c.place, c.angle, c.sameElement);
        CLayoutJointsManager::SnapCloseJoints();
        EXPECT_EQ(a->GetPartner(), c.snaps ? b : nullptr);
        EXPECT_EQ(mManager->GetNumberOfSnappedJoints(), c.snaps ? 2 : 0);
        EXPECT_EQ(mManager->RemoveJointsForItem(a->GetOwner()), c.sameElement ? 2 : 1);
        EXPECT_TRUE(b->IsActive()) << "freed with its partner";
        EXPECT_EQ(mManager->RemoveJointsForItem(b->GetOwner()), c.sameElement ? 0 : 1);
    }
}

TEST_F(CLayoutJointsManagerRegister, SnapsEachJointOnceInAscendingX)
{
    // All face both of the others' ways only in pairs: 0 and 180.
    CJoint* third = Add({0.2, 0, 0}, 180);
    CJoint* first = Add({0, 0, 0}, 0);
    CJoint* second = Add({0.1, 0, 0}, 180);
    CLayoutJointsManager::SnapCloseJoints();
    EXPECT_EQ(first->GetPartner(), second);
    EXPECT_TRUE(third->IsActive());
    CLayoutJointsManager::SnapCloseJoints();
    EXPECT_TRUE(third->IsActive()) << "those that are taken stay together";
    mManager->DisconnectAllJoints();
    third->GetPosition().x = second->GetPosition().x = 0; // equal x: the order of the register
    CLayoutJointsManager::SnapCloseJoints();
    EXPECT_EQ(first->GetPartner(), third);
}

TEST_F(CLayoutJointsManagerRegister, LeavesNoTwoThatFitApart)
{
    CRandom random(61);
    for (int i = 0; i < 400; ++i) {
        const bool ofTheLast = i % 3 == 1;
        Add({random.Below(40) * 0.25, random.Below(8) * 0.25, random.Below(3) * 0.4}, 90.0 * random.Below(4),
            ofTheLast);
    }
    CLayoutJointsManager::SnapCloseJoints();
    std::vector<CJoint*> registered;
    mManager->SetSnapRadius(1000);
    mManager->FindAllJointsCloseToPoint(CPoint::ZeroPos, registered);
    ASSERT_EQ(registered.size(), 400u);
    int snapped = 0;
    for (const CJoint* a : registered) {
        for (const CJoint* b : registered) {
            const bool fits = a->GetOwner() != b->GetOwner() && Fit(*a, *b);
            EXPECT_FALSE(a->IsActive() && b->IsActive() && fits);
            EXPECT_EQ(a->GetPartner() == b, b->GetPartner() == a);
            EXPECT_TRUE(fits || a->GetPartner() != b);
            snapped += a->GetPartner() == b ? 1 : 0;
        }
    }
    EXPECT_EQ(mManager->GetNumberOfSnappedJoints(), snapped);
    EXPECT_GT(snapped, 200);
}

TEST_F(CLayoutJointsManagerRegister, FindsJointsAroundAPoint)
{
    mManager->SetSnapRadius(1.0);
    EXPECT_EQ(mManager->GetSnapRadius(), 2.5) << "no smaller";
    CJoint* high = Add({0, 0, 50}, 0);
    CJoint* edge = Add({3.5, 3.5, 0}, 0);
    Add({3.6, 0, 0}, 0);
    CJoint* alike = Add({-3.5, -3.5, 0}, 0);
    std::vector<CJoint*> found = {nullptr};
    mManager->FindAllJointsCloseToPoint(CPoint::ZeroPos, found);
    EXPECT_THAT(found, ElementsAre(nullptr, high, edge, alike)) << "appended; height does not count";
    EXPECT_EQ(mManager->FindJointClosestToPoint(CPoint::ZeroPos), edge) << "here it does; of two the earlier";
    EXPECT_EQ(mManager->FindJointClosestToPoint({0, 0, 48}), high);
}

TEST_F(CLayoutJointsManagerRegister, FindsAFreePartnerForAJoint)
{
    CJoint loose;
    loose.SetAngle(0);
    Add({0, 0, 0}, 180);
    Add({1, 0, 0}, 315.5); // 135.5 degrees off: beyond what the user allows
    CJoint* last = Add({1, 1, 0}, 90);
    Add({500, 0, 0}, 180);
    EXPECT_EQ(mManager->FindUnsnappedJointCloseToJoint(&loose), 2) << "the last that fits";
    EXPECT_EQ(mManager->FindUnsnappedJointCloseToJoint(last), 1) << "itself looks the same way";
    CVLPreferences::Instance()->mSnapLimit = 10;
    const struct {
        double a, b;
        bool valid;
    } cases[] = {{0, 190, true},  {0, 170, true},   {0, 190.5, false}, {0, 169.5, false},
                 {-175, 0, true}, {720, 180, true}, {0, 0, false}};
    for (const auto& c : cases) {
        CJoint a;
        CJoint b;
        a.SetAngle(c.a);
        b.SetAngle(c.b);
        EXPECT_EQ(mManager->IsRotationValidForSnap(&a, &b), c.valid) << c.a << " and " << c.b;
    }
}
