#include "TrackLibraries/Utilities/ULibraryConstants.h"

const char* ULibraryConstants::GetContentTypeText(tRailSetContentType type)
{
    switch (type) {
    case kContentTracks:
        return "Tracks";
    case kContentAccessories:
        return "Accessories";
    case kContentSlotCar:
        return "Slot Car";
    case kContentDigital:
        return "Digital/Electric";
    case kContentSymbols:
        return "Symbols";
    default:
        return "???";
    }
}
