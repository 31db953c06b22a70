// check, parts, library and stock, as a user calls them.
#include "ProgramRun.h"
#include "input/LibraryFiles.h"

#include <algorithm>
#include <fcntl.h>
#include <map>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using tJSON = nlohmann::json;

static const std::string kSamples = SOURCE_FOLDER "/Samples";
static const std::string kOval = kSamples + "/oval.velmora";
static const std::string kLibrary = kSamples + "/libraries/Halvensen H0 Profilgleis";

static const std::string kTrack = "Halvensen H0 Profilgleis";

static tJSON RunForJSON(std::vector<std::string> arguments, const std::vector<std::string>& environment = {})
{
    arguments.insert(arguments.begin() + 1, {"--format", "json"});
    const tProgramResult result = RunVelmora(arguments, "", environment);
    EXPECT_EQ(result.status, 0) << result.err;
    tJSON json = tJSON::parse(result.out, nullptr, false);
    json["err"] = result.err;
    return json;
}

static std::string StockItem(const std::string& number, const std::string& library, int count)
{
    return "<StockItem><ProductNr>" + number + "</ProductNr><Railset>" + library + "</Railset><Count>" +
           std::to_string(count) + "</Count></StockItem>";
}

/// A stock file with these items. @return its path
static std::string WriteStock(const std::string& path, const std::string& items)
{
    WriteFile(path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Velmora_Stock>" + items + "</Velmora_Stock>\n");
    return path;
}

TEST(Parts, AddUpTheLayoutsAndWhatMustBeBought)
{
    // More than needed, fewer, one that the layout does not need, and a number of the layout in another library.
    const std::string stock = WriteStock(TestPath("Stock.xml"), StockItem("3100", "Halvensen H0 Profilgleis", 100) +
                                                                    StockItem("3110", "Halvensen H0 Profilgleis", 2) +
                                                                    StockItem("9999", "Halvensen H0 Profilgleis", 5) +
                                                                    StockItem("3700", "Another &amp; Library", 5));
    const tJSON one = RunForJSON({"parts", "--stock", stock, kOval});
    const tJSON two = RunForJSON({"parts", kOval, kOval});
    EXPECT_EQ(two["layouts"], 2);
    ASSERT_EQ(two["parts"].size(), one["parts"].size());
    int64_t sum = 0;
    int64_t sumToBuy = 0;
    int tracks = 0;
    for (size_t i = 0; i < one["parts"].size(); ++i) {
        const tJSON& part = one["parts"][i];
        const int count = part["count"];
        const int price = part["price"];
        EXPECT_EQ(two["parts"][i]["count"], 2 * count);
        EXPECT_FALSE(two["parts"][i].contains("to_buy"));
        EXPECT_EQ(part["sum"], count * price);
        EXPECT_EQ(part["shared_number"], false);
        const int has = part["number"] == "3100" ? 100 : part["number"] == "3110" ? 2 : 0;
        EXPECT_EQ(part["in_stock"], has);
        EXPECT_EQ(part["to_buy"], std::max(count - has, 0));
        sum += count * price;
        sumToBuy += std::max(count - has, 0) * price;
        tracks += part["kind"] == "accessory" ? 0 : count;
        EXPECT_NE(part["number"], "9999");
    }
    EXPECT_EQ(one["totals"], (tJSON::array({{{"currency", 129}, {"sum", sum}}})));
    EXPECT_EQ(one["to_buy"][0]["sum"], sumToBuy);
    EXPECT_EQ(one["elements"]["tracks"], tracks);
    EXPECT_EQ(one["scales"]["H0"], tracks);

    const std::string items = RunVelmora({"stock", stock}).out;
    EXPECT_NE(items.find("Another & Library         3700        5\n"), std::string::npos) << items;
    const std::string page = RunVelmora({"parts", "--stock", stock, "--format", "html", kOval}).out;
    EXPECT_NE(page.find("<td>Quirrin Bauten &amp; Zubehör</td>"), std::string::npos);
    EXPECT_NE(page.find("<th class=\"number\">To buy</th>"), std::string::npos);
}

TEST(Parts, GroupsAndListsOfLayoutsAddUpToTheTotal)
{
    const std::string stock =
        WriteStock(TestPath("Stock.xml"),
                   StockItem("3100", kTrack, 9) + StockItem("3110", kTrack, 10) + StockItem("3120", kTrack, 1));
    const auto sumOf = [](const tJSON& list, const char* key) {
        std::map<std::string, int> sums;
        for (const tJSON& part : list) {
            sums[part["library"].get<std::string>() + part["number"].get<std::string>()] += part[key].get<int>();
        }
        return sums;
    };
    for (const std::string by : {"layer", "library"}) {
        const tJSON all =
            RunForJSON({"parts", "--stock", stock, "--per-layout", "--by", by, kOval, kSamples + "/terminus.velmora"});
        for (const char* key : {"count", "to_buy"}) { // the stock is given out once
            tJSON ofGroups = tJSON::array();
            tJSON ofLayouts = tJSON::array();
            for (const tJSON& group : all["groups"]) {
                EXPECT_EQ(group.contains(by), true);
                ofGroups.insert(ofGroups.end(), group["parts"].begin(), group["parts"].end());
            }
            for (const tJSON& layout : all["by_layout"]) {
                ofLayouts.insert(ofLayouts.end(), layout["parts"].begin(), layout["parts"].end());
            }
            EXPECT_EQ(sumOf(ofGroups, key), sumOf(all["parts"], key));
            EXPECT_EQ(sumOf(ofLayouts, key), sumOf(all["parts"], key));
        }
        EXPECT_EQ(all["by_layout"][0]["author"], "J\xC3\xBCrgen S\xC3\xA4nftl");
    }
    const tJSON toBuy = RunForJSON({"parts", "--stock", stock, "--to-buy", kOval});
    for (const tJSON& part : toBuy["parts"]) {
        EXPECT_GT(part["to_buy"], 0);
        EXPECT_NE(part["number"], "3100");
    }
}

TEST(Parts, AreWrittenForSpreadsheetsWithMoneyAndLengths)
{
    const std::string home = MakeFolder("home");
    const std::string flexible = SOURCE_FOLDER "/Tests/data/documents/unusual-flexible.velmora";
    const tJSON list = RunForJSON({"parts", "--currency", "129=EUR:2", "--no-stock", flexible});
    EXPECT_NEAR(list["parts"][0]["lengths"][0], list["track_length"], 1e-9);
    EXPECT_EQ(list["parts"][0]["currency_code"], "EUR");

    WriteFile(home + "/velmora/config", "; mine\n[currencies]\n129 = EUR:2:Eu;ro\n");
    const std::vector<std::string> environment = {"XDG_CONFIG_HOME=" + home, "LC_ALL=C"};
    const auto run = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"parts", "--no-stock"});
        return RunVelmora(arguments, "", environment);
    };
    EXPECT_NE(run({kOval}).out.find("  6.49 Eu;ro  45.43 Eu;ro"), std::string::npos);
    const std::string csv = run({"--format", "csv", "--separator", ";", "--bom", "--by", "layer", kOval}).out;
    EXPECT_EQ(csv.substr(0, 17), "\xEF\xBB\xBFLayer;Library;") << csv;
    EXPECT_NE(csv.find(";7;649;4543;129;;;;EUR\r\n"), std::string::npos) << csv;

    const std::string book = TestPath("parts.xlsx");
    ASSERT_EQ(run({"-o", book, "--stock", kSamples + "/stock.xml"}).status, 2); // with --no-stock
    ASSERT_EQ(run({"-o", book, kOval}).status, 0);
    EXPECT_NE(run({"-o", book, kOval}).err.find("--force"), std::string::npos);
    tProgramRun unpack;
    unpack.arguments = {CMAKE_PROGRAM, "-E", "tar", "xf", book};
    unpack.folder = home;
    ASSERT_EQ(RunProgram(unpack).status, 0);
    const std::string sheet = ReadFile(home + "/xl/worksheets/sheet1.xml");
    EXPECT_NE(sheet.find("<f>H2*I2</f><v>45.43</v>"), std::string::npos) << sheet;
    EXPECT_NE(sheet.find(",\"EUR\",J2:J16)</f><v>397.45</v>"), std::string::npos) << sheet;

    const std::string page = run({"--format", "html", kOval}).out;
    EXPECT_NE(page.find("<img alt=\"Plan\" src=\"data:image/svg+xml;base64,"), std::string::npos);
    EXPECT_NE(page.find("rgen S\xC3\xA4nftl \xC2\xB7 revision 1.2"), std::string::npos) << page.substr(0, 3000);
    EXPECT_EQ(run({"--format", "html", "--no-picture", kOval}).out.find("<img"), std::string::npos);

    for (const std::string wrong : {"[currencies]\n129 = EUR\n", "129 = EUR:2\n", "[currencies]\n129 = eur:2\n",
                                    "[currencies]\nx = EUR:2\n", "[currencies]\n129 = EUR:2:\x1B[31m\n", "[c\n"}) {
        WriteFile(home + "/velmora/config", wrong);
        const tProgramResult result = run({kOval});
        EXPECT_EQ(result.status, 2) << wrong;
        EXPECT_NE(result.err.find("/velmora/config, line "), std::string::npos) << result.err;
    }
}

