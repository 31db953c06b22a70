// How a layout is read from and written to its file.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Elements/Utilities/CMissingLayoutFontsDoctor.h"
#include "KVUByteOrdering/KVUByteOrdering.h"
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

#include <bit>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace {
enum : unsigned short {
    kKeyAuthor = 400,
    kKeyPrivateAuthor,
    kKeyCreationDate,
    kKeyModificationDate,
    kKeyDescription,
    kKeyFreeText,
    kKeyShortFreeText,
    kKeyRevision,
    kKeyCharacterSetting,
    kKeySetting409,
    kKeyElementLabelFlags,
    kKeyTrackStyle,
    kKeyColorScheme,
    kKeySetting413,
    kKeyGridSpacing,
    kKeySetting415,
    kKeyShowGrid,
    kKeyZoomPercent,
    kKeyWidth,
    kKeyHeight,
    kKeyColor,
    kKeyRectangle,
    kKeyOGLParms,
    kKeyNumElements,
    kKeyNumGroupEntries,
    kKeyGroupEntry,
    kKey3DTerrain,
    kKey3DOnlyTracks,
    kKeySetting428,
    kKeySetting429,
    kKeyFlag430
};
static_assert(kKeyNumElements == 423 && kKeyFlag430 == 430);

constexpr uint32_t kMagic = 0x576B5374; // "WkSt"
constexpr int kOldestVersion = 3;
constexpr int kFirstVersionWithLayers = 4;
constexpr int kCurrentVersion = 5;
constexpr size_t kHeaderSize = 8;

constexpr char kLoadFunction[] = "int CLayout::Load(string)";

/// Reads a structure that lies big-endian in its record; a missing or short record leaves it as it was.
template <typename tStructure>
void ReadStructure(CTaggedFile& records, unsigned short key, tStructure& structure)
{
    KVUByteOrdering::SwapHostToBig(structure);
    records.Read(key, &structure, sizeof structure);
    KVUByteOrdering::SwapBigToHost(structure);
}

template <typename tStructure>
void WriteStructure(CTaggedFile& records, unsigned short key, tStructure structure)
{
    KVUByteOrdering::SwapHostToBig(structure);
    records.Write(key, &structure, sizeof structure);
}

/// View parameters as their record holds them: swapped floats must not be handled as floats, some patterns would
/// change.
using tOGLBlock = unsigned char[CLayout::kNumOGLParms * sizeof(float)];

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
        unsigned char header[kHeaderSize];
        if (fread(header, sizeof header, 1, file) != 1 || BigEndian::Unsigned32(header) != kMagic) {
            return kNoLayout;
        }
        const int version = BigEndian::Signed32(header + 4);
        if (version < kOldestVersion) {
            return kUnsupportedVersion;
        }
        int elementCount = 0;
        if (!ReadLayoutParameter(file, version, elementCount)) {
            return kLayersFailed;
        }
        ResetWorkspaceBounds();
        mFileName = std::move(path);
        if (!LoadElements(file, elementCount)) {
            result = kElementFailed;
        }
        LoadGroups(file, groupList);
    }
    UGroups::DeserializeGroups(&mGroupsManager, mGroups, mElements, groupList);
    CLayoutJointsManager::SnapCloseJoints();
    CMissingLayoutFontsDoctor doctor(mElements);
    CDisplayOptionsManager::Instance()->SetTrackStyle(mTrackStyle);
    return result;
}

