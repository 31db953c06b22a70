#include "Source/Geometry/Shapes.h"
#include "Utilities/Geometry/UBezier.h"

#include <algorithm>
#include <functional>

namespace {
/// Adds a polygon to a new element that is turned and moved; the polygon is turned as well.
std::unique_ptr<CCompositeGeometry> InTurnedElement(CPolyBIG* poly, CRandomShapes& random)
{
    auto element = std::make_unique<CCompositeGeometry>();
    element->AppendBIG(poly);
    element->SetPosition(random.Between(-500, 500), random.Between(-500, 500));
    element->RotateBy(random.Between(-360, 360));
    return element;
}

/// Where all points lie in the layout.
std::vector<CPoint> Places(const CCompositeGeometry& element, const CPolyBIG& poly)
{
    std::vector<CPoint> places;
    for (int i = 0; i < poly.GetNumberOfPoints(); ++i) {
        CPoint place;
        EXPECT_TRUE(poly.GetScaledRotatedPoint(place, i, 1.0));
        places.push_back(place + element.GetPosition());
        places.back().z = 0.0;
    }
    return places;
}

CPolyBIG* Line(const std::vector<CPoint>& points)
{
    CPolyBIG* line = new CPolyBIG;
    line->SpecifyPolyGeometry(0, 0, points, 0, 1, 1);
    line->SetPolyCloseFlag(false);
    return line;
}
} // namespace

TEST(Editing, OnePointIsEditedAndTheOthersStay)
{
    CRandomShapes random(51);
    for (int i = 0; i < 120; ++i) {
        SCOPED_TRACE(i);
        const bool isFlex = i % 3 == 0;
        auto poly = std::make_unique<CPolyBIG>();
        const auto points = random.Points(2 + random.Below(6), 200);
        if (isFlex) {
            auto flex = std::make_unique<CFlexTrackBIG>();
            flex->SpecifyFlexGeometry(30, 40, points, random.Between(-360, 360), 30, 1e6);
            poly = std::move(flex);
        } else {
            poly->SpecifyPolyGeometry(30, 40, points, random.Between(-360, 360), 1, 1);
            poly->SetPolyCloseFlag(i % 3 == 1);
        }
        CPolyBIG& line = *poly;
        const auto element = InTurnedElement(poly.release(), random);
        auto places = Places(*element, line);
        const int last = line.GetNumberOfPoints() - 1;

        const int at = random.Below(last + 1);
        ASSERT_TRUE(line.InsertPointAfter(at));
        auto after = Places(*element, line);
        const CPoint inserted = after[static_cast<size_t>(at) + 1];
        after.erase(after.begin() + at + 1);
        ExpectSamePlaces(after, places);
        if (!isFlex || at == last) { // on a flexible track it lies on the curve
            const CPoint& from = places[static_cast<size_t>(at)];
            const CPoint& to = places[at < last ? static_cast<size_t>(at) + 1 : 0];
            const bool isBetween = at < last || i % 3 == 1;
            ExpectSamePlace(inserted,
                            isBetween ? (from + to) * 0.5 : from + (from - places[static_cast<size_t>(at) - 1]) * 0.5);
        }
        ASSERT_TRUE(line.DelPoint(at + 1));
        ExpectSamePlaces(Places(*element, line), places);
        ASSERT_TRUE(line.InsertPointBefore(at));
        ASSERT_TRUE(line.DelPoint(at));
        ExpectSamePlaces(Places(*element, line), places);

        const CPoint extra = random.Points(1, 900)[0];
        ASSERT_TRUE(line.InsertPointAtIdx(at, extra));
        ExpectSamePlace(line.GetPoint(at), extra);
        ASSERT_TRUE(line.RestrictPolyPoint("d"));
        const CPoint& neighbour = line.GetPoint(at > 0 ? at - 1 : 1);
        const double direction = DirectionFrom(neighbour, line.GetPoint(at));
        EXPECT_LE(AngleBetween(direction, std::round(direction / 45.0) * 45.0), kTolerance);
        EXPECT_LE(AngleBetween(direction, DirectionFrom(neighbour, extra)), 22.5 + kTolerance);
        ASSERT_TRUE(line.RestrictPolyPoint("h"));
        EXPECT_EQ(line.GetPoint(at).y, neighbour.y);
        ASSERT_TRUE(line.DelPoint(at));
        ExpectSamePlaces(Places(*element, line), places);

        // Neither of these moves anything, and the points are those of an unturned polygon afterwards.
        line.Normalize();
        ExpectSamePlaces(Places(*element, line), places);
        EXPECT_EQ(line.GetAngle(), 0.0);
        line.RoundPointPositions();
        for (size_t k = 0; k < places.size(); ++k) {
            EXPECT_EQ(line.GetPoints()[k].x, std::round(line.GetPoints()[k].x));
            EXPECT_LE(Places(*element, line)[k].CalcDistance2D(places[k]), std::sqrt(0.5) + kTolerance);
        }
        const std::vector<CPoint> unmirrored = line.GetPoints();
        line.MirrorPointsHorizontally();
        line.MirrorPointsVertically(); // both: turned by 180 degrees
        ExpectSamePlace(line.GetPoint(0) - line.GetPoint(1), unmirrored[1] - unmirrored[0]);

        // What is not there cannot be edited.
        CPoint place(1, 2, 3);
        for (const int wrong : {-1, line.GetNumberOfPoints() + 1, 1 << 30}) {
            EXPECT_FALSE(line.InsertPointBefore(wrong) || line.InsertPointAfter(wrong) ||
                         line.InsertPointAtIdx(wrong, {}) || line.DelPoint(wrong) ||
                         line.GetScaledRotatedPoint(place, wrong, 2.0));
        }
        while (line.GetNumberOfPoints() > 2) {
            EXPECT_TRUE(line.DelPoint(0));
        }
        EXPECT_FALSE(line.DelPoint(0));
    }
}