TEST(Parts, TakeTheUsersStockAndSaySo)
{
    const std::string home = MakeFolder("home");
    const std::string own = home + "/Velmora/Stock.xml";
    const auto expectStock = [&](const std::string& option, int inStock, const std::string& said) {
        const tJSON list = RunForJSON({"parts", option, kOval}, {"XDG_DATA_HOME=" + home, "XDG_CONFIG_HOME=" + home});
        EXPECT_EQ(list["parts"][0].value("in_stock", -1), inStock);
        const std::string err = list["err"];
        EXPECT_TRUE(said.empty() ? err.empty() : err.find(said) != std::string::npos) << err;
    };
    const auto item = [](int count) { return StockItem("3100", "Halvensen H0 Profilgleis", count); };
    expectStock("--timeout=60", -1, "");
    WriteStock(own, item(7));
    expectStock("--timeout=60", 7, own);
    expectStock("--no-stock", -1, "");
    expectStock("--stock=" + WriteStock(home + "/other.xml", item(8)), 8, "");
    WriteFile(home + "/velmora/com.velmora.Velmora.plist",
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
              "version=\"1.0\"><dict><key>VLStockFileName</key><string>Mine.xml</string></dict></plist>");
    expectStock("--timeout=60", 9, WriteStock(home + "/Velmora/Mine.xml", item(9)));
}

