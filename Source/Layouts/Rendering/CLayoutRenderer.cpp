#include "Layouts/Rendering/CLayoutRenderer.h"

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Elements/Rendering/CMeasuredDrawing.h"
#include "Elements/Rendering/UElementRenderer.h"
#include "Elements/Utilities/UElementNameGenerator.h"
#include "Elements/Utilities/UElementNameUtils.h"
#include "Layers/CLayer.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CLayout.h"
#include "Platform/MacRoman.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <unordered_map>

namespace {
/// An element any edge of whose box lies farther out is beyond drawing, mm: a kilometre of model.
constexpr double kFarthest = 1e6;
/// An element is a stray when its box leaves the range of most elements by more than this many ranges.
constexpr double kStrayReach = 2.5;
/// Share of the elements, at either end of an axis, that the range of most leaves out.
constexpr double kOutermost = 0.05;
/// The range of most is at least this large, mm, so that the few parts of a beginner's circle are no strays.
constexpr double kSmallestRange = 1000.0;
/// Smallest part of a layout that is shown, mm.
constexpr double kSmallestFrame = 50.0;
/// A picture's sides differ at most by this factor.
constexpr double kMostAspect = 12.0;
constexpr double kMargin = 0.025;   ///< of the longer side
constexpr double kLineMargin = 0.6; ///< of the margin, around what sticks out of the boxes
/// A workspace many times larger than what lies on it is not shown whole.
constexpr double kMostWorkspace = 3.0;
/// Coordinates beyond this, in device units, are outside what drawing libraries count with.
constexpr double kFarthestPixel = 4e6;

/// In pictures that can be enlarged, details are drawn down to this part of a pixel.
constexpr double kFinerDetail = 0.3;

/// What a picture may cost, in nanoseconds as CMeasuredDrawing estimates them.
constexpr double kLeastWork = 1e9;
constexpr double kWorkPerPixel = 200.0;
constexpr double kWorkPerByte = 75.0; ///< of the document

constexpr double kFinestGrid = 9.0; ///< pixels between two lines
constexpr int kGridLinesToMajor = 5;
constexpr double kUsualGrid = 100.0;

constexpr double kSmallestLabel = 7.0; ///< pixels
constexpr double kLargestLabel = 15.0;
constexpr double kLabelCell = 2.0; ///< pixels; how finely the room that labels take is known

bool IsDrawable(const DRect& box)
{
    const auto isNear = [](double edge) { return std::fabs(edge) <= kFarthest; }; // false for what is no number
    return isNear(box.left) && isNear(box.top) && isNear(box.right) && isNear(box.bottom) && box.left <= box.right &&
           box.top <= box.bottom;
}

/// The box of an element in the layout; its position, where it has no components.
DRect BoxOf(CCompositeGeometry& element)
{
    DRect box = {};
    element.CalcPlacedBox(box);
    const CPoint& position = element.GetPosition();
    return {box.top + position.y, box.left + position.x, box.bottom + position.y, box.right + position.x};
}

/// Where most values lie: the values may be reordered.
void RangeOfMost(std::vector<double>& values, double& low, double& high)
{
    const auto outermost = static_cast<size_t>(kOutermost * static_cast<double>(values.size()));
    const auto at = [&](size_t index) {
        const auto place = values.begin() + static_cast<std::ptrdiff_t>(index);
        std::nth_element(values.begin(), place, values.end());
        return *place;
    };
    low = at(outermost);
    high = at(values.size() - 1 - outermost);
    const double missing = kSmallestRange - (high - low);
    if (missing > 0.0) {
        low -= missing / 2.0;
        high += missing / 2.0;
    }
}

/// The smallest of 1, 2, 5, 10, 20, 50, ... times `unit` that is at least `least`.
double RoundUp(double unit, double least)
{
    double decade = unit;
    for (int i = 0; i < 12; ++i, decade *= 10.0) {
        for (const double factor : {1.0, 2.0, 5.0}) {
            if (decade * factor >= least) {
                return decade * factor;
            }
        }
    }
    return decade;
}

/// Which parts of a picture labels have taken.
class CLabelRoom {
public:
    CLabelRoom(int width, int height)
        : mColumns(static_cast<size_t>(width / kLabelCell) + 1), mRows(static_cast<size_t>(height / kLabelCell) + 1),
          mTaken(mColumns * mRows)
    {}

