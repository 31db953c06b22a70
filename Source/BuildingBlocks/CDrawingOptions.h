// The style in which one element is drawn.
#pragma once

#include "CColor/CColor.h"

class CCompositeGeometry;

/// Track style, state and colours for drawing one element. Copied by value.
class CDrawingOptions {
public:
    static constexpr int GetDefaultTrackStyle() { return 105; }

    /// The default style: not selected, filled, light grey, black and red.
    CDrawingOptions();
    CDrawingOptions(int trackStyle, bool fill);
    /// The style of an element: selection, fill mode and fill colour are the element's.
    CDrawingOptions(const CCompositeGeometry* element, int trackStyle);
    CDrawingOptions(const CDrawingOptions&) = default;
    CDrawingOptions& operator=(const CDrawingOptions&) = default;
    virtual ~CDrawingOptions() = default;

    int GetTrackStyle() const { return mTrackStyle; }
    bool IsSelected() const { return mSelected; }
    bool GetFill() const { return mFill; }
    const CColor& GetFirstColor() const { return mFirstColor; }
    const CColor& GetSecondColor() const { return mSecondColor; }
    const CColor& GetThirdColor() const { return mThirdColor; }

private:
    int mTrackStyle = GetDefaultTrackStyle();
    bool mSelected = false;
    bool mFill = true;
    void* mReserved = nullptr;
    CColor mFirstColor;
    CColor mSecondColor;
    CColor mThirdColor;
};