TEST(Editing, NoEditMakesAFlexibleTrackLongerThanItsMaximum)
{
    CRandomShapes random(53);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        const double most = random.Between(300, 900);
        std::vector<CPoint> points = {{0, 0, 0}};
        for (int k = 0; k < 4; ++k) {
            points.push_back(points.back() + CPoint(most / 5, random.Between(-20, 20), 0));
        }
        CFlexTrackBIG flex;
        flex.SpecifyFlexGeometry(0, 0, points, 0, 30, most);
        ASSERT_LT(flex.GetTrackLength(), most);
        CFlexTrackBIG full;
        full.SpecifyFlexGeometry(0, 0, points, 0, 30, UBezier::Length(points));
        const int at = random.Below(4);
        ASSERT_TRUE(i % 2 == 0 ? full.InsertPointAfter(at) : full.InsertPointBefore(at + 1));
        ExpectSamePlace(full.GetPoint(0), points[0]);
        ExpectSamePlace(full.GetPoint(5), points[4]);
        // Pulling one end draws that end back, in the direction in which it was pulled; the rest stays.
        const bool pullsFirst = random.Bool();
        std::vector<CPoint> pulled = points;
        (pullsFirst ? pulled.front() : pulled.back()).MoveBy(pullsFirst ? -most : most, random.Between(-99, 99), 0);
        EXPECT_TRUE(flex.SetPoints(pulled));
        EXPECT_NEAR(flex.GetTrackLength(), most, most * 1e-3);
        EXPECT_LE(flex.GetTrackLength(), most * (1 + 2e-6));
        ASSERT_EQ(flex.GetNumberOfPoints(), 5);
        for (size_t k = pullsFirst ? 1 : 0; k < (pullsFirst ? 5u : 4u); ++k) {
            ExpectSamePlace(flex.GetPoints()[k], points[k]);
        }
        // Bending the middle draws the last end back, and so does whatever is added.
        std::vector<CPoint> bent = flex.GetPoints();
        bent[2].MoveBy(0, 80, 0);
        EXPECT_TRUE(flex.SetPoints(bent));
        ExpectSamePlace(flex.GetPoint(0), bent[0]);
        flex.AddPoint(flex.GetPoint(flex.GetNumberOfPoints() - 1) + CPoint(500, 0, 0));
        flex.InsertPointBefore(0);
        flex.InsertPointAtIdx(1, random.Point(300));
        EXPECT_LE(flex.GetTrackLength(), most * (1 + 1e-5));
        CFlexTrackBIG other;
        other.SpecifyFlexGeometry(0, 0, {{900, 0, 0}, {900, 300, 0}}, 0, 30, most);
        const std::vector<CPoint> before = flex.GetPoints();
        EXPECT_FALSE(flex.Merge(&other));
        ExpectSamePlaces(flex.GetPoints(), before);
    }
    // One that is already longer may be edited, but does not grow.
    CFlexTrackBIG longer;
    longer.SpecifyFlexGeometry(0, 0, {{0, 0, 0}, {500, 0, 0}, {1000, 0, 0}}, 0, 30, 400);
    longer.AddPoint({1500, 0, 0});
    EXPECT_NEAR(longer.GetTrackLength(), 1000, 0.01);
    longer.SetPoints({{0, 0, 0}, {700, 0, 0}});
    EXPECT_NEAR(longer.GetTrackLength(), 700, kTolerance);
}