TEST(Parts, MarkWhatLibrariesShareAndWhatTheyDoNotKnow)
{
    // Under the name of another library the same articles: every number of the first is shared then, and the library
    // that layouts name as the accessories' knows none of them.
    const std::string folder = MakeFolder("libraries");
    const std::string accessories = folder + "/Quirrin Bauten & Zubehör";
    WriteFile(accessories, ReadFile(kLibrary));
    const tJSON list = RunForJSON({"parts", "--library", kLibrary, "--library", accessories, kOval});
    for (const tJSON& part : list["parts"]) {
        const bool isTrack = part["library"] == "Halvensen H0 Profilgleis";
        EXPECT_EQ(part["shared_number"], isTrack) << part;
        EXPECT_EQ(part["unknown"], !isTrack) << part;
    }
    // The library whose name has its marks apart, as on a Mac's disk; and the same two as above from a folder that the
    // environment names. What is given comes first and wins.
    const std::string decomposed = folder + "/moved/Quirrin Bauten & Zubeho\xCC\x88r";
    WriteFile(decomposed, ReadFile(kSamples + "/libraries/Quirrin Bauten & Zubehör"));
    const tJSON known[] = {
        RunForJSON({"parts", "--library", decomposed, "--library", kLibrary, "--library", accessories, kOval}),
        RunForJSON({"parts", "--library", kSamples + "/libraries", kOval}, {"VELMORA_LIBRARIES=/nowhere:" + folder})};
    for (const tJSON& whole : known) {
        for (const tJSON& part : whole["parts"]) {
            EXPECT_EQ(part["unknown"], false) << part;
        }
    }
    const tJSON articles = RunForJSON({"library", kLibrary});
    EXPECT_EQ(articles["name"], "Halvensen H0 Profilgleis");
    EXPECT_EQ(articles["articles"].size(), 80u);
    const std::string table = RunVelmora({"library", "--format", "csv", kLibrary, kLibrary}).out;
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 161); // one line of titles
}

TEST(LibraryFiles, AreRegularFilesWithTheMagicTheFirstOfEachName)
{
    const std::string folder = MakeFolder("libraries");
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
    std::vector<std::string> expected;
    for (const char* name : {"given", "missing", "f/link", "f/only the magic", "f/sub/deep/library", "g/own"}) {
        expected.push_back(folder + "/" + name);
    }
    EXPECT_EQ(found, expected);
}

