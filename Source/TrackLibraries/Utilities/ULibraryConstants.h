// What a track library holds.
#pragma once

/// Category of a track library. A file may hold any number; those of ULibraryConstants::eContentType have a meaning.
using tRailSetContentType = int;

/// The categories and their names.
class ULibraryConstants {
public:
    ULibraryConstants() = delete;

    enum eContentType : tRailSetContentType {
        kContentTracks = 1,
        kContentAccessories = 2,
        kContentSlotCar = 3,
        kContentDigital = 4,
        kContentSymbols = 5
    };

    /// "Tracks", "Accessories", "Slot Car", "Digital/Electric", "Symbols"; "???" for any other number.
    static const char* GetContentTypeText(tRailSetContentType type);
};
