// check, parts, library and stock, as a user calls them.
#include "ProgramRun.h"
#include "input/LibraryFiles.h"
#include "output/CTable.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <sstream>
#include <sys/stat.h>

namespace fs = std::filesystem;
using tJSON = nlohmann::json;

static const std::string kSamples = SOURCE_FOLDER "/Samples";
static const std::string kLibrary = kSamples + "/libraries/Halvensen H0 Profilgleis";

static tJSON RunForJSON(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin() + 1, {"--format", "json"});
    const tProgramResult result = RunVelmora(arguments);
    EXPECT_EQ(result.status, 0) << result.err;
    return tJSON::parse(result.out, nullptr, false);
}

static std::string StockFile(const std::string& items)
{
    const std::string path = MakeFolder("stock") + "/Stock.xml";
    WriteFile(path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Velmora_Stock>" + items + "</Velmora_Stock>\n");
    return path;
}

static std::string StockItem(const std::string& number, const std::string& library, int count)
{
    return "<StockItem><ProductNr>" + number + "</ProductNr><Railset>" + library + "</Railset><Count>" +
           std::to_string(count) + "</Count></StockItem>";
}

TEST(Parts, CountByLibraryAndNumberAndAddUpTheLayouts)
{
    const tJSON one = RunForJSON({"parts", kSamples + "/oval.velmora"});
    long long sum = 0;
    long long tracks = 0;
    for (const tJSON& part : one["parts"]) {
        EXPECT_EQ(part["sum"], part["count"].get<long long>() * part["price"].get<long long>());
        sum += part["sum"].get<long long>();
        tracks += part["kind"] == "accessory" ? 0 : part["count"].get<long long>();
        EXPECT_FALSE(part["shared_number"].get<bool>());
        EXPECT_FALSE(part.contains("to_buy"));
    }
    EXPECT_EQ(one["totals"], (tJSON::array({{{"currency", 129}, {"sum", sum}}})));
    EXPECT_EQ(one["elements"]["tracks"], tracks);
    EXPECT_EQ(one["scales"]["H0"], tracks);

    const tJSON two = RunForJSON({"parts", kSamples + "/oval.velmora", kSamples + "/oval.velmora"});
    EXPECT_EQ(two["layouts"], 2);
    ASSERT_EQ(two["parts"].size(), one["parts"].size());
    for (size_t i = 0; i < one["parts"].size(); ++i) {
        EXPECT_EQ(two["parts"][i]["count"], 2 * one["parts"][i]["count"].get<int>());
    }
}

TEST(Parts, SayWhatIsInStockAndWhatMustBeBought)
{
    // More than needed, fewer, one that the layout does not need, and a number of the layout in another library.
    const std::string stock = StockFile(
        StockItem("3100", "Halvensen H0 Profilgleis", 100) + StockItem("3110", "Halvensen H0 Profilgleis", 2) +
        StockItem("9999", "Halvensen H0 Profilgleis", 5) + StockItem("3700", "Another &amp; Library", 5));
    const tJSON list = RunForJSON({"parts", "--stock", stock, kSamples + "/oval.velmora"});
    std::map<std::string, tJSON> parts;
    long long toBuy = 0;
    for (const tJSON& part : list["parts"]) {
        parts[part["number"].get<std::string>()] = part;
        toBuy += part["to_buy"].get<long long>() * part["price"].get<long long>();
    }
    EXPECT_EQ(parts["3100"]["in_stock"], 100);
    EXPECT_EQ(parts["3100"]["to_buy"], 0);
    EXPECT_EQ(parts["3110"]["to_buy"], parts["3110"]["count"].get<int>() - 2);
    EXPECT_EQ(parts["3700"]["in_stock"], 0);
    EXPECT_EQ(parts.count("9999"), 0u);
    EXPECT_EQ(list["to_buy"][0]["sum"], toBuy);

    const tProgramResult items = RunVelmora({"stock", stock});
    EXPECT_EQ(items.status, 0);
    EXPECT_NE(items.out.find("Another & Library         3700        5\n"), std::string::npos) << items.out;
    const tProgramResult page = RunVelmora({"parts", "--stock", stock, "--format", "html", kSamples + "/oval.velmora"});
    EXPECT_NE(page.out.find("<td>Quirrin Bauten &amp; Zubehör</td>"), std::string::npos);
    EXPECT_NE(page.out.find("<th class=\"number\">To buy</th>"), std::string::npos);
}

TEST(Parts, TakeTheUsersStockAndSaySo)
{
    const std::string home = MakeFolder("home");
    tProgramRun run;
    run.environment = {"XDG_DATA_HOME=" + home, "XDG_CONFIG_HOME=" + home};
    const auto inStock = [&](const std::string& option, std::string& err) {
        run.arguments = {BUILD_FOLDER "/velmora", "parts", "--format", "json", option, kSamples + "/oval.velmora"};
        const tProgramResult result = RunProgram(run);
        EXPECT_EQ(result.status, 0) << result.err;
        err = result.err;
        return tJSON::parse(result.out)["parts"][0].value("in_stock", -1);
    };
    const auto item = [](int count) { return StockItem("3100", "Halvensen H0 Profilgleis", count); };
    std::string err;
    EXPECT_EQ(inStock("--timeout=60", err), -1);
    EXPECT_EQ(err, "");
    std::filesystem::create_directories(home + "/Velmora");
    std::filesystem::copy(StockFile(item(7)), home + "/Velmora/Stock.xml");
    EXPECT_EQ(inStock("--timeout=60", err), 7);
    EXPECT_NE(err.find(home + "/Velmora/Stock.xml"), std::string::npos) << err;
    EXPECT_EQ(inStock("--no-stock", err), -1);
    EXPECT_EQ(err, "");
    EXPECT_EQ(inStock("--stock=" + StockFile(item(8)), err), 8);
    EXPECT_EQ(err, "");

    std::filesystem::create_directories(home + "/velmora");
    WriteFile(home + "/velmora/com.velmora.Velmora.plist",
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
              "version=\"1.0\"><dict><key>VLStockFileName</key><string>Mine.xml</string></dict></plist>");
    std::filesystem::copy(StockFile(item(9)), home + "/Velmora/Mine.xml");
    EXPECT_EQ(inStock("--timeout=60", err), 9);
}

TEST(Parts, MarkWhatLibrariesShareAndWhatTheyDoNotKnow)
{
    // Under the name of another library the same articles: every number of the first is shared then, and the library
    // that layouts name as the accessories' knows none of them.
    const std::string folder = MakeFolder("libraries");
    const std::string bytes = ReadFile(kLibrary);
    WriteFile(folder + "/Quirrin Bauten & Zubehör", bytes);
    const tJSON list = RunForJSON({"parts", "--library", kLibrary, "--library", folder + "/Quirrin Bauten & Zubehör",
                                   kSamples + "/oval.velmora"});
    for (const tJSON& part : list["parts"]) {
        const bool isTrack = part["library"] == "Halvensen H0 Profilgleis";
        EXPECT_EQ(part["shared_number"], isTrack) << part;
        EXPECT_EQ(part["unknown"], !isTrack) << part;
    }
    // The library whose name has its marks apart, as on a Mac's disk.
    const std::string decomposed = folder + "/moved/Quirrin Bauten & Zubeho\xCC\x88r";
    fs::create_directory(folder + "/moved");
    fs::copy_file(kSamples + "/libraries/Quirrin Bauten & Zubehör", decomposed);
    const tJSON moved = RunForJSON({"parts", "--library", decomposed, "--library", kLibrary, "--library",
                                    folder + "/Quirrin Bauten & Zubehör", kSamples + "/oval.velmora"});
    for (const tJSON& part : moved["parts"]) {
        EXPECT_FALSE(part["unknown"].get<bool>()) << part;
    }
    // The same two from a folder that the environment names; what is given comes first and wins.
    const std::string variable = "VELMORA_LIBRARIES=/nowhere:" + folder;
    tProgramRun run;
    run.arguments = {BUILD_FOLDER "/velmora",   "parts", "--format", "json", "--library", kSamples + "/libraries",
                     kSamples + "/oval.velmora"};
    run.environment = {variable};
    const tProgramResult fromEnvironment = RunProgram(run);
    const tJSON given = tJSON::parse(fromEnvironment.out);
    for (const tJSON& part : given["parts"]) {
        EXPECT_FALSE(part["unknown"].get<bool>()) << part;
    }
    const tJSON articles = RunForJSON({"library", kLibrary});
    EXPECT_EQ(articles["name"], "Halvensen H0 Profilgleis");
    EXPECT_EQ(articles["articles"].size(), 80u);
    const tProgramResult table = RunVelmora({"library", "--format", "csv", kLibrary, kLibrary});
    EXPECT_EQ(std::count(table.out.begin(), table.out.end(), '\n'), 161); // one line of titles
}

TEST(LibraryFiles, AreRegularFilesWithTheMagicTheFirstOfEachName)
{
    const std::string folder = MakeFolder("libraries");
    fs::create_directories(folder + "/f/sub/deep");
    fs::create_directories(folder + "/f/.git");
    fs::create_directories(folder + "/g");
    for (const char* name : {"/f/sub/deep/library", "/f/only the magic", "/f/.velmora-1-2", "/f/.git/hidden",
                             "/g/library", "/g/own", "/given"}) {
        WriteFile(folder + name, "RSet");
    }
    WriteFile(folder + "/f/cut", "RSe");
    fs::create_symlink(folder + "/g/own", folder + "/f/link");
    fs::create_directory_symlink(folder + "/g", folder + "/f/linked folder");
    fs::create_symlink("nowhere", folder + "/f/dangling");
    ASSERT_EQ(mkfifo((folder + "/f/fifo").c_str(), 0600), 0);
    setenv("VELMORA_LIBRARIES", (":" + folder + "/missing::" + folder + "/f:" + folder + "/g:").c_str(), 1);
    const std::vector<std::string> found = LibraryFiles::Find({folder + "/given", folder + "/missing"});
    unsetenv("VELMORA_LIBRARIES");
    const std::vector<std::string> expected = {folder + "/given",
                                               folder + "/missing",
                                               folder + "/f/link",
                                               folder + "/f/only the magic",
                                               folder + "/f/sub/deep/library",
                                               folder + "/g/own"};
    EXPECT_EQ(found, expected);
}

TEST(Check, NamesPlacesAndFailsForDamageOnly)
{
    const std::string whole = ReadFile(kSamples + "/oval.velmora");
    const std::string folder = MakeFolder("checked");
    WriteFile(folder + "/cut.velmora", whole.substr(0, whole.size() / 2));
    WriteFile(folder + "/library", ReadFile(kLibrary));
    const std::string stock = StockFile(StockItem("1", "L", 1) + "<StockItem><Count>2</Count></StockItem>");

    const tProgramResult good = RunVelmora({"check", kSamples + "/oval.velmora", folder + "/library"});
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_EQ(good.out, kSamples + "/oval.velmora: layout, 58 elements, whole\n" + folder +
                            "/library: track library, 80 elements, whole\n");
    const tProgramResult bad =
        RunVelmora({"check", "--format", "json", folder + "/cut.velmora", stock, "/nowhere", stock});
    EXPECT_EQ(bad.status, 1);
    std::istringstream lines(bad.out);
    std::vector<tJSON> records;
    for (std::string line; std::getline(lines, line);) {
        records.push_back(tJSON::parse(line));
    }
    ASSERT_EQ(records.size(), 4u);
    const tJSON& last = records[0]["findings"].back();
    EXPECT_LE(last["offset"], whole.size() / 2);
    EXPECT_GT(last["element"], 20);
    EXPECT_EQ(records[0]["reader"]["code"], 4);
    EXPECT_EQ(records[0]["reader"]["lost"], 58 - records[0]["reader"]["elements"].get<int>());
    EXPECT_EQ(records[1]["kind"], "stock file");
    EXPECT_EQ(records[1]["findings"][0]["element"], 2);
    EXPECT_EQ(records[2]["error"]["code"], 1);
    EXPECT_EQ(records[3]["kind"], "stock file");
}

TEST(DocumentCommands, SayInOneLineWhatCannotBeListed)
{
    const std::string folder = MakeFolder("wrong");
    WriteFile(folder + "/text", "no document\n");
    WriteFile(folder + "/version", std::string("RSet\0\0\0\x07", 8));
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {{{"library", folder + "/text"}, "is not a track library"},
                 {{"library", folder + "/version"}, "the version of the track library is not supported"},
                 {{"library", folder + "/none"}, "No such file or directory"},
                 {{"stock", folder + "/text"}, "is not a stock file"},
                 {{"parts", folder + "/text"}, "is not a layout document"},
                 {{"check", folder + "/text"}, "is no layout, track library or stock file"}};
    for (const auto& wrong : cases) {
        const tProgramResult result = RunVelmora(wrong.arguments);
        SCOPED_TRACE(wrong.arguments.back());
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_NE(result.err.find(wrong.message), std::string::npos) << result.err;
    }
}

TEST(Table, GuardsEachKindOfReader)
{
    CTable table({{"Name"}, {"Count", true}});
    table.AddRow({"=1+1", "-3"});
    table.AddRow({"a \"b\", c\n", "12"});
    table.AddRow({"<ü>", "7"});
    EXPECT_EQ(table.ToCSV(), "Name,Count\r\n'=1+1,-3\r\n\"a \"\"b\"\", c\n\",12\r\n<ü>,7\r\n");
    EXPECT_NE(table.ToCSV(true).find("\"a \"\"b\"\", c\\n\",12\r\n"), std::string::npos);
    EXPECT_EQ(table.ToText(), "Name        Count\n=1+1           -3\na \"b\", c\\n     12\n<ü>             7\n");
    EXPECT_NE(table.ToHTML().find("<tr><td>&lt;ü&gt;</td><td class=\"number\">7</td></tr>"), std::string::npos);
}
