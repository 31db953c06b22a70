// The picture of a whole layout.
#pragma once

#include "CRect/DRect.h"
#include "Drawing/CDrawing.h"
#include "Elements/Rendering/UTrackStyles.h"

#include <string>
#include <unordered_set>
#include <vector>

class CCompositeGeometry;
class CLayer;
class CLayout;
class CMeasuredDrawing;
class CTrackRun;
struct tRenderContext;

/// What a picture is to be.
struct tPictureOptions {
    int width = 0; ///< pixels that the picture may have; 0 for the usual size
    int height = 0;
    bool isExact = false;       ///< the picture has this size, with the layout in its middle; else as much as it needs
    bool isTransparent = false; ///< nothing but the layout: no paper, no workspace
    bool isPrinted = false;     ///< the paper has a colour of its own
    bool isScalable = false;    ///< it can be enlarged, so finer parts are worth drawing
    bool hasLabels = false;     ///< names of the elements
    bool hasGrid = false;
    int trackStyle = 0;      ///< a track style code; 0 for the layout's own
    size_t documentSize = 0; ///< bytes of the layout's file, by which the picture's budget goes
    /// Only elements on these layers, visible or not; all visible ones and those without a layer if not set.
    bool hasLayers = false;
    std::unordered_set<const CLayer*> layers;
};

/// Chooses what of a layout is drawn and where, and draws it: by layer in list order, within a layer by z-order.
/// Elements are left alone except for their joints, which are placed anew.
class CLayoutRenderer {
public:
    /// Longest side of a picture of the usual size, pixels.
    static constexpr int kUsualSide = 1600;

    /// @param layout  not owned; outlives this object
    CLayoutRenderer(CLayout& layout, const tPictureOptions& options);

    /// Size of the picture, pixels; at least 1 × 1.
    int GetWidth() const { return mWidth; }
    int GetHeight() const { return mHeight; }
    /// Elements that lie so far away from all others, or are so large, that the picture does not go by them.
    size_t GetNumberOfStrays() const { return mNumberOfStrays; }
    /// Bytes of SVG or PDF that a picture of a document may have: 20 for each of its own, and a million.
    static size_t GetMostBytes(size_t documentSize) { return 20 * documentSize + 1000000; }
    /// Elements that would cost more than the picture's budget has for them, drawn with fewer parts and points, and
    /// those not drawn at all; known after Draw.
    size_t GetNumberOfSimplified() const { return mNumberOfSimplified; }
    size_t GetNumberOfLeftOut() const { return mNumberOfLeftOut; }
    /// Labels that found no room; known after Draw.
    size_t GetNumberOfLeftOutLabels() const { return mNumberOfLeftOutLabels; }
    /// Elements that are drawn.
    size_t GetNumberOfElements() const { return mElements.size(); }
    /// A length of the layout, in pixels.
    double GetScale() const { return mScale; }
    /// Where a point of the layout lies in the picture, pixels.
    CPoint ToPicture(const CPoint& point) const;

    /// Draws on a surface of GetWidth() × GetHeight() units.
    void Draw(CDrawing& drawing);

private:
    struct tItem {
        CCompositeGeometry* element;
        DRect box;       ///< in the layout
        double reach;    ///< by how much what is drawn may stick out of it
        int layer;       ///< index in the list of layers, -1 for none
        int economy = 0; ///< how sparingly it is drawn
    };

    void ChooseElements();
    bool IsWanted(const CCompositeGeometry& element, const std::unordered_set<const CLayer*>& known) const;
    void DropStrays();
    void ChooseFrame();
    void ChooseSize();
    bool ShowsWorkspace(const DRect& content) const;
    void DrawGround(const tRenderContext& context);
    void DrawGrid(const tRenderContext& context);
    double MeasureElement(const tItem& item, const tRenderContext& context, CMeasuredDrawing& measured) const;
    double GetShare(const CMeasuredDrawing& measured) const;
    void ChooseEconomy(const tRenderContext& context);
    void DrawElements(const tRenderContext& context);
    void DrawElement(const tItem& item, const tRenderContext& context, CTrackRun& run) const;
    void DrawLabels(const tRenderContext& context);
    void DrawScaleBar(CDrawing& drawing, const tPalette& palette) const;

    CLayout& mLayout;
    tPictureOptions mOptions;
    int mTrackStyle = 0; ///< its code
    std::vector<tItem> mElements;
    size_t mNumberOfStrays = 0;
    size_t mNumberOfLeftOutLabels = 0;
    size_t mNumberOfSimplified = 0;
    size_t mNumberOfLeftOut = 0;
    double mRest = 1.0; ///< of the budget
    DRect mFrame = {};  ///< the part of the layout that is shown
    int mWidth = 1;
    int mHeight = 1;
    double mScale = 1.0;   ///< pixels per mm
    double mOriginX = 0.0; ///< of the layout in the picture, pixels
    double mOriginY = 0.0;
};
