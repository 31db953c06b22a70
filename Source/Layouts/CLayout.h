// The layout document.
#pragma once

#include "CColor/RGBColor.h"
#include "CRect/DRect.h"
#include "CRect/Rect.h"
#include "Layouts/Groups/CGroupsManager.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

class CCompositeGeometry;
class CGroup;
class CLayerManager;
class CLayoutStatistics;

/// A layout: its elements, groups and layers, which it owns, and its settings. Texts are Mac OS Roman, lengths mm.
class CLayout {
public:
    /// What Load answers.
    enum eLoadResult : int {
        kLoaded = 0,
        kCannotOpen = 1,
        kNoLayout = 2,           ///< not a layout file, or one shorter than its header
        kUnsupportedVersion = 3, ///< written before version 3
        kElementFailed = 4,      ///< an element is damaged; those before it stay
        kLayersFailed = 5        ///< the layer section is of an unknown version
    };
    /// Bits of the element labels.
    enum eElementLabelFlag : int {
        kShowElementNames = 1,
        kShowPrefix = 2,
        kOutlineNames = 4,
        kLabelFlag32 = 32, ///< always set in a new layout
        kLabelFlag64 = 64  ///< always set in a new layout
    };
    /// 3D view parameters.
    static constexpr size_t kNumOGLParms = 5;

    /// An empty layout with one layer and the defaults of the preferences. Its track style becomes the current one.
    CLayout();
    ~CLayout();
    CLayout(const CLayout&) = delete;
    CLayout& operator=(const CLayout&) = delete;

    /// Replaces the content by a file's. Elements find their layers through the installed layer name resolver, which
    /// must be bound to this layout. Close joints are snapped, missing fonts looked for, and the track style becomes
    /// the current one.
    /// @param path  bytes of the file system; Mac OS Roman where those name nothing
    /// @return an eLoadResult
    int Load(std::string path);
    /// Writes the layout beside its file and puts it in its place when complete.
    /// @param path  the file to write from now on; null for the one loaded or saved last
    /// @return false without a file name, or when the file could not be written as a whole; the old file then stays
    bool Save(const std::string* path);

    /// Reads the settings, the layer section and the element count at the stream's position; a record that is missing
    /// leaves its field. @return false when the layer section failed
    bool ReadLayoutParameter(FILE* file, int version, int& elementCount);
    void WriteLayoutParameter(FILE* file);
    /// Appends the integers of the group section (key 424 their number, then one record of key 425 each) to the list,
    /// which ends with the first entry that is missing or too short.
    static void LoadGroups(FILE* file, std::vector<int>& list);

    const char* GetAuthor() const { return mAuthor; }
    const char* GetDesc() const { return mDescription; }
    const char* GetRevision() const { return mRevision; }
    CLayerManager* GetLayerList() { return mLayers.get(); }
    std::vector<CCompositeGeometry*>& GetElements() { return mElements; }
    const std::vector<CGroup*>& GetGroups() const { return mGroups; }
    CGroupsManager* GetGroupsManager() { return &mGroupsManager; }
    CLayoutStatistics* GetStatistics() { return mStatistics.get(); }

    void SetAuthor(const char* author);
    void SetDesc(const char* description);
    void SetRevision(const char* revision);
    void SetZoomFactor(double factor) { mZoomFactor = factor; }
    double GetZoomFactor() const { return mZoomFactor; }
    /// Sets the workspace and its bounds. @return true
    bool SetWidthHeight(int width, int height);
    bool PointIsWithinWSBounds(const CPoint& point) const;
    /// Copies the five view parameters; the vector must hold five already.
    void GetOGLParms(std::vector<float>& parameters) const;
    void SetOGLParms(const std::vector<float>& parameters);
    bool HasFilename() const { return !mFileName.empty(); }
    const std::string& GetFilename() const { return mFileName; }
    /// The private author's name, cut to `size` bytes; "-" when there is none.
    void GetPrivAuthorName(char* out, int size) const;
    /// Switches labels on; nothing switches them off.
    void SetElementLabelFlag(int flag) { mElementLabelFlags |= flag; }
    bool HasElementLabelFlag(int flag) const { return (mElementLabelFlags & flag) != 0; }
    int GetTrackStyle() const { return mTrackStyle; }
    void SetTrackStyle(int style) { mTrackStyle = style; }

    /// Appends an element, which the layout owns from then on, at the price that its article has in this layout.
    void AddItem(CCompositeGeometry* element);
    /// Destroys all elements, first to last.
    void ClearItemVec();
    /// Appends a group, which the layout owns from then on.
    void AddGroup(CGroup* group) { mGroups.push_back(group); }
    /// Destroys all groups, first to last.
    void ClearGroupVec();

private:
    /// Sizes of the texts with their zeros.
    static constexpr size_t kPrivateAuthorSize = 256;

    bool LoadElements(FILE* file, int count);
    bool WriteContent(FILE* file);
    void ResetWorkspaceBounds();

    std::vector<CCompositeGeometry*> mElements; ///< owned, in file order
    std::vector<CGroup*> mGroups;               ///< owned
    std::unique_ptr<CLayerManager> mLayers;
    double mZoomFactor = 1.0;
    std::unique_ptr<CLayoutStatistics> mStatistics;
    CGroupsManager mGroupsManager;

    char mAuthor[128] = "<TEST USER>";
    char mPrivateAuthor[kPrivateAuthorSize] = "0"; ///< hexadecimal digits
    char mCreationDate[32] = "";
    char mModificationDate[32] = "-";
    char mDescription[4096] = "";
    char mFreeText[1024] = "";
    char mShortFreeText[128] = "";
    char mRevision[32] = "";
    char mCharacterSetting = 0; ///< carried, like the settings named after their keys below
    int mSetting409 = 0;
    int mElementLabelFlags = 0;
    int mTrackStyle = 0;
    int mColorScheme = 0;
    int mSetting413 = -1;
    int mGridSpacing = 0;
    int mSetting415 = 2;
    bool mShowGrid = false;
    int mZoomPercent = 0;
    int mWidth = 0;
    int mHeight = 0;
    RGBColor mColor = {0, 0, 0};
    Rect mRectangle = {0, 0, 0, 0};
    float mOGLParms[kNumOGLParms] = {0.0F, 0.0F, 3000.0F, 0.0F, 0.0F};
    bool m3DTerrain = false;
    bool m3DOnlyTracks = false;
    int mSetting428 = 2;
    int mSetting429 = 0;
    bool mFlag430 = false;
    DRect mWorkspaceBounds = {};
    std::string mFileName;
};
