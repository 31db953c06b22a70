#include "Preferences/CVLPreferences.h"

#include "CheckError/CErr.h"
#include "KVUPrefsValue/KVUPrefsValue.h"
#include "Platform/Released.h"

#include <new>

namespace {
template <class tValue>
struct tField {
    const char* key;
    tValue CVLPreferences::*member;
};

constexpr tField<bool> kSwitches[] = {
    {"VLSoundsOn", &CVLPreferences::mSoundsOn},
    {"VLAutoColorize", &CVLPreferences::mAutoColorize},
    {"VLFlexCanAppend", &CVLPreferences::mFlexCanAppend},
    {"VLSkipEmptyForRSSync", &CVLPreferences::mSkipEmptyForSync},
    {"VLDefaultWSShowGrid", &CVLPreferences::mDefaultShowGrid},
    {"VLDefaultWSShowElmNames", &CVLPreferences::mDefaultShowElementNames},
    {"VLDefaultWSOutlineNames", &CVLPreferences::mDefaultOutlineNames},
    {"VLDefaultWSShowPrefix", &CVLPreferences::mDefaultShowPrefix},
    {"VL3DTerrain", &CVLPreferences::m3DTerrain},
    {"VL3DGridOpt", &CVLPreferences::m3DGridOption},
    {"VL3DOnlyTracks", &CVLPreferences::m3DOnlyTracks},
    {"VL3DShowAllLayers", &CVLPreferences::m3DShowAllLayers},
    {"VLWinShowRSPalette", &CVLPreferences::mShowLibraryPalette},
    {"VLWinShowInfo", &CVLPreferences::mShowInfo},
    {"VLWinShowColorPalette", &CVLPreferences::mShowColorPalette},
    {"VLWinShowLayerPalette", &CVLPreferences::mShowLayerPalette},
    {"VLAutoOpenLastWS", &CVLPreferences::mOpenLastLayout},
    {"VLConnectTrackUsePlain", &CVLPreferences::mConnectTracksPlain},
    {"VLRSPaletteShowAvailability", &CVLPreferences::mPaletteShowAvailability},
    {"VLRSPaletteShowStockCount", &CVLPreferences::mPaletteShowStockCount},
};

constexpr tField<int> kNumbers[] = {
    {"VLRSPalSortMode", &CVLPreferences::mPaletteSortMode},
    {"VLWSDefaultZoom", &CVLPreferences::mDefaultZoom},
    {"VLWSDefaultTextZoomIdx", &CVLPreferences::mDefaultTextZoomIndex},
    {"VLWSDefaultColorScheme", &CVLPreferences::mDefaultColorScheme},
    {"VLWSDefaultTrackStyle", &CVLPreferences::mDefaultTrackStyle},
    {"VLElmPosDisplayMode", &CVLPreferences::mElementPositionMode},
    {"VLSnapLimit", &CVLPreferences::mSnapLimit},
    {"VLUnits", &CVLPreferences::mUnits},
    {"VLWSDefaultGridSpacing", &CVLPreferences::mDefaultGridSpacing},
    {"VLSnapAreaFactor", &CVLPreferences::mSnapAreaFactor},
    {"VLMaxConnectTrackItems", &CVLPreferences::mMaxConnectTrackItems},
    {"VLMinConnectDistance", &CVLPreferences::mMinConnectDistance},
    {"VLDefaultWSWidth", &CVLPreferences::mDefaultWidth},
    {"VLDefaultWSHeight", &CVLPreferences::mDefaultHeight},
};

constexpr char kKeyDefaultLibraryName[] = "VLDefaultRSName";
constexpr char kKeyStockFileName[] = "VLStockFileName";
constexpr char kKeyFileFormat[] = "VLPrefsFileFormat";

/// A key as a Core Foundation string.
Platform::tReleased<CFStringRef> KeyOf(const char* key)
{
    return Platform::tReleased<CFStringRef>(
        CFStringCreateWithCString(kCFAllocatorDefault, key, kCFStringEncodingASCII));
}
} // namespace

CFStringRef CVLPreferences::GetIdentifier()
{
    return CFSTR("com.velmora.Velmora");
}

CVLPreferences* CVLPreferences::Instance()
{
    static CVLPreferences* sInstance = nullptr;
    if (sInstance == nullptr) {
        sInstance = new (std::nothrow) CVLPreferences;
        CErr::CheckNull(sInstance, "static CVLPreferences *CVLPreferences::Instance()",
                        "Failed to construct CVLPreferences singleton member");
    }
    return sInstance;
}

CVLPreferences::CVLPreferences()
{
    Load();
}

void CVLPreferences::Load()
{
    const CFStringRef application = GetIdentifier();
    for (const tField<bool>& field : kSwitches) {
        KVUPrefsValue::ReadValue(KeyOf(field.key).get(), application, this->*field.member);
    }
    for (const tField<int>& field : kNumbers) {
        KVUPrefsValue::ReadValue(KeyOf(field.key).get(), application, this->*field.member);
    }
    KVUPrefsValue::ReadValue(KeyOf(kKeyDefaultLibraryName).get(), application, mDefaultLibraryName,
                             sizeof mDefaultLibraryName);
    KVUPrefsValue::ReadValue(KeyOf(kKeyStockFileName).get(), application, mStockFileName, sizeof mStockFileName);
}

void CVLPreferences::Save() const
{
    const CFStringRef application = GetIdentifier();
    KVUPrefsValue::WriteValue(KeyOf(kKeyFileFormat).get(), application, kFileFormat);
    for (const tField<bool>& field : kSwitches) {
        KVUPrefsValue::WriteValue(KeyOf(field.key).get(), application, this->*field.member);
    }
    for (const tField<int>& field : kNumbers) {
        KVUPrefsValue::WriteValue(KeyOf(field.key).get(), application, this->*field.member);
    }
    KVUPrefsValue::WriteValue(KeyOf(kKeyDefaultLibraryName).get(), application, mDefaultLibraryName);
    KVUPrefsValue::WriteValue(KeyOf(kKeyStockFileName).get(), application, mStockFileName);
    KVUPrefsValue::SyncPrefs(application);
}
