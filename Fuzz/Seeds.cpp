// fuzz-seeds FOLDER: writes what the fuzz programs begin with: small documents with one of everything, and the words of
// each form.
#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CTaggedFile/CTaggedFile.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Formats/ComponentFormat.h"
#include "Formats/ElementFormat.h"
#include "Formats/LayoutFormat.h"
#include "Formats/LibraryFormat.h"
#include "Layers/CLayerManager.h"
#include "Layouts/Groups/UGroups.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Preferences/CVLPreferences.h"
#include "TrackLibraries/CRailSet.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace {
std::string sFolder; ///< where everything goes
bool sFailed = false;

void WriteFile(const std::string& name, const std::string& bytes)
{
    std::ofstream file(sFolder + "/" + name, std::ios::binary);
    file << bytes;
    sFailed = !file.flush() || sFailed;
}

std::string SeedPath(const std::string& target, const std::string& name)
{
    std::filesystem::create_directories(sFolder + "/seeds/" + target);
    return sFolder + "/seeds/" + target + "/" + name;
}

/// One of each kind, with something in it.
std::vector<CBasicGeometry*> MakeComponents()
{
    auto* open = new CPolyBIG;
    open->SetPoints({{0, 0, 0}, {10, 0, 0}, {20, 7, 0}});
    auto* flex = new CFlexTrackBIG;
    flex->SpecifyFlexGeometry(1.0, 2.0, {{0, 0, 0}, {100, 0, 0}, {200, 50, 0}}, 30.0, 30.0, 900.0);
    auto* text = new CTextBIG;
    text->SpecifyTextGeometry("Gleis 1\nSchuppen", "Futura", 24);
    return {new CStraightBIG, new CCurveBIG, new COvalBIG, text, flex, open};
}

std::vector<CCompositeGeometry*> MakeElements()
{
    std::vector<CCompositeGeometry*> elements;
    for (CBasicGeometry* component : MakeComponents()) {
        auto* element = new CCompositeGeometry;
        element->AppendBIG(component);
        element->SetName(std::to_string(100 + elements.size()).c_str());
        element->SetRailSetName("Library");
        element->SetAngle(30.0 * static_cast<double>(elements.size()));
        element->SetPosition(150.0 * static_cast<double>(elements.size()), 60.0);
        elements.push_back(element);
    }
    elements.push_back(new CCompositeGeometry); // several components, as a turnout has
    for (CBasicGeometry* component : MakeComponents()) {
        elements.back()->AppendBIG(component);
    }
    return elements;
}

void MakeLayouts()
{
    CBoundLayout layout;
    layout.SetAuthor("Ada");
    layout.SetDesc("Oval");
    layout.GetLayerList()->AddLayer("Track");
    std::string path = SeedPath("layout", "empty");
    sFailed = !layout.Save(&path) || sFailed;
    for (CCompositeGeometry* element : MakeElements()) {
        element->SetLayer(layout.GetLayerList()->GetLayerAtIndex(1));
        layout.AddItem(element);
    }
    const std::vector<CCompositeGeometry*>& elements = layout.GetElements();
    UGroups::NewGroupFromElementVector(&layout, {elements[0], elements[1]});
    UGroups::NewGroupFromElementVector(&layout, {elements[1], elements[2]});
    path = SeedPath("layout", "elements");
    sFailed = !layout.Save(&path) || sFailed;
    std::filesystem::copy(sFolder + "/seeds/layout", sFolder + "/seeds/drawing",
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing);
}

void MakeLibrary()
{
    CRailSet library(SeedPath("library", "Library"));
    for (CCompositeGeometry* element : MakeElements()) {
        library.Append(element);
    }
    sFailed = !library.Save() || sFailed;
}

/// The length of the elements' block (two bytes, the lower one first), then that block and the groups'.
void MakeClipboard()
{
    CBoundLayout layout;
    for (CCompositeGeometry* element : MakeElements()) {
        layout.AddItem(element);
    }
    std::vector<CCompositeGeometry*> elements = layout.GetElements();
    UGroups::NewGroupFromElementVector(&layout, {elements[0], elements[1]});
    unsigned long elementSize = 0;
    const std::unique_ptr<unsigned char[]> elementBlock(
        UElementVectorOperations::ElementVectorToRawMem(elements, elementSize));
    size_t groupSize = 0;
    const std::unique_ptr<unsigned char[]> groupBlock(
        UGroups::GroupVectorToRawMem(layout.GetGroups(), elements, groupSize));
    std::string bytes = {static_cast<char>(elementSize), static_cast<char>(elementSize >> 8)};
    bytes.append(reinterpret_cast<const char*>(elementBlock.get()), elementSize);
    bytes.append(reinterpret_cast<const char*>(groupBlock.get()), groupSize);
    std::ofstream(SeedPath("clipboard", "elements"), std::ios::binary) << bytes;
}

