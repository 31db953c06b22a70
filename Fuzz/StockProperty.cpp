#include "Properties.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailsetFolder.h"
#include "support/ScratchFile.h"

#include <filesystem>
#include <vector>

namespace {
/// Articles with their counts, a line each.
std::string Describe(const CStock& stock)
{
    CStock::tElements elements;
    stock.GetElements(elements);
    std::string text;
    for (const CCountedCIG* element : elements) {
        text += std::string(element->GetRailSetName()) + "#" + element->GetName() + "#" +
                std::to_string(element->GetCount()) + "\n";
    }
    return text;
}
} // namespace

std::string Properties::Stock(std::string_view bytes)
{
    [[maybe_unused]] static const bool sHasLibraries = [] {
        std::vector<std::string> paths;
        for (const auto& entry : std::filesystem::directory_iterator(FUZZ_LIBRARIES)) {
            paths.push_back(entry.path().string());
        }
        CRailsetFolder::Instance()->InitializeWithPaths(paths);
        return true;
    }();
    static CScratchFile sFile;
    sFile.Set(bytes);
    const std::string path = sFile.Path();
    size_t entries = 0;
    const CStock::eFileState state =
        CStock::ForEachEntry(path.c_str(), [&entries](const CStock::tEntry&) { ++entries; });
    CStock stock;
    const bool loaded = stock.LoadFromFile(path.c_str());
    if (loaded != (state == CStock::eFileState::kWhole) ||
        static_cast<size_t>(stock.GetSumOfElementTypes()) > entries) {
        return "loaded is " + std::to_string(loaded) + ", but the file has " + std::to_string(entries) + " entries";
    }
    if (!stock.SaveToFile(path.c_str())) {
        return "not saved";
    }
    const std::string saved = sFile.Get();
    CStock again;
    if (!again.LoadFromFile(path.c_str()) && stock.GetSumOfElementTypes() > 0) {
        return "saved, but not loaded again";
    }
    if (Describe(again) != Describe(stock)) {
        return "saved:\n" + Describe(stock) + "loaded again:\n" + Describe(again);
    }
    return again.SaveToFile(path.c_str()) && sFile.Get() == saved ? "" : "saved again, but not the same";
}