TEST(Editing, AConnectedTrackStaysWithItsNeighboursOrLetsGo)
{
    CRandomShapes random(55);
    for (int i = 0; i < 120; ++i) {
        SCOPED_TRACE(i);
        // A track of nearly its full length, with a neighbour at its first end, its last, or both.
        auto flex = std::make_unique<CFlexTrackBIG>();
        CFlexTrackBIG& track = *flex;
        const std::vector<CPoint> points = {{0, 0, 0}, {150, random.Between(-30, 30), 0}, {300, 0, 0}, {450, 30, 0}};
        flex->SpecifyFlexGeometry(0, 0, points, 0, 30, UBezier::Length(points) + random.Between(0, 0.5));
        const double most = track.GetFlexTrackMaxLength() * (1 + 1e-5);
        const auto element = InTurnedElement(flex.release(), random);
        CCompositeGeometry neighbours[2];
        for (int k = 0; k < 2; ++k) {
            neighbours[k].AppendBIG(RandomComponent(random, kStraightType).release());
            neighbours[k].AlignComponentJointOnPoint(0, k, track.GetJoint(k)->GetPosition());
            if (i % 3 != k) {
                track.GetJoint(k)->ConnectToJoint(neighbours[k].GetBIGAtIndex(0)->GetJoint(k));
            }
        }
        const auto before = Places(*element, track);
        const auto expectStays = [&] {
            const auto after = Places(*element, track);
            for (int k = 0; k < 2; ++k) {
                EXPECT_EQ(track.GetJoint(k)->GetPartner() != nullptr, i % 3 != k);
                if (i % 3 != k) {
                    ExpectSamePlace(k == 0 ? after.front() : after.back(), k == 0 ? before.front() : before.back());
                }
            }
            EXPECT_LE(track.GetTrackLength(), most);
        };
        const int middle = 1 + random.Below(2);
        const CPoint far = track.GetPoint(middle) + CPoint(0, i % 2 == 0 ? 200 : -200, 0);
        track.InsertPointAtIdx(middle, far); // refused where both ends are held
        expectStays();
        if (i % 3 == 2) {
            ASSERT_EQ(track.GetNumberOfPoints(), 4);
            ASSERT_TRUE(track.InsertPointAfter(middle));
            ASSERT_TRUE(track.RestrictPolyPoint("v"));
            ASSERT_TRUE(track.DelPoint(middle + 1));
            expectStays();
        } else {
            EXPECT_GT(track.GetTrackLength(), most * 0.9);
        }
        // Whatever is done to it, joints that are still connected lie on each other.
        const std::function<void()> edits[] = {
            [&] { track.DelPoint(random.Below(track.GetNumberOfPoints())); },
            [&] { track.AddPoint(random.Point(500)); },
            [&] { track.SetPoints(random.Points(3, 300)); },
            [&] { track.InsertPointBefore(0); },
            [&] { track.MirrorPointsVertically(); },
            [&] { track.Normalize(); },
            [&] { static_cast<CBasicGeometry&>(track).SetAngle(random.Between(-9, 9)); },
            [&] { track.SpecifyFlexGeometry(9, 9, points, 0, 30, 900); },
        };
        edits[i % 8]();
        element->DefineAllJoints();
        for (int k = 0; k < 2; ++k) {
            CJoint& joint = *track.GetJoint(k);
            CJoint& neighbour = *neighbours[k].GetBIGAtIndex(0)->GetJoint(k);
            neighbours[k].DefineAllJoints();
            EXPECT_EQ(joint.GetPartner() != nullptr, neighbour.GetPartner() == &joint);
            EXPECT_EQ(joint.IsActive(), joint.GetPartner() == nullptr);
            EXPECT_TRUE(joint.GetPartner() == nullptr || joint.LiesAt(neighbour));
        }
    }
}