/// Lines of a dictionary of libFuzzer, each once.
class CDictionary {
public:
    void Add(const std::string& word)
    {
        std::string line = "\"";
        for (const char character : word) {
            char code[8];
            snprintf(code, sizeof code, "\\x%02X", static_cast<unsigned char>(character));
            line += code;
        }
        mLines.insert(line + "\"\n");
    }
    template <typename tNumber>
    void AddNative(tNumber number)
    {
        Add(std::string(reinterpret_cast<const char*>(&number), sizeof number));
    }
    /// The header of each record, as it lies in a document.
    void AddRecords(std::initializer_list<std::span<const tRecord>> tables)
    {
        for (const std::span<const tRecord>& table : tables) {
            for (const tRecord& record : table) {
                unsigned char bytes[kRecordHeader];
                BigEndian::StoreUnsigned16(record.key, bytes);
                BigEndian::StoreUnsigned16(record.size, bytes + 2);
                Add(std::string(std::begin(bytes), std::end(bytes)));
            }
        }
    }
    void Write(const std::string& target) const
    {
        std::string text;
        for (const std::string& line : mLines) {
            text += line;
        }
        WriteFile(target + ".dict", text);
    }

private:
    std::set<std::string> mLines;
};

void MakeHostDictionaries()
{
    CDictionary json;
    for (const char* word : {"\"findings\":[",
                             "\"reader\":{",
                             "\"articles\":[",
                             "\"parts\":[",
                             "\"scales\":[",
                             "\"number\":\"",
                             "\"library\":\"",
                             "\"count\":9223372036854775807",
                             "\"price\":-9",
                             "\"id\":",
                             "\"path\":\"",
                             "\"path_base64\":\"",
                             "\"verb\":\"render\",",
                             "\"verb\":\"thumbnail\",\"size\":16,",
                             "\"verb\":\"check\",",
                             "\"verb\":\"parts\",",
                             "\"layers\":[\"",
                             "\"output\":\"/",
                             "\"track_length\":",
                             "1e308",
                             "18446744073709551615",
                             "\\u001b[31m",
                             "\\ud83d\\ude82",
                             "\\u0000",
                             "},{",
                             "{\"path\":\"a\"}\n"}) {
        json.Add(word);
    }
    json.Write("report");
    json.Write("serve");
    CDictionary query;
    for (const char* word : {" OR ", " AND ", "NOT ", "author:", "layers:(", "\"*", "* ", "\n", "\u00E4", "\u00DF",
                             "\uFB01", "\u0308", "\u00C4", "NEAR("}) {
        query.Add(word);
    }
    query.Write("query");
}

void MakeDictionaries()
{
    CDictionary elements;
    elements.Add("RCig");
    elements.AddRecords({ElementFormat::kTexts,
                         ElementFormat::kNumbers,
                         ElementFormat::kGrade,
                         ElementFormat::kPlacement,
                         {&ElementFormat::kLayerName, 1},
                         {&ElementFormat::kNumComponents, 1},
                         {&ComponentFormat::kType, 1},
                         ComponentFormat::kCommon,
                         ComponentFormat::kStraight,
                         ComponentFormat::kCurve,
                         ComponentFormat::kOval,
                         ComponentFormat::kTextItem,
                         {&ComponentFormat::kNumPoints, 1},
                         ComponentFormat::kPoint,
                         ComponentFormat::kPolygon,
                         ComponentFormat::kFlexTrack});
    CDictionary layout = elements;
    layout.AddRecords({LayoutFormat::kSettings,
                       {&LayoutFormat::kNumLayers, 1},
                       {&LayoutFormat::kLayerName, 1},
                       LayoutFormat::kLayerState,
                       {&LayoutFormat::kNumElements, 1},
                       {&LayoutFormat::kNumGroupEntries, 1},
                       {&LayoutFormat::kGroupEntry, 1}});
    layout.Write("layout");
    layout.Write("drawing");
    CDictionary library = elements;
    library.AddRecords(
        {{&LibraryFormat::kNumElements, 1}, LibraryFormat::kCodes, LibraryFormat::kWidths, LibraryFormat::kTexts});
    library.Write("library");

    CDictionary clipboard;
    using tLimits = std::numeric_limits<double>;
    for (const double number : {0.0, -0.0, 1.0, 1e300, -1e300, 1e9, tLimits::quiet_NaN(), tLimits::infinity(),
                                -tLimits::infinity(), tLimits::max(), tLimits::denorm_min(), 360.0}) {
        clipboard.AddNative(number);
    }
    for (const int number : {0, 1, -1, 2, 1000000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        clipboard.AddNative(number);
    }
    clipboard.Write("clipboard");

    CDictionary xml;
    for (const char* word : {"<",
                             "/>",
                             "</",
                             "<?xml version=\"1.0\" encoding=\"",
                             "UTF-16",
                             "ISO-8859-1",
                             "<!DOCTYPE ",
                             "<![CDATA[",
                             "]]>",
                             "<!--",
                             "-->",
                             "&amp;",
                             "&#0;",
                             "&#x10FFFF;",
                             "&lt;",
                             "<!ENTITY ",
                             "\xEF\xBB\xBF",
                             "\xFF\xFE",
                             "\xFE\xFF",
                             "<dict>",
                             "</dict>",
                             "<array>",
                             "<integer>",
                             "<real>",
                             "<true/>",
                             "<data>",
                             "<date>",
                             "<key>",
                             "<string>",
                             "-2147483649",
                             "1e999",
                             "nan"}) {
        xml.Add(word);
    }
    xml.Write("stock");
    xml.Write("preferences");
    MakeHostDictionaries();
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: fuzz-seeds FOLDER\n");
        return 2;
    }
    sFolder = argv[1];
    // The file of the preferences is a seed.
    setenv("XDG_CONFIG_HOME", std::filesystem::absolute(SeedPath("preferences", "")).c_str(), 1);
    CVLPreferences().Save();
    MakeLayouts();
    MakeLibrary();
    MakeClipboard();
    MakeDictionaries();
    return sFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}