bool CLayout::ReadLayoutParameter(FILE* file, int version, int& elementCount)
{
    CTaggedFile records(file);
    records.Read(kKeyAuthor, mAuthor, sizeof mAuthor);
    records.Read(kKeyPrivateAuthor, mPrivateAuthor, sizeof mPrivateAuthor);
    records.Read(kKeyCreationDate, mCreationDate, sizeof mCreationDate);
    records.Read(kKeyModificationDate, mModificationDate, sizeof mModificationDate);
    records.Read(kKeyDescription, mDescription, sizeof mDescription);
    records.Read(kKeyFreeText, mFreeText, sizeof mFreeText);
    records.Read(kKeyShortFreeText, mShortFreeText, sizeof mShortFreeText);
    records.Read(kKeyRevision, mRevision, sizeof mRevision);
    records.Read(kKeyCharacterSetting, mCharacterSetting);
    records.Read(kKeySetting409, mSetting409);
    records.Read(kKeyElementLabelFlags, mElementLabelFlags);
    records.Read(kKeyTrackStyle, mTrackStyle);
    records.Read(kKeyColorScheme, mColorScheme);
    records.Read(kKeySetting413, mSetting413);
    records.Read(kKeyGridSpacing, mGridSpacing);
    records.Read(kKeySetting415, mSetting415);
    records.Read(kKeyShowGrid, mShowGrid);
    records.Read(kKeyZoomPercent, mZoomPercent);
    records.Read(kKeyWidth, mWidth);
    records.Read(kKeyHeight, mHeight);
    ReadStructure(records, kKeyColor, mColor);
    ReadStructure(records, kKeyRectangle, mRectangle);
    tOGLBlock parameters;
    size_t size = 0;
    if (records.ReadBlock(kKeyOGLParms, parameters, sizeof parameters, size) && size == sizeof parameters) {
        for (size_t i = 0; i < kNumOGLParms; ++i) {
            mOGLParms[i] = std::bit_cast<float>(BigEndian::Unsigned32(parameters + i * sizeof(float)));
        }
    }
    if (version >= kFirstVersionWithLayers) {
        records.Read(kKey3DTerrain, m3DTerrain);
        records.Read(kKey3DOnlyTracks, m3DOnlyTracks);
        if (version >= kCurrentVersion) {
            records.Read(kKeySetting428, mSetting428);
            records.Read(kKeySetting429, mSetting429);
            records.Read(kKeyFlag430, mFlag430);
        }
        std::string message;
        if (!mLayers->Load(file, version, message)) {
            ULog::Warn("%s: Failed to load layers, %s", "bool CLayout::ReadLayoutParameter(FILE *, int, int &)",
                       message.c_str());
            return false;
        }
    }
    records.Read(kKeyNumElements, elementCount);
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
    records.Read(kKeyNumGroupEntries, count);
    for (int i = 0; i < count; ++i) {
        unsigned char entry[4];
        size_t size = 0;
        if (!records.ReadBlock(kKeyGroupEntry, entry, sizeof entry, size) || size < sizeof entry) {
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
    unsigned char header[kHeaderSize];
    BigEndian::StoreUnsigned32(kMagic, header);
    BigEndian::StoreUnsigned32(kCurrentVersion, header + 4);
    fwrite(header, sizeof header, 1, file);
    WriteLayoutParameter(file);
    BOOST_FOREACH(CCompositeGeometry* element, mElements) {
        element->Save(file);
    }
    std::vector<int> groupList;
    UGroups::SerializeGroups(mGroups, mElements, groupList);
    CTaggedFile records(file);
    records.Write(kKeyNumGroupEntries, static_cast<int>(groupList.size()));
    for (const int entry : groupList) {
        records.Write(kKeyGroupEntry, entry);
    }
    return ferror(file) == 0;
}

void CLayout::WriteLayoutParameter(FILE* file)
{
    CTaggedFile records(file);
    records.Write(kKeyAuthor, mAuthor);
    records.Write(kKeyPrivateAuthor, mPrivateAuthor);
    records.Write(kKeyCreationDate, mCreationDate);
    records.Write(kKeyModificationDate, mModificationDate);
    records.Write(kKeyDescription, mDescription);
    records.Write(kKeyFreeText, mFreeText);
    records.Write(kKeyShortFreeText, mShortFreeText);
    records.Write(kKeyRevision, mRevision);
    records.Write(kKeyCharacterSetting, mCharacterSetting);
    records.Write(kKeySetting409, mSetting409);
    records.Write(kKeyElementLabelFlags, mElementLabelFlags);
    records.Write(kKeyTrackStyle, mTrackStyle);
    records.Write(kKeyColorScheme, mColorScheme);
    records.Write(kKeySetting413, mSetting413);
    records.Write(kKeyGridSpacing, mGridSpacing);
    records.Write(kKeySetting415, mSetting415);
    records.Write(kKeyShowGrid, mShowGrid);
    records.Write(kKeyZoomPercent, mZoomPercent);
    records.Write(kKeyWidth, mWidth);
    records.Write(kKeyHeight, mHeight);
    WriteStructure(records, kKeyColor, mColor);
    WriteStructure(records, kKeyRectangle, mRectangle);
    tOGLBlock parameters;
    for (size_t i = 0; i < kNumOGLParms; ++i) {
        BigEndian::StoreUnsigned32(std::bit_cast<uint32_t>(mOGLParms[i]), parameters + i * sizeof(float));
    }
    records.Write(kKeyOGLParms, parameters, sizeof parameters);
    records.Write(kKey3DTerrain, m3DTerrain);
    records.Write(kKey3DOnlyTracks, m3DOnlyTracks);
    records.Write(kKeySetting428, mSetting428);
    records.Write(kKeySetting429, mSetting429);
    records.Write(kKeyFlag430, mFlag430);
    mLayers->Save(file);
    records.Write(kKeyNumElements, static_cast<int>(mElements.size()));
}
