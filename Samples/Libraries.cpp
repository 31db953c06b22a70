#include "Libraries.h"

#include "Catalogue.h"
#include "RomanText.h"
#include "Settle.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "KVUStr/KVUStr.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/CRailsetFolder.h"

#include <filesystem>
#include <memory>
#include <system_error>

namespace {
/// Only the date of the last save changes from run to run.
constexpr char kCreated[] = "Nov 21. 2026, 12:00:00";

bool MakeLibrary(const tLibrary& library, const std::string& path)
{
    CRailSet file(path);
    tRailSetParameters& parameters = file.GetParameters();
    parameters.modelScale = library.modelScale;
    parameters.currency = library.currency;
    parameters.contentType = library.contentType;
    parameters.gauge = library.gauge;
    parameters.railWidth = URailConstants::GetDefaultRailWidth(library.modelScale);
    parameters.trackbedWidth = library.trackbed;
    KVUStr::strncpy(parameters.manufacturer, RomanText(library.manufacturer).c_str(), sizeof parameters.manufacturer);
    file.SetCreationDate(kCreated);
    for (const tArticle& article : ArticlesOf(library)) {
        std::unique_ptr<CCompositeGeometry> element = NewElement(article);
        // What loading the library gives each of them.
        for (CBasicGeometry* component : element->GetComponents()) {
            component->SetTrackbedWidth(parameters.trackbedWidth);
            component->SetRailWidth(parameters.railWidth);
        }
        element->AlignComponentsLeftTop(nullptr); // lines count as wide as the trackbed
        Settle(*element);
        file.Append(element.release());
    }
    return file.Save();
}

/// An article of the track library and how many pieces of it there are.
struct tPossession {
    const tArticle& article;
    int count;
};

/// The throat's turnouts are there, the helix is half built, and platforms and depot are still to come. The curves of
/// radius 2 are left from the oval.
constexpr tPossession kPossessions[] = {
    {kStraight371, 40}, {kStraight240, 10}, {kStraight231, 2},  {kStraight185, 24}, {kStraight93, 8},
    {kStraight54, 6},   {kStraight50, 4},   {kCurve2, 12},      {kCurve3, 30},      {kCurve4, 30},
    {kCounterCurve, 6}, {kTurnoutLeft, 9},  {kTurnoutRight, 5}, {kSlipLeft, 1},     {kBumper, 6},
};
} // namespace

bool MakeLibraries(const std::string& folder)
{
    std::error_code error;
    std::filesystem::create_directory(folder, error);
    std::vector<std::string> paths;
    for (const tLibrary* library : {&kTrackLibrary, &kNarrowLibrary, &kAccessoryLibrary}) {
        paths.push_back(folder + "/" + library->name);
        if (!MakeLibrary(*library, paths.back())) {
            return false;
        }
    }
    CRailsetFolder::Instance()->InitializeWithPaths(paths);
    return true;
}

bool MakeStock(const std::string& path)
{
    CStock stock;
    for (const tPossession& possession : kPossessions) {
        std::unique_ptr<CCountedCIG> entry(stock.CreateCountedCIG(RomanText(possession.article.library->name).c_str(),
                                                                  RomanText(possession.article.number).c_str(),
                                                                  possession.count));
        if (!entry || stock.AddElement(entry.get()) == 0) {
            return false;
        }
        (void)entry.release();
    }
    return stock.SaveToFile(path.c_str());
}