    /// Takes a rectangle. @return false when some of it is taken, or outside
    bool Take(double x, double y, double width, double height)
    {
        if (x < 0.0 || y < 0.0) {
            return false;
        }
        const auto left = static_cast<size_t>(x / kLabelCell);
        const auto top = static_cast<size_t>(y / kLabelCell);
        const auto right = static_cast<size_t>((x + width) / kLabelCell);
        const auto bottom = static_cast<size_t>((y + height) / kLabelCell);
        if (right >= mColumns || bottom >= mRows) {
            return false;
        }
        for (size_t row = top; row <= bottom; ++row) {
            for (size_t column = left; column <= right; ++column) {
                if (mTaken[row * mColumns + column]) {
                    return false;
                }
            }
        }
        for (size_t row = top; row <= bottom; ++row) {
            std::fill_n(mTaken.begin() + static_cast<std::ptrdiff_t>(row * mColumns + left), right - left + 1, true);
        }
        return true;
    }

private:
    size_t mColumns;
    size_t mRows;
    std::vector<bool> mTaken;
};
} // namespace

CLayoutRenderer::CLayoutRenderer(CLayout& layout, const tPictureOptions& options)
    : mLayout(layout), mOptions(options),
      mTrackStyle(options.trackStyle != 0 ? options.trackStyle : layout.GetTrackStyle())
{
    ChooseElements();
    DropStrays();
    ChooseFrame();
    ChooseSize();
}

/// `known` are the layers of the list.
bool CLayoutRenderer::IsWanted(const CCompositeGeometry& element, const std::unordered_set<const CLayer*>& known) const
{
    const CLayer* layer = element.GetLayer();
    if (mOptions.hasLayers) {
        return layer != nullptr && mOptions.layers.count(layer) > 0;
    }
    return layer == nullptr || known.count(layer) == 0 || layer->GetIsVisible();
}

void CLayoutRenderer::ChooseElements()
{
    std::unordered_map<const CLayer*, int> places;
    std::unordered_set<const CLayer*> known;
    CLayerManager* const layers = mLayout.GetLayerList();
    for (int i = 0; i < layers->GetNumberOfLayers(); ++i) {
        places.emplace(layers->GetLayerAtIndex(i), i);
        known.insert(layers->GetLayerAtIndex(i));
    }
    BOOST_FOREACH(CCompositeGeometry* element, mLayout.GetElements()) {
        if (element->GetNumberOfComponents() == 0 || !IsWanted(*element, known)) {
            continue;
        }
        const DRect box = BoxOf(*element);
        if (!IsDrawable(box)) {
            ++mNumberOfStrays;
            continue;
        }
        const auto place = places.find(element->GetLayer());
        const double reach = UElementRenderer::GetReach(*element, UTrackStyles::StyleOf(mTrackStyle));
        mElements.push_back({element, box, reach, place == places.end() ? -1 : place->second});
    }
    std::stable_sort(mElements.begin(), mElements.end(), [](const tItem& one, const tItem& other) {
        return one.layer != other.layer ? one.layer < other.layer
                                        : one.element->GetZOrder() < other.element->GetZOrder();
    });
}

void CLayoutRenderer::DropStrays()
{
    if (mElements.empty()) {
        return;
    }
    std::vector<double> xs;
    std::vector<double> ys;
    for (const tItem& item : mElements) {
        const CPoint centre = UDRect::Center(item.box);
        xs.push_back(centre.x);
        ys.push_back(centre.y);
    }
    double left = 0.0;
    double right = 0.0;
    double top = 0.0;
    double bottom = 0.0;
    RangeOfMost(xs, left, right);
    RangeOfMost(ys, top, bottom);
    const double reach = kStrayReach * std::max(right - left, bottom - top);
    const auto isStray = [=](const tItem& item) {
        return item.box.left < left - reach || item.box.right > right + reach || item.box.top < top - reach ||
               item.box.bottom > bottom + reach;
    };
    const auto strays =
        std::stable_partition(mElements.begin(), mElements.end(), [&](const tItem& item) { return !isStray(item); });
    if (strays == mElements.begin()) {
        return; // each is as good as the others
    }
    mNumberOfStrays += static_cast<size_t>(mElements.end() - strays);
    mElements.erase(strays, mElements.end());
}

bool CLayoutRenderer::ShowsWorkspace(const DRect& content) const
{
    const DRect& workspace = mLayout.GetWorkspaceBounds();
    const double width = workspace.right - workspace.left;
    const double height = workspace.bottom - workspace.top;
    if (!IsDrawable(workspace) || width < kSmallestFrame || height < kSmallestFrame) {
        return false;
    }
    if (mElements.empty()) {
        return true;
    }
    const double longest = std::max({content.right - content.left, content.bottom - content.top, kSmallestFrame});
    return std::max(width, height) <= kMostWorkspace * longest;
}

