// The user's preferences.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// All preferences of the application. Fields are read once from the preference store and reach it again only by Save;
/// each comment names the key. Texts are Mac OS Roman.
///
/// What Instance() returns is the one everybody reads; further objects serve as working copies of it.
class CVLPreferences {
public:
    /// Value of the key VLPrefsFileFormat: Save writes it, nothing reads it.
    static constexpr int kFileFormat = 3;

    /// What the preference store calls the application, whatever bundle the core runs in. Not owned.
    static CFStringRef GetIdentifier();

    /// The shared preferences, read at first use and never destroyed.
    static CVLPreferences* Instance();

    /// Sets every default, then loads.
    CVLPreferences();

    /// Reads every key. One that is missing or of the wrong type leaves its field as it is; texts are cut to their
    /// fields. Values are not checked against the ranges of their users.
    void Load();

    /// Writes every key and stores them on disk.
    void Save() const;

    char mDefaultLibraryName[128] = "";     ///< VLDefaultRSName
    char mStockFileName[256] = "Stock.xml"; ///< VLStockFileName
    bool mSoundsOn = true;                  ///< VLSoundsOn
    bool mAutoColorize = true;              ///< VLAutoColorize
    bool mFlexCanAppend = false;            ///< VLFlexCanAppend
    bool mSkipEmptyForSync = true;          ///< VLSkipEmptyForRSSync: empty fields do not overwrite
    bool mDefaultShowGrid = true;           ///< VLDefaultWSShowGrid; mDefault... are those of a new layout
    bool mDefaultShowElementNames = false;  ///< VLDefaultWSShowElmNames
    bool mDefaultOutlineNames = true;       ///< VLDefaultWSOutlineNames
    bool mDefaultShowPrefix = true;         ///< VLDefaultWSShowPrefix
    bool m3DTerrain = false;                ///< VL3DTerrain
    bool m3DGridOption = false;             ///< VL3DGridOpt
    bool m3DOnlyTracks = false;             ///< VL3DOnlyTracks
    bool m3DShowAllLayers = false;          ///< VL3DShowAllLayers
    bool mShowLibraryPalette = true;        ///< VLWinShowRSPalette
    bool mShowInfo = true;                  ///< VLWinShowInfo
    bool mShowColorPalette = true;          ///< VLWinShowColorPalette
    bool mShowLayerPalette = false;         ///< VLWinShowLayerPalette
    bool mOpenLastLayout = false;           ///< VLAutoOpenLastWS
    bool mConnectTracksPlain = true;        ///< VLConnectTrackUsePlain
    bool mPaletteShowAvailability = false;  ///< VLRSPaletteShowAvailability
    bool mPaletteShowStockCount = false;    ///< VLRSPaletteShowStockCount
    int mPaletteSortMode = 0;               ///< VLRSPalSortMode
    int mDefaultZoom = 50;                  ///< VLWSDefaultZoom, percent
    int mDefaultTextZoomIndex = 2;          ///< VLWSDefaultTextZoomIdx
    int mDefaultColorScheme = 1;            ///< VLWSDefaultColorScheme
    int mDefaultTrackStyle = 105;           ///< VLWSDefaultTrackStyle
    int mElementPositionMode = 1;           ///< VLElmPosDisplayMode
    int mSnapLimit = 135;                   ///< VLSnapLimit
    int mUnits = 2;                         ///< VLUnits, a code of UUnits
    int mDefaultGridSpacing = 10;           ///< VLWSDefaultGridSpacing
    int mSnapAreaFactor = 100;              ///< VLSnapAreaFactor
    int mMaxConnectTrackItems = 4;          ///< VLMaxConnectTrackItems
    int mMinConnectDistance = 2;            ///< VLMinConnectDistance
    int mDefaultWidth = 4000;               ///< VLDefaultWSWidth, mm
    int mDefaultHeight = 2500;              ///< VLDefaultWSHeight, mm
};
