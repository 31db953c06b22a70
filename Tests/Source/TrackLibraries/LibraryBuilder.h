// Track library files made without the core's own writer, and a folder for them.
#pragma once

#include "support/DocumentBuilder.h"
#include "support/Files.h"

#include <string>
#include <vector>

struct tLibrary {
    unsigned version = 2;
    int scale = 16;
    int contentType = 1;
    int currency = 129;
    int gauge = 165; ///< tenths of a mm, as the next two
    int trackbedWidth = 330;
    int railWidth = 9;
    std::string text107 = "Text 107";
    std::string manufacturer = "Maker";
    std::string text109 = "Text 109";
    std::string text110 = "Text 110";
    std::string prefix = "Pre";
    std::string text112 = "Text 112";
    std::string text113 = "Text 113";
    std::string creationDate = "Jan  1. 2001, 00:00:00";
    std::string modificationDate = "Jan  2. 2001, 00:00:00";
    std::vector<tElement> elements = {};
};

inline CRecords Library(const tLibrary& library)
{
    CRecords records;
    records.Raw("RSet" + Bytes32(library.version)).Int(100, std::ssize(library.elements));
    int key = 101;
    for (const int number : {library.scale, library.contentType, library.currency, library.gauge, library.trackbedWidth,
                             library.railWidth}) {
        records.Int(key++, number);
    }
    for (const std::string* text :
         {&library.text107, &library.manufacturer, &library.text109, &library.text110, &library.prefix,
          &library.text112, &library.text113, &library.creationDate, &library.modificationDate}) {
        records.Text(key++, *text);
    }
    for (const tElement& element : library.elements) {
        records.Append(Element(element));
    }
    return records;
}

/// Track of the default gauge that lies aligned at (0, 0).
inline tCommon AlignedTrack()
{
    return {.gauge = 16.5, .trackbedWidth = 33.0};
}

inline tElement Article(const std::string& name)
{
    return {.name = name, .manufacturer = "Maker", .components = {Straight(AlignedTrack(), 180)}};
}

/// A folder for libraries.
class CLibraryFolder : public CTestFolder {
public:
    using CTestFolder::Write;
    std::string Write(const std::string& name, const tLibrary& library) const
    {
        return Write(name, Library(library).Bytes());
    }
};