void CLayoutRenderer::ChooseFrame()
{
    CCalcBoundingBox grow(mFrame);
    for (const tItem& item : mElements) {
        grow.Update(item.box);
    }
    // A picture without ground shows the layout alone.
    if (ShowsWorkspace(mFrame) && !(mOptions.isTransparent && !mElements.empty())) {
        grow.Update(mLayout.GetWorkspaceBounds());
    }
    const auto inflate = [](const DRect& box, double x, double y) {
        return DRect{box.top - y, box.left - x, box.bottom + y, box.right + x};
    };
    double width = mFrame.right - mFrame.left;
    double height = mFrame.bottom - mFrame.top;
    const double margin = kMargin * std::max({width, height, kSmallestFrame});
    grow.Update(inflate(mFrame, margin + std::max(kSmallestFrame - width, 0.0) / 2.0,
                        margin + std::max(kSmallestFrame - height, 0.0) / 2.0));
    // What sticks out of the boxes mostly lies well within that margin.
    DRect drawn = mFrame;
    CCalcBoundingBox growDrawn(drawn);
    for (const tItem& item : mElements) {
        growDrawn.Update(inflate(item.box, item.reach, item.reach));
    }
    if (!growDrawn.IsEmpty()) {
        const double around = kLineMargin * kMargin * std::max(drawn.right - drawn.left, drawn.bottom - drawn.top);
        grow.Update(inflate(drawn, around, around));
    }
    const CPoint centre = UDRect::Center(mFrame);
    width = std::max(mFrame.right - mFrame.left, (mFrame.bottom - mFrame.top) / kMostAspect);
    height = std::max(mFrame.bottom - mFrame.top, width / kMostAspect);
    UDRect::SetDRect(mFrame, centre.x - width / 2.0, centre.y - height / 2.0, centre.x + width / 2.0,
                     centre.y + height / 2.0);
}

void CLayoutRenderer::ChooseSize()
{
    const double width = mFrame.right - mFrame.left;
    const double height = mFrame.bottom - mFrame.top;
    const int mostWidth = mOptions.width > 0 ? mOptions.width : kUsualSide;
    const int mostHeight = mOptions.height > 0 ? mOptions.height : kUsualSide;
    mScale = std::min(mostWidth / width, mostHeight / height);
    mWidth = mOptions.isExact ? mostWidth : std::clamp(static_cast<int>(std::lround(width * mScale)), 1, mostWidth);
    mHeight = mOptions.isExact ? mostHeight : std::clamp(static_cast<int>(std::lround(height * mScale)), 1, mostHeight);
    const CPoint centre = UDRect::Center(mFrame);
    mOriginX = mWidth / 2.0 - centre.x * mScale;
    mOriginY = mHeight / 2.0 - centre.y * mScale;
}

CPoint CLayoutRenderer::ToPicture(const CPoint& point) const
{
    return {mOriginX + point.x * mScale, mOriginY + point.y * mScale, 0.0};
}

void CLayoutRenderer::Draw(CDrawing& drawing)
{
    const eTrackStyle style = UTrackStyles::StyleOf(mTrackStyle);
    const tRenderContext context = {drawing, style, UTrackStyles::PaletteOf(style), 1.0 / mScale,
                                    (mOptions.isScalable ? kFinerDetail : 1.0) / mScale};
    drawing.Save();
    drawing.Shift(mOriginX, mOriginY);
    drawing.Scale(mScale);
    if (!mOptions.isTransparent) {
        DrawGround(context);
    }
    if (mOptions.hasGrid) {
        DrawGrid(context);
    }
    ChooseEconomy(context);
    DrawElements(context);
    if (mOptions.hasLabels) {
        DrawLabels(context);
    }
    drawing.Restore();
    if (mOptions.hasGrid) {
        DrawScaleBar(drawing, context.palette);
    }
}

static void AddRectangle(CDrawing& drawing, const DRect& box)
{
    drawing.MoveTo(box.left, box.top);
    drawing.LineTo(box.right, box.top);
    drawing.LineTo(box.right, box.bottom);
    drawing.LineTo(box.left, box.bottom);
    drawing.ClosePath();
}

/// The part of the layout that the whole picture shows.
static DRect PictureBox(double originX, double originY, double scale, int width, int height)
{
    return {-originY / scale, -originX / scale, (height - originY) / scale, (width - originX) / scale};
}