TEST(Check, NamesPlacesAndFailsForDamageOnly)
{
    const std::string whole = ReadFile(kOval);
    const std::string cut = WriteTestFile("cut.velmora", whole.substr(0, whole.size() / 2));
    const std::string stock =
        WriteStock(TestPath("Stock.xml"), StockItem("1", "L", 1) + "<StockItem><Count>2</Count></StockItem>");
    const tProgramResult good = RunVelmora({"check", kOval, kLibrary});
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_EQ(good.out, kOval + ": layout, 58 elements, whole\n" + kLibrary + ": track library, 80 elements, whole\n");
    const tProgramResult bad = RunVelmora({"check", "--format", "json", cut, stock, "/nowhere", stock});
    EXPECT_EQ(bad.status, 1);
    const auto records = ParseLines(bad.out);
    ASSERT_EQ(records.size(), 4u);
    EXPECT_EQ(records[0]["ok"], false);
    EXPECT_EQ(records[0]["error"]["code"], "damaged");
    EXPECT_LE(records[0]["findings"].back()["offset"], whole.size() / 2);
    EXPECT_GT(records[0]["findings"].back()["element"], 20);
    EXPECT_EQ(records[0]["reader"]["code"], 4);
    EXPECT_EQ(records[0]["reader"]["lost"], 58 - records[0]["reader"]["elements"].get<int>());
    EXPECT_EQ(records[1]["kind"], "stock file");
    EXPECT_EQ(records[1]["findings"][0]["element"], 2);
    EXPECT_EQ(records[2]["error"]["code"], 1);
    EXPECT_EQ(records[3], records[1]);
}

TEST(DocumentCommands, GoOverListsAsEditorsOnWindowsWriteThem)
{
    for (const char* command : {"import", "check", "library", "parts", "render"}) {
        SCOPED_TRACE(command);
        const std::string good = command == std::string("library") ? kLibrary : kOval;
        std::vector<std::string> run = {command, "--files-from", "-", "-j2", "--format", "json"};
        if (command == std::string("render")) {
            run = {command, "--files-from", "-", "-j2", "--json", "--output-dir", MakeFolder("drawn")};
        }
        const tProgramResult result = RunVelmora(run, good + "\r\n/nowhere\r\n\r\n" + good);
        EXPECT_NE(result.err.find(", 1 failed (code 1: 1) in "), std::string::npos) << result.err;
        EXPECT_NE(result.out.find("\"path\":\"/nowhere\",\"ok\":false"), std::string::npos) << result.out;
        run.push_back("-0q"); // then a carriage return belongs to the name
        EXPECT_EQ(ParseLines(RunVelmora(run, good + "\r").out).at(0)["path"], good + "\r");
    }
}

TEST(Stock, WrongCountsAreNamedByLineAndTakenAsNothing)
{
    const auto item = [](const std::string& number, const std::string& count) {
        return "<StockItem><ProductNr>" + number + "</ProductNr><Railset>" + kTrack + "</Railset>" + count +
               "</StockItem>\n";
    };
    const std::string stock = WriteStock(
        TestPath("Stock.xml"), "\n" + item("3100", "<Count>-5</Count>") + item("3100", "<Count>\n 2147483647</Count>") +
                                   item("3110", "<Count>2147483648</Count>") + item("3120", "<Count>1x</Count>") +
                                   item("\n3131", "") + item("none", "<Count>007</Count>"));
    const tProgramResult check = RunVelmora({"check", "--library", kLibrary, "--format", "json", stock});
    EXPECT_EQ(check.status, 1);
    std::string found;
    const tJSON checked = tJSON::parse(check.out);
    for (const tJSON& finding : checked["findings"]) {
        found += std::to_string(finding["line"].get<int>()) + (finding["damage"] == true ? "! " : " ");
    }
    EXPECT_EQ(found, "3! 4 4 6! 7! 8 8 8 10 ") << check.out;

    const tJSON list = RunForJSON({"parts", "--stock", stock, kOval});
    for (const tJSON& part : list["parts"]) {
        EXPECT_EQ(part["in_stock"], part["number"] == "3100" ? 2147483647 : 0) << part;
        EXPECT_EQ(part["to_buy"], part["number"] == "3100" ? 0 : part["count"].get<int>()) << part;
    }
    const std::string err = RunVelmora({"stock", stock}).err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 3) << err;
    std::string many;
    for (int i = 0; i < 100; ++i) {
        many += item("1", "<Count>-1</Count>");
    }
    EXPECT_NE(RunVelmora({"stock", WriteStock(TestPath("Many.xml"), many)}).err.find("and 90 more"), std::string::npos);
    for (const char* format : {"text", "csv", "json", "html", "xlsx"}) {
        const tProgramResult missing = RunVelmora({"parts", "--stock", "/nowhere", "--format", format, kOval, "/none"});
        EXPECT_EQ(missing.status, 1);
        EXPECT_EQ(missing.out, "");
    }
}

