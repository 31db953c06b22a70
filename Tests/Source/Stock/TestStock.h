// A few track libraries for stock files to name.
#pragma once

#include "BuildingBlocks/CCountedCIG.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/CRailsetFolder.h"
#include "support/Files.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

/// Writes a library. @param name  of its file, UTF-8 @return its path
inline std::string WriteLibrary(const std::string& name, const std::vector<std::string>& articles)
{
    std::filesystem::create_directories(TestPath("libraries"));
    const std::string path = TestPath("libraries/" + name);
    CRailSet library(path);
    for (const std::string& article : articles) {
        auto* const element = new CCompositeGeometry;
        element->SetName(article.c_str());
        library.Append(element);
    }
    if (!library.Save()) {
        throw std::runtime_error("library not written");
    }
    return path;
}

/// Every test knows the libraries Alpha (A1 to A3), Alpha! (X1) and one each with odd names; once a process.
inline void RegisterLibraries()
{
    static const bool sOnce = [] {
        CRailsetFolder::Instance()->InitializeWithPaths(
            {WriteLibrary("Alpha", {"A1", "A2", "A3"}), WriteLibrary("Alpha!", {"X1"}),
             WriteLibrary("S\xC3\xB6hne & <Co>", {"a<b & 'c' > \"d\"", "&amp;", "\x80\x8A\xF0\xDB", " ", "\t", "a\rb\n",
                                                  "\x01\x1F", "Velmora_Stock", "StockItem", "xml", "XML_DOCUMENT"}),
             WriteLibrary(std::string(127, '\''), {std::string(31, '&')}), WriteLibrary("Broken", {"B1"})});
        WriteTestFile("libraries/Broken", "no library any more");
        return true;
    }();
    (void)sOnce;
}

inline std::string Item(const std::string& number, const std::string& library, const std::string& count)
{
    return "<StockItem><ProductNr>" + number + "</ProductNr><Railset>" + library + "</Railset><Count>" + count +
           "</Count></StockItem>";
}

inline std::string StockFile(const std::string& items)
{
    return "<?xml version=\"1.0\"?>\n<Velmora_Stock>" + items + "</Velmora_Stock>\n";
}

/// "library/number/count" of each entry, in the stock's order.
inline std::vector<std::string> Entries(const CStock& stock)
{
    CStock::tElements elements;
    stock.GetElements(elements);
    std::vector<std::string> result;
    for (const CCountedCIG* element : elements) {
        result.push_back(std::string(element->GetRailSetName()) + "/" + element->GetName() + "/" +
                         std::to_string(element->GetCount()));
    }
    return result;
}