void CLayoutRenderer::DrawGround(const tRenderContext& context)
{
    const DRect picture = PictureBox(mOriginX, mOriginY, mScale, mWidth, mHeight);
    if (!mOptions.isPrinted) {
        AddRectangle(context.drawing, picture);
        context.drawing.Fill(PaintOf(context.palette.paper), false);
    }
    DRect workspace = mLayout.GetWorkspaceBounds();
    if (!IsDrawable(workspace) || workspace.right - workspace.left < kSmallestFrame ||
        workspace.bottom - workspace.top < kSmallestFrame) {
        return;
    }
    // What is far from it may have a corner that the drawing cannot count with: only as much as shows, and where its
    // edge is outside, an edge outside.
    const double outside = 2.0 * context.pixel;
    workspace = {std::max(workspace.top, picture.top - outside), std::max(workspace.left, picture.left - outside),
                 std::min(workspace.bottom, picture.bottom + outside),
                 std::min(workspace.right, picture.right + outside)};
    if (workspace.right <= workspace.left || workspace.bottom <= workspace.top) {
        return;
    }
    AddRectangle(context.drawing, workspace);
    context.drawing.Fill(PaintOf(context.palette.board), true);
    context.drawing.Stroke({PaintOf(context.palette.edge), context.pixel});
}

void CLayoutRenderer::DrawGrid(const tRenderContext& context)
{
    const double unit = mLayout.GetGridSpacing() > 0 ? mLayout.GetGridSpacing() : kUsualGrid;
    const double spacing = RoundUp(unit, kFinestGrid / mScale);
    const DRect box = PictureBox(mOriginX, mOriginY, mScale, mWidth, mHeight);
    for (const bool isMajor : {false, true}) {
        const auto isDrawn = [=](double index) { return (std::fmod(index, kGridLinesToMajor) == 0.0) == isMajor; };
        for (double i = std::ceil(box.left / spacing); i * spacing <= box.right; ++i) {
            if (isDrawn(i)) {
                context.drawing.MoveTo(i * spacing, box.top);
                context.drawing.LineTo(i * spacing, box.bottom);
            }
        }
        for (double i = std::ceil(box.top / spacing); i * spacing <= box.bottom; ++i) {
            if (isDrawn(i)) {
                context.drawing.MoveTo(box.left, i * spacing);
                context.drawing.LineTo(box.right, i * spacing);
            }
        }
        context.drawing.Stroke({PaintOf(context.palette.grid), (isMajor ? 1.2 : 0.6) * context.pixel});
    }
}

void CLayoutRenderer::DrawElement(const tItem& item, const tRenderContext& context, CTrackRun& run) const
{
    const CPoint leftTop = ToPicture({item.box.left, item.box.top, 0.0});
    const CPoint rightBottom = ToPicture({item.box.right, item.box.bottom, 0.0});
    if (item.economy != kLeftOut && std::max({std::fabs(leftTop.x), std::fabs(leftTop.y), std::fabs(rightBottom.x),
                                              std::fabs(rightBottom.y)}) <= kFarthestPixel) {
        UElementRenderer::Draw(*item.element, CDrawingOptions(item.element, mTrackStyle), context, run, item.economy);
    }
}

/// The share of the picture's budget that something takes.
double CLayoutRenderer::GetShare(const CMeasuredDrawing& measured) const
{
    const auto size = static_cast<double>(mOptions.documentSize);
    const double work = kLeastWork + kWorkPerPixel * mWidth * mHeight + kWorkPerByte * size;
    // A picture of pixels is bounded by their number. Ground, grid and scale have a part of their own.
    const double bytes = mOptions.isScalable ? 0.8 * static_cast<double>(GetMostBytes(mOptions.documentSize)) : 1e300;
    return std::max(measured.GetBytes() / bytes, measured.GetWork() / work);
}

double CLayoutRenderer::MeasureElement(const tItem& item, const tRenderContext& context,
                                       CMeasuredDrawing& measured) const
{
    const tRenderContext alone = {measured, context.style, context.palette, context.pixel, context.detail};
    measured.Restart();
    CTrackRun run(alone);
    DrawElement(item, alone, run);
    run.Draw();
    return GetShare(measured);
}

/// What each may cost at the most so that all do not cost more than 1 together. Those that cost less leave the others
/// more.
static double LargestShare(const std::vector<double>& costs)
{
    std::vector<double> sorted = costs;
    std::sort(sorted.begin(), sorted.end());
    double rest = 1.0;
    for (size_t i = 0; i < sorted.size(); ++i) {
        const double share = rest / static_cast<double>(sorted.size() - i);
        if (sorted[i] > share) {
            return share;
        }
        rest -= sorted[i];
    }
    return std::numeric_limits<double>::infinity();
}