TEST(Editing, ARestrictionMovesThePointOfTheLastEditAndNoOther)
{
    const std::unique_ptr<CPolyBIG> line(Line({{0, 0, 0}, {100, 5, 0}, {100, 5, 0}, {100, 100, 0}, {0, 100, 0}}));
    EXPECT_FALSE(line->RestrictPolyPoint("h")); // none was edited
    ASSERT_TRUE(line->InsertPointAtIdx(4, {90, 90, 0}));
    EXPECT_FALSE(line->RestrictPolyPoint("H") || line->RestrictPolyPoint("hv") || line->RestrictPolyPoint(""));
    line->MirrorPointsHorizontally();
    ASSERT_TRUE(line->DelPoint(0));
    std::vector<CPoint> points = line->GetPoints();
    ASSERT_TRUE(line->RestrictPolyPoint("h"));
    points[3].y = points[2].y;
    ExpectSamePlaces(line->GetPoints(), points);
    ASSERT_TRUE(line->DelPoint(3));
    EXPECT_FALSE(line->RestrictPolyPoint("h"));
}

TEST(Editing, AMergedTrackGoesOnWhereTheOtherDid)
{
    CRandomShapes random(57);
    for (int i = 0; i < 8; ++i) {
        SCOPED_TRACE(i);
        const bool isBehind = i % 2 == 0;
        const bool runsBack = i % 4 < 2; // the other one, which is absorbed
        const bool isNear = i < 4;       // what follows lies where that one ends
        std::vector<CPoint> theirs = {{200, 0, 0}, {300, 40, 0}, {400, 0, 0}};
        std::vector<CPoint> ours = {{0, 0, 0}, {200, 0, 0}};
        if (runsBack) {
            std::reverse(theirs.begin(), theirs.end());
        }
        if (!isBehind) {
            std::reverse(ours.begin(), ours.end());
        }
        CFlexTrackBIG& mine = *new CFlexTrackBIG;
        CFlexTrackBIG& absorbed = *new CFlexTrackBIG;
        mine.SpecifyFlexGeometry(0, 0, ours, 0, 30, 900);
        absorbed.SpecifyFlexGeometry(0, 0, theirs, 0, 30, 900);
        CCompositeGeometry elements[3];
        elements[0].AppendBIG(&mine);
        elements[1].AppendBIG(&absorbed);
        elements[2].AppendBIG(RandomComponent(random, kStraightType).release());
        elements[0].DefineAllJoints();
        elements[1].DefineAllJoints();
        CJoint* const joined = mine.GetJoint(isBehind ? 1 : 0);
        CJoint* const far = absorbed.GetJoint(runsBack ? 0 : 1);
        CJoint* const onward = elements[2].GetBIGAtIndex(0)->GetJoint(0);
        elements[2].AlignComponentJointOnPoint(0, 0, far->GetPosition() + CPoint(isNear ? 0 : 3, 0, 0));
        joined->ConnectToJoint(absorbed.GetJoint(runsBack ? 1 : 0));
        far->ConnectToJoint(onward);
        ASSERT_TRUE(mine.Merge(&absorbed));
        EXPECT_EQ(joined->GetPartner(), isNear ? onward : nullptr);
        EXPECT_EQ(onward->GetPartner(), isNear ? joined : nullptr);
        EXPECT_TRUE(absorbed.GetJoint(0)->IsActive() && absorbed.GetJoint(1)->IsActive());
    }
}

