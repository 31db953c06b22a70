// How a layout is read from and written to its file.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CTaggedFile/DocumentHeader.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Elements/Utilities/CMissingLayoutFontsDoctor.h"
#include "Formats/LayoutFormat.h"
#include "KVUDate/KVUDate.h"
#include "KVUNum/KVUNum.h"
#include "KVUStr/KVUStr.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CDisplayOptionsManager.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutJointsManager.h"
#include "Layouts/Groups/UGroups.h"
#include "Platform/Streams.h"

#include <boost/foreach.hpp>

#include <memory>
#include <new>
#include <utility>

namespace {
constexpr char kLoadFunction[] = "int CLayout::Load(string)";

/// Stands where the private author's name would be: it is not published.
constexpr char kHiddenAuthor[] = "???";
} // namespace

int CLayout::Load(std::string path)
{
    ClearItemVec();
    ClearGroupVec();
    int result = kLoaded;
    std::vector<int> groupList;
    {
        const Platform::CInputFile input(path);
        FILE* file = input.Get();
        if (file == nullptr) {
            return kCannotOpen;
        }
        tDocumentHeader header;
        if (!header.Read(file) || header.magic != LayoutFormat::kMagic) {
            return input.HasFailed() ? kCannotOpen : kNoLayout;
        }
        const int version = static_cast<int>(header.version);
        if (version < LayoutFormat::kOldestVersion) {
            return kUnsupportedVersion;
        }
        int elementCount = 0;
        if (!ReadLayoutParameter(file, version, elementCount)) {
            return input.HasFailed() ? kCannotOpen : kLayersFailed;
        }
        ResetWorkspaceBounds();
        mFileName = std::move(path);
        if (!LoadElements(file, elementCount)) {
            result = kElementFailed;
        }
        LoadGroups(file, groupList);
        result = input.HasFailed() ? kCannotOpen : result;
    }
    UGroups::DeserializeGroups(&mGroupsManager, mGroups, mElements, groupList);
    CLayoutJointsManager::SnapCloseJoints();
    CMissingLayoutFontsDoctor doctor(mElements);
    CDisplayOptionsManager::Instance()->SetTrackStyle(mTrackStyle);
    return result;
}

// In the order of their records.
auto CLayout::SettingFields()
{
    return std::tie(mAuthor, mPrivateAuthor, mCreationDate, mModificationDate, mDescription, mFreeText, mShortFreeText,
                    mRevision, mCharacterSetting, mSetting409, mElementLabelFlags, mTrackStyle, mColorScheme,
                    mSetting413, mGridSpacing, mSetting415, mShowGrid, mZoomPercent, mWidth, mHeight, mColor,
                    mRectangle, mOGLParms, m3DTerrain, m3DOnlyTracks, mSetting428, mSetting429, mFlag430);
}

bool CLayout::ReadLayoutParameter(FILE* file, int version, int& elementCount)
{
    CTaggedFile records(file);
    records.ReadTable<LayoutFormat::kSettings>(SettingFields(), version);
    if (version >= LayoutFormat::kFirstVersionWithLayers) {
        std::string message;
        if (!mLayers->Load(file, version, message)) {
            ULog::Warn("%s: Failed to load layers, %s", "bool CLayout::ReadLayoutParameter(FILE *, int, int &)",
                       message.c_str());
            return false;
        }
    }
    records.Read(LayoutFormat::kNumElements.key, elementCount);
    return true;
}

bool CLayout::LoadElements(FILE* file, int count)
{
    for (int i = 0; i < count; ++i) {
        std::unique_ptr<CCompositeGeometry> element(new (std::nothrow) CCompositeGeometry);
        CErr::CheckNull(element.get(), kLoadFunction, "Failed to create CCompositeGeometry object");
        std::string message;
        if (!element->Load(file, message)) {
            ULog::Warn("%s: Failed to load layout, %s", kLoadFunction, message.c_str());
            return false;
        }
        AddItem(element.release());
    }
    return true;
}

void CLayout::LoadGroups(FILE* file, std::vector<int>& list)
{
    CTaggedFile records(file);
    int count = 0;
    records.Read(LayoutFormat::kNumGroupEntries.key, count);
    for (int i = 0; i < count; ++i) {
        unsigned char entry[4];
        size_t size = 0;
        if (!records.ReadBlock(LayoutFormat::kGroupEntry.key, entry, sizeof entry, size) || size < sizeof entry) {
            break;
        }
        list.push_back(BigEndian::Signed32(entry));
    }
}

bool CLayout::Save(const std::string* path)
{
    if (path != nullptr) {
        mFileName = *path;
    }
    if (mFileName.empty()) {
        return false;
    }
    KVUDate::FormatNow(mModificationDate, sizeof mModificationDate);
    Platform::COutputFile output(mFileName);
    FILE* file = output.Get();
    if (file == nullptr || feof(file) != 0) {
        return false;
    }
    KVUStr::HexChar_Encode(mPrivateAuthor, kHiddenAuthor, sizeof mPrivateAuthor);
    mZoomPercent = KVUNum::d2i(100.0 * mZoomFactor);
    return WriteContent(file) && output.Commit();
}

bool CLayout::WriteContent(FILE* file)
{
    tDocumentHeader{LayoutFormat::kMagic, LayoutFormat::kCurrentVersion}.Write(file);
    WriteLayoutParameter(file);
    BOOST_FOREACH(CCompositeGeometry* element, mElements) {
        element->Save(file);
    }
    std::vector<int> groupList;
    UGroups::SerializeGroups(mGroups, mElements, groupList);
    CTaggedFile records(file);
    records.Write(LayoutFormat::kNumGroupEntries.key, static_cast<int>(groupList.size()));
    for (const int entry : groupList) {
        records.Write(LayoutFormat::kGroupEntry.key, entry);
    }
    return ferror(file) == 0;
}

void CLayout::WriteLayoutParameter(FILE* file)
{
    CTaggedFile records(file);
    records.WriteTable<LayoutFormat::kSettings>(SettingFields());
    mLayers->Save(file);
    records.Write(LayoutFormat::kNumElements.key, static_cast<int>(mElements.size()));
}