TEST(Stock, PiecesGoOutAndComeBackAndNothingElseChanges)
{
    // What a file may look like: attributes, comments, CDATA, elements in any order, without an end, or missing.
    const std::string others = "<!-- mine --><StockItem note='>'><Note>&lt;Count&gt;</Note><Count>";
    const std::string track = "</Count><Railset>" + kTrack + "</Railset><ProductNr>";
    const auto file = [&](const std::string& one, const std::string& two, const std::string& three) {
        return "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r\n<Velmora_Stock date=\"2024\">\r\n" + others + one + track +
               "3100</ProductNr></StockItem>" + others + two + "<!-- c -->" + track + "3100</ProductNr></StockItem>" +
               "<StockItem>" + three + "<ProductNr><![CDATA[x]]>3110</ProductNr><Railset>" + kTrack +
               "</Railset></StockItem>\r\n</Velmora_Stock >\r\n";
    };
    const std::string path = TestPath("Stock.xml");
    const auto move = [&path](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "stock");
        arguments.push_back(path);
        return RunVelmora(arguments);
    };
    const std::string before = file("4", " 5 ", "<Count/>");
    WriteFile(path, before);
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    const tProgramResult refused = move({"--take", kOval});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("--partial"), std::string::npos) << refused.err;
    EXPECT_EQ(move({"--take", kOval, "--partial", "--dry-run"}).status, 0);
    EXPECT_EQ(move({"--put", kOval, "--put", "/nowhere"}).status, 1);
    EXPECT_EQ(ReadFile(path), before);
    EXPECT_FALSE(fs::exists(path + "~"));

    EXPECT_EQ(move({"--take", kOval, "--partial"}).status, 0); // 7 of 3100, 9 of 3110
    EXPECT_EQ(ReadFile(path), file("0", "2", "<Count/>"));
    EXPECT_EQ(ReadFile(path + "~"), before);
    EXPECT_EQ(fs::status(path + "~").permissions(), fs::status(path).permissions());

    const int lock = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_NE(move({"--put", kOval}).err.find("another velmora"), std::string::npos);
    close(lock);
    EXPECT_EQ(move({"--put", kOval}).status, 0);
    const std::string after = ReadFile(path);
    const std::string expected = file("7", "2", "<Count>9</Count>");
    EXPECT_EQ(after.substr(0, expected.size() - 19), expected.substr(0, expected.size() - 19));
    EXPECT_EQ(after.substr(after.size() - 19), "</Velmora_Stock >\r\n");
    EXPECT_EQ(RunForJSON({"parts", "--stock", path, "--to-buy", kOval})["parts"].size(), 0u);
    EXPECT_EQ(move({"--take", kOval}).status, 0); // all of it is there now
    EXPECT_EQ(RunForJSON({"stock", path})["items"].back()["count"], 0);

    const std::string latin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><!-- \xE4 -->" + before.substr(24);
    WriteFile(path, latin);
    EXPECT_NE(move({"--take", kOval, "--partial"}).err.find("nothing was written"), std::string::npos);
    EXPECT_EQ(ReadFile(path), latin);
}

TEST(DocumentCommands, SayInOneLineWhatCannotBeListed)
{
    const std::string text = WriteTestFile("text", "no document\n");
    const std::string version = WriteTestFile("version", std::string("RSet\0\0\0\x07", 8));
    const std::string unclosed = WriteStock(TestPath("unclosed.xml"), "\n<StockItem></Stock>");
    const std::string latin = WriteStock(TestPath("latin.xml"), "<Count>\xFF</Count>");
    const std::vector<std::string> cases[] = {{"library", text, "is not a track library"},
                                              {"library", version, "version of the track library is not supported"},
                                              {"library", "/nowhere", "No such file or directory"},
                                              {"stock", text, "is not a stock file"},
                                              {"stock", unclosed, "line 3: "},
                                              {"stock", latin, "line 2: there are bytes"},
                                              {"parts", text, "is not a layout document"},
                                              {"check", text, "is no layout, track library or stock file"}};
    for (const auto& wrong : cases) {
        const tProgramResult result = RunVelmora({wrong[0], wrong[1]});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_NE(result.err.find(wrong[2]), std::string::npos) << result.err;
    }
}