TEST(Editing, LinesWhoseEndsMeetBecomeOne)
{
    CRandomShapes random(54);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        // A way through points, cut into lines that run either way, in any order.
        const int count = 4 + random.Below(12);
        std::vector<CPoint> way = random.Points(count, 400);
        const bool ring = random.Bool();
        if (ring) {
            way.push_back(way.front());
        }
        const auto element = std::make_unique<CCompositeGeometry>();
        int lines = 0;
        for (size_t from = 0; from + 1 < way.size(); ++lines) {
            const size_t to = std::min(from + 1 + static_cast<size_t>(random.Below(3)), way.size() - 1);
            std::vector<CPoint> part(&way[from], &way[to] + 1);
            if (random.Bool()) {
                std::reverse(part.begin(), part.end());
            }
            element->AppendBIG(Line(part));
            std::swap(element->GetComponents().back(),
                      element->GetComponents()[static_cast<size_t>(random.Below(lines + 1))]);
            from = to;
        }
        CPolyBIG* thick = Line({way[0], {900, 900, 0}});
        thick->SetLineThickness(3);
        element->AppendBIG(thick);
        element->AppendBIG(Line({{5000, 0, 0}, {6000, 0, 0}}));
        EXPECT_EQ(element->SimplifyJoinPolylines(), lines - 1);
        ASSERT_EQ(element->GetNumberOfComponents(), 3u);
        const auto* whole = static_cast<CPolyBIG*>(element->GetBIGAtIndex(0));
        EXPECT_EQ(whole->GetPolyCloseFlag(), ring && count > 2);
        auto places = Places(*element, *whole);
        ASSERT_EQ(places.size(), static_cast<size_t>(count));
        way.resize(static_cast<size_t>(count));
        const auto begins = [&](const CPoint& place) { return place.CalcDistance2D(way[0]) <= kTolerance; };
        std::rotate(places.begin(), ring ? std::find_if(places.begin(), places.end(), begins) : places.begin(),
                    places.end());
        if (places[1].CalcDistance2D(way[1]) > 1.0) {
            std::reverse(places.begin() + (ring ? 1 : 0), places.end());
        }
        for (size_t k = 0; k < places.size(); ++k) {
            EXPECT_LE(places[k].CalcDistance2D(way[k]), kTolerance);
        }
    }
    // Closed, empty and other kinds of line are not merged, nor a line with itself.
    const std::unique_ptr<CPolyBIG> mine(Line({{0, 0, 0}, {100, 0, 0}}));
    CFlexTrackBIG flex;
    CPolyBIG closed(mine.get());
    closed.SetPolyCloseFlag(true);
    const std::unique_ptr<CPolyBIG> empty(Line({}));
    for (CPolyBIG* wrong : std::initializer_list<CPolyBIG*>{&flex, &closed, empty.get(), mine.get(), nullptr}) {
        EXPECT_FALSE(mine->Merge(wrong));
    }
    // A gap becomes an edge between the ends that are nearest.
    const std::unique_ptr<CPolyBIG> other(Line({{300, 50, 0}, {120, 0, 0}}));
    ASSERT_TRUE(mine->Merge(other.get()));
    ExpectSamePlaces(mine->GetPoints(), {{0, 0, 0}, {100, 0, 0}, {120, 0, 0}, {300, 50, 0}});
}
