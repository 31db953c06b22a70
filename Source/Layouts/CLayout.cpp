#include "Layouts/CLayout.h"

#include "CheckError/CErr.h"
#include "KVUDate/KVUDate.h"
#include "KVUStr/KVUStr.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CDisplayOptionsManager.h"
#include "Layouts/CLayoutStatistics.h"
#include "Preferences/CVLPreferences.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {
/// Name of a new layout's layer; the application shows its translation.
constexpr char kFirstLayer[] = "LocalizedLayerName";
/// Below this zoom a new layout could not be seen, percent.
constexpr int kSmallestDefaultZoom = 5;
} // namespace

CLayout::CLayout()
{
    const CVLPreferences* preferences = CVLPreferences::Instance();
    KVUDate::FormatNow(mCreationDate, sizeof mCreationDate);
    SetElementLabelFlag(kLabelFlag32);
    SetElementLabelFlag(kLabelFlag64);
    if (preferences->mDefaultShowElementNames) {
        SetElementLabelFlag(kShowElementNames);
    }
    if (preferences->mDefaultShowPrefix) {
        SetElementLabelFlag(kShowPrefix);
    }
    if (preferences->mDefaultOutlineNames) {
        SetElementLabelFlag(kOutlineNames);
    }
    mTrackStyle = preferences->mDefaultTrackStyle;
    mColorScheme = preferences->mDefaultColorScheme;
    mGridSpacing = preferences->mDefaultGridSpacing;
    mShowGrid = preferences->mDefaultShowGrid;
    mZoomPercent = std::max(preferences->mDefaultZoom, kSmallestDefaultZoom);
    m3DTerrain = preferences->m3DTerrain;
    m3DOnlyTracks = preferences->m3DOnlyTracks;
    SetWidthHeight(preferences->mDefaultWidth, preferences->mDefaultHeight);

    mLayers.reset(new (std::nothrow) CLayerManager(kFirstLayer));
    CErr::CheckNull(mLayers.get(), "CLayout::CLayout()", "Failed to create CLayerManager instance");
    mZoomFactor = mZoomPercent / 100.0;
    mStatistics.reset(new (std::nothrow) CLayoutStatistics(this));
    CErr::CheckNull(mStatistics.get(), "CLayout::CLayout()", "Failed to create CLayoutStatistics instance");
    CDisplayOptionsManager::Instance()->SetTrackStyle(mTrackStyle);
}

CLayout::~CLayout()
{
    ClearItemVec();
    ClearGroupVec();
}

void CLayout::SetAuthor(const char* author)
{
    KVUStr::strncpy(mAuthor, author, sizeof mAuthor);
}

void CLayout::SetDesc(const char* description)
{
    KVUStr::strncpy(mDescription, description, sizeof mDescription);
}

void CLayout::SetRevision(const char* revision)
{
    KVUStr::strncpy(mRevision, revision, sizeof mRevision);
}

void CLayout::ResetWorkspaceBounds()
{
    UDRect::SetDRect(mWorkspaceBounds, 0.0, 0.0, mWidth, mHeight);
}

bool CLayout::SetWidthHeight(int width, int height)
{
    mWidth = width;
    mHeight = height;
    ResetWorkspaceBounds();
    return true;
}

bool CLayout::PointIsWithinWSBounds(const CPoint& point) const
{
    return UDRect::PtInDRect(mWorkspaceBounds, point);
}

void CLayout::GetOGLParms(std::vector<float>& parameters) const
{
    std::copy_n(mOGLParms, kNumOGLParms, parameters.begin());
}

void CLayout::SetOGLParms(const std::vector<float>& parameters)
{
    std::copy_n(parameters.begin(), kNumOGLParms, mOGLParms);
}

void CLayout::GetPrivAuthorName(char* out, int size) const
{
    if (size <= 0) {
        return;
    }
    if (std::strlen(mPrivateAuthor) <= 1) {
        KVUStr::strncpy(out, "-", static_cast<unsigned long>(size));
    } else {
        KVUStr::HexChar_Decode(mPrivateAuthor, out, static_cast<size_t>(size));
    }
}
