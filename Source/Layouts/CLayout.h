// The layout document.
#pragma once

#include "CColor/RGBColor.h"
#include "CRect/DRect.h"
#include "CRect/Rect.h"
#include "Layouts/Groups/CGroupsManager.h"

#include <cstdio>
#include <memory>
#include <string>
#include <unordered_set>
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
        kCannotOpen = 1,         ///< or the system failed to read it; what was read before stays
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
    /// As KVUDate spells it; of a layout without one, when it was made in memory.
    const char* GetCreationDate() const { return mCreationDate; }
    CLayerManager* GetLayerList() { return mLayers.get(); }
    std::vector<CCompositeGeometry*>& GetElements() { return mElements; }
    const std::vector<CGroup*>& GetGroups() const { return mGroups; }
    CGroupsManager* GetGroupsManager() { return &mGroupsManager; }
    CLayoutStatistics* GetStatistics() { return mStatistics.get(); }

    void SetAuthor(const char* author);
    void SetDesc(const char* description);
    void SetRevision(const char* revision);
    /// Loading leaves the factor alone, whatever percentage the file has; saving stores 100 times the factor.
    void SetZoomFactor(double factor) { mZoomFactor = factor; }
    double GetZoomFactor() const { return mZoomFactor; }
    /// Sets the workspace and its bounds. @return true
    bool SetWidthHeight(int width, int height);
    bool PointIsWithinWSBounds(const CPoint& point) const;
    const DRect& GetWorkspaceBounds() const { return mWorkspaceBounds; }
    /// mm; as the document has it, so perhaps 0 or less.
    int GetGridSpacing() const { return mGridSpacing; }
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

    // The lists. Whatever leaves the layout leaves its groups, the statistics and the register of joints with it; a
    // group that is left without members goes too.

    /// Appends an element, which the layout owns from then on, at the price that its article has in this layout. Joints
    /// are not snapped.
    void AddItem(CCompositeGeometry* element);
    /// Takes an element out; the caller owns it then. @return false when it is not in the list
    bool RemoveItem(CCompositeGeometry* element);
    /// Takes an element out and destroys it. @return false when it is not in the list
    bool DeleteItem(CCompositeGeometry* element);
    /// Takes out and destroys those of the elements that are in the list, and empties the vector. Linear.
    void DeleteItemVec(std::vector<CCompositeGeometry*>& elements);
    /// Changes an element's place in the list; an index at or behind the end is the end, one below 0 the beginning.
    /// @return false when it is not in the list
    bool MoveItemToBegin(CCompositeGeometry* element) { return MoveItemToIndex(element, 0); }
    bool MoveItemToEnd(CCompositeGeometry* element);
    bool MoveItemToIndex(CCompositeGeometry* element, int index);
    /// Appends elements in order, which the layout owns from then on, and snaps close joints.
    /// @param select     select the new elements and nothing else
    /// @param takePrices bring them in line with the layout's prices, as AddItem does
    void InsertItemVec(std::vector<CCompositeGeometry*>& elements, bool select, bool takePrices);
    /// Destroys all elements, first to last.
    void ClearItemVec();

    /// Appends a group, which the layout owns from then on.
    void AddGroup(CGroup* group) { mGroups.push_back(group); }
    void AddGroupVec(const std::vector<CGroup*>& groups);
    /// Takes a group out of the list with all its members; the caller owns it then.
    void RemoveGroup(CGroup* group);
    void RemoveGroupVec(const std::vector<CGroup*>& groups);
    bool ContainsGroup(const CGroup* group) const;
    /// Destroys all groups, first to last.
    void ClearGroupVec();

    /// Copies all elements, which the caller owns, and the groups in list form (see UGroups)
    /// into `elements` and `groups`.
    void BackupGroupAndItemVec(std::vector<CCompositeGeometry*>& elements, std::vector<int>& groups);
    /// Replaces the content by a backup, whose elements the layout owns from then on, and snaps close joints. The
    /// vector is empty afterwards.
    void RestoreGroupAndItemVec(std::vector<CCompositeGeometry*>& elements, const std::vector<int>& groups);

    /// Places all joints, registers them with the joints manager and connects those that lie on each other. From then
    /// on the list operations keep the register up to date.
    void ConnectJoints();
    /// Disconnects and unregisters the joints of all elements, in one pass.
    void DisconnectJoints();

private:
    /// Sizes of the texts with their zeros.
    static constexpr size_t kPrivateAuthorSize = 256;

    void AddItem(CCompositeGeometry* element, bool takePrice);
    /// Takes elements that leave out of statistics, groups and the register of joints; all of them are in the list.
    void Forget(const std::unordered_set<CCompositeGeometry*>& leaving);
    void RegisterJoints(const std::vector<CCompositeGeometry*>& elements);
    bool LoadElements(FILE* file, int count);
    bool WriteContent(FILE* file);
    auto SettingFields();
    void ResetWorkspaceBounds();

    std::vector<CCompositeGeometry*> mElements; ///< owned, in file order
    std::vector<CGroup*> mGroups;               ///< owned
    std::unique_ptr<CLayerManager> mLayers;
    double mZoomFactor = 1.0;
    std::unique_ptr<CLayoutStatistics> mStatistics;
    bool mJointsConnected = false; ///< joints of new elements are registered as well
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