/// Fits the elements into the picture's budget: those that would take most are drawn ever more sparingly. What even
/// then takes too much is drawn while something is left.
void CLayoutRenderer::ChooseEconomy(const tRenderContext& context)
{
    CMeasuredDrawing measured(mScale, mOptions.isScalable);
    std::vector<double> costs;
    for (const tItem& item : mElements) {
        costs.push_back(MeasureElement(item, context, measured));
    }
    const double most = LargestShare(costs);
    double rest = 1.0;
    for (size_t i = 0; i < costs.size(); ++i) {
        tItem& item = mElements[i];
        for (double before = costs[i]; costs[i] > most; before = costs[i]) {
            ++item.economy;
            costs[i] = MeasureElement(item, context, measured);
            if (item.economy > kOneLine && costs[i] >= before) {
                break; // nothing is left to save
            }
        }
        rest -= costs[i] <= most ? costs[i] : 0.0;
    }
    for (size_t i = 0; i < costs.size(); ++i) {
        tItem& item = mElements[i];
        if (costs[i] > most) {
            if (costs[i] > rest) {
                item.economy = kLeftOut;
            } else {
                rest -= costs[i];
            }
        }
        mNumberOfLeftOut += item.economy == kLeftOut ? 1 : 0;
        mNumberOfSimplified += item.economy > 0 && item.economy != kLeftOut ? 1 : 0;
    }
    mRest = std::max(rest, 0.0);
}

void CLayoutRenderer::DrawElements(const tRenderContext& context)
{
    CTrackRun run(context);
    int layer = -1;
    for (const tItem& item : mElements) {
        if (item.layer != layer) {
            run.Draw();
            layer = item.layer;
        }
        DrawElement(item, context, run);
    }
    run.Draw();
}

void CLayoutRenderer::DrawLabels(const tRenderContext& context)
{
    CLabelRoom room(mWidth, mHeight);
    const double pixels = std::clamp(std::max(mWidth, mHeight) / 130.0, kSmallestLabel, kLargestLabel);
    const tTextLook look = {"", pixels * context.pixel, PaintOf(context.palette.label), 1.4 * context.pixel,
                            PaintOf(context.palette.seam)};
    CMeasuredDrawing measured(mScale, mOptions.isScalable);
    std::string label;
    for (const tItem& item : mElements) {
        if (std::strcmp(item.element->GetName(), "-") == 0 || item.element->GetName()[0] == '\0') {
            continue;
        }
        UElementNameGenerator::GetPrefixedElementName(item.element, &mLayout, label);
        const std::string text = Platform::MacRomanToUtf8(label);
        double width = 0.0;
        double height = 0.0;
        context.drawing.MeasureText(text, look, width, height);
        const CPoint place = UElementNameUtils::GetElementNamePosition(item.element, &mLayout, {width, height});
        CPoint corner = ToPicture(place);
        corner.x = std::max(std::min(corner.x, mWidth - width * mScale), 0.0); // inside the picture
        corner.y = std::max(std::min(corner.y, mHeight - height * mScale), 0.0);
        measured.Restart();
        measured.DrawText(text, place.x, place.y, look);
        const double cost = GetShare(measured);
        if (cost > mRest || !room.Take(corner.x, corner.y, width * mScale, height * mScale)) {
            ++mNumberOfLeftOutLabels;
            continue;
        }
        mRest -= cost;
        context.drawing.DrawText(text, (corner.x - mOriginX) / mScale, (corner.y - mOriginY) / mScale, look);
    }
}

void CLayoutRenderer::DrawScaleBar(CDrawing& drawing, const tPalette& palette) const
{
    constexpr double kInset = 12.0;
    constexpr double kTick = 4.0;
    const double length = RoundUp(1.0, mWidth * 0.08 / mScale);
    const double pixels = length * mScale;
    if (pixels + 2.0 * kInset > mWidth || mHeight < 4.0 * kInset) {
        return;
    }
    const double y = mHeight - kInset;
    drawing.MoveTo(kInset, y - kTick);
    drawing.LineTo(kInset, y);
    drawing.LineTo(kInset + pixels, y);
    drawing.LineTo(kInset + pixels, y - kTick);
    drawing.Stroke({PaintOf(palette.label), 1.2});
    const auto millimetres = std::llround(length);
    const std::string text = millimetres % 1000 == 0 ? std::to_string(millimetres / 1000) + " m"
                             : millimetres % 10 == 0 ? std::to_string(millimetres / 10) + " cm"
                                                     : std::to_string(millimetres) + " mm";
    const tTextLook look = {"", 11.0, PaintOf(palette.label), 1.5, PaintOf(palette.seam)};
    double width = 0.0;
    double height = 0.0;
    drawing.MeasureText(text, look, width, height);
    drawing.DrawText(text, kInset + (pixels - width) / 2.0, y - kTick - height, look);
}
