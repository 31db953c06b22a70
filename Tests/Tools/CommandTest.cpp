// The built host with the built worker and plug-in, as a user runs it.
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "ProgramRun.h"
#include "commands/CommandLine.h"
#include "output/Terminal.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sys/stat.h>

using tJSON = nlohmann::ordered_json;

TEST(CommandLine, RefusesWrongUsageAndHelps)
{
    const std::string database = MakeFolder("usage") + "/index.db";
    const auto run = [&database](const std::string& line) {
        std::istringstream words(line);
        return RunVelmora({std::istream_iterator<std::string>(words), {}}, "", {"VELMORA_DATABASE=" + database});
    };
    // What is typed, and part of what is said to it.
    std::istringstream wrong(
        R"( = Usage: velmora COMMAND; imprt x = did you mean 'import'?; shcema = did you mean 'schema'?;
zzzzzz = there is no command 'zzzzzz'; --colour = there is no option '--colour'; import = nothing to import;
import --format csv x = --format; import --timeout 0 x = --timeout; import --timeout nan x = --timeout;
import --memory -1 x = --memory; import --tiemout=3 x = --tiemout; import --null x = --files-from;
import --files-from - - = standard input; import --files-from /nonexistent = No such file;
import --raw x = --name; import -d4 x = --detail; schema operand = operand; parts = nothing to add up;
parts --no-stock --stock x x = --no-stock; index - = standard input; index --status x = read nothing;
search = nothing to search for; search --cuont = did you mean '--count'?; --hlep = did you mean '--help'?;
import --format jsno x = 'jsno' is none of text, json, plist; import --format jsno x = did you mean 'json'?;
import --jobs 0 x = '0' is no; render --size abc x = 'abc' is no; import -n foo x = kMDItemAuthors (author))");
    for (std::string line; std::getline(wrong, line, ';');) {
        const size_t equals = line.find(" = ");
        const tProgramResult result = run(line.substr(0, equals));
        EXPECT_EQ(result.status, kExitUsage) << line;
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(line.substr(equals + 3)), std::string::npos) << result.err;
    }
    const struct {
        int status;
        const char* line;
        const char* said;
    } others[] = {{kExitUsage, "help \x1B[2J", "there is no command '\\x1B[2J'\n"},
                  {kExitFailed, "search gleis", "'velmora index FOLDER' makes it"},
                  {kExitFailed, "index /nonexistent", "no such file"},
                  {kExitUsage, "search gleis foo:x", "at character 7"},
                  {kExitFailed, "import --sandbox-user no-such-user x", "no-such-user"},
                  {kExitOK, "-h", "Commands:"},
                  {kExitOK, "help import", "--exclude"},
                  {kExitOK, "import x --help", "--exclude"},
                  {kExitOK, "import -V", "velmora 1."},
                  {kExitOK, "schema", "kMDItemTextContent"},
                  {kExitOK, "schema --format json", "\"name\":\"kMDItemTextContent\""},
                  {kExitOK, "schema --format json", "\"extensions\":[\"velmora\"]"}};
    for (const auto& c : others) {
        const tProgramResult result = run(c.line);
        EXPECT_EQ(result.status, c.status) << result.err;
        EXPECT_NE((c.status == kExitOK ? result.out : result.err).find(c.said), std::string::npos) << c.line;
        EXPECT_TRUE(c.status != kExitOK || result.err.empty()) << result.err;
    }
}

TEST(CommandLine, FitsTheTerminal)
{
    const std::string layout = "a.velmora";
    tProgramRun run;
    run.folder = MakeFolder("shown");
    WriteFile(run.folder + "/" + layout, MakeLayout("first\r\nsecond\x1B[2J"));
    run.environment = {"TERM=xterm", "NO_COLOR=1"};
    const auto show = [&run](std::vector<std::string> arguments, unsigned short columns) {
        run.arguments = std::move(arguments);
        run.arguments.insert(run.arguments.begin(), BUILD_FOLDER "/velmora");
        run.columns = columns;
        std::string out = RunProgram(run).out;
        out.erase(std::remove(out.begin(), out.end(), '\r'), out.end());
        return out;
    };
    for (const unsigned short columns : std::initializer_list<unsigned short>{40, 60, 80}) {
        for (const std::vector<std::string>& arguments :
             {std::vector<std::string>{"help"},
              {"help", "search"},
              {"schema"},
              {"import", layout},
              {"library", SOURCE_FOLDER "/Samples/libraries/Halvensen H0 Profilgleis"}}) {
            std::istringstream lines(show(arguments, columns));
            for (std::string line; std::getline(lines, line);) {
                const size_t isBold = line.starts_with("\x1B[1m") ? 7 : 0;
                EXPECT_LE(Terminal::CountColumns(line), columns + isBold) << line;
            }
        }
    }
    const std::string imported = show({"import", layout}, 80);
    EXPECT_EQ(imported.rfind("\x1B[1m" + layout + "\x1B[m\n", 0), 0U) << imported;
    EXPECT_NE(imported.find("Description:  first\n                second\\x1B[2J\n"), std::string::npos) << imported;
    const std::vector<std::string> wide = {"schema", "--wide"};
    EXPECT_EQ(show(wide, 40), RunVelmora(wide).out);
    EXPECT_EQ(show({"render", SOURCE_FOLDER "/Samples/oval.velmora"}, 80), "");
}

TEST(Import, GivesEverySampleItsAttributesOrItsCode)
{
    std::vector<std::string> arguments = {"import", "--quiet", "--format", "json"};
    for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA "/documents")) {
        if (entry.path().extension() == ".velmora") {
            arguments.push_back(entry.path().string());
        }
    }
    // Not the order of the folder walk, so that the order of the records shows.
    std::sort(arguments.begin() + 4, arguments.end(), std::greater<>());
    ASSERT_GT(arguments.size(), 90U);
    const tProgramResult result = RunVelmora(arguments);
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_EQ(result.err, "");
    const std::vector<tJSON> records = ParseLines(result.out);
    ASSERT_EQ(records.size(), arguments.size() - 4);
    for (size_t i = 0; i < records.size(); ++i) {
        std::filesystem::path path = arguments[i + 4];
        EXPECT_EQ(records[i]["path"], path.string());
        // Compared without the order of the names.
        const auto expected = nlohmann::json::parse(ReadFile(path.replace_extension(".expected.json")));
        const nlohmann::json record = records[i];
        ASSERT_EQ(record["ok"], expected["ok"]) << record;
        const bool isGood = record["ok"];
        EXPECT_EQ(isGood ? record["attributes"] : record["error"]["code"], expected[isGood ? "attributes" : "code"])
            << path;
    }
}

TEST(Import, SaysInPlainWordsWhatIsWrong)
{
    const std::string folder = MakeFolder("words");
    std::string oldVersion = MakeLayout("x");
    oldVersion[7] = 2;
    WriteFile(folder + "/1 good.velmora", MakeLayout("a\nb\x8A"));
    WriteFile(folder + "/2 garbage.velmora", "garbage\n");
    WriteFile(folder + "/3 old.velmora", oldVersion);
    WriteFile(folder + "/4 cut\n.velmora", MakeLayout("x", 1, 1));
    std::filesystem::create_symlink("nowhere", folder + "/5 broken.velmora");
    const tProgramResult result = RunVelmora({"import", folder});
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_EQ(result.out.rfind(folder + "/1 good.velmora\n", 0), 0U) << result.out;
    EXPECT_NE(result.out.find("  Description:  a\\nb\u00E4\n"), std::string::npos) << result.out;
    const std::string start = "velmora: " + folder;
    const std::string expected = start + "/2 garbage.velmora: is not a layout document\n" + start +
                                 "/3 old.velmora: the format version 2 is not supported\n" + start +
                                 "/4 cut\\n.velmora: element 1 is damaged: ";
    EXPECT_EQ(result.err.substr(0, expected.size()), expected);
    const std::string end = start + "/5 broken.velmora: cannot be opened: No such file or directory\n" +
                            "velmora: 1 imported, 4 failed (code 1: 1, code 2: 1, code 3: 1, code 4: 1) in ";
    EXPECT_NE(result.err.find(end), std::string::npos) << result.err;
    const std::pair<const char*, const char*> faults[] = {
        {"element-version-0-2", "its version is not supported"},
        {"type-12-2147483647", "one of its components is of an unknown kind"}};
    for (const auto& [name, fault] : faults) {
        const std::string err = RunVelmora({"import", std::string(TEST_DATA "/documents/") + name + ".velmora"}).err;
        EXPECT_NE(err.find(std::string(" is damaged: ") + fault), std::string::npos) << err;
    }
}

TEST(Import, TakesEveryNameAndEverySource)
{
    const std::string folder = MakeFolder("names");
    const std::string paths[] = {folder + "/line\nbreak.velmora", folder + "/\u4E2D\u6587\U0001F682.velmora",
                                 folder + "/\xFF\xFE.velmora", folder + "/-dash", folder + "/schema"};
    std::string zeros;
    std::string here = "\x7F\"\\";
    for (char control = 1; control < 0x20; ++control) {
        here.push_back(control);
    }
    for (const std::string& path : paths) {
        WriteFile(path, MakeLayout(here));
        zeros += path + std::string(1, '\0');
    }
    tProgramRun run;
    run.arguments = {
        BUILD_FOLDER "/velmora", "import", "--null", "--format=json", "--files-from", "-", "--", "-dash", "schema"};
    run.folder = folder;
    run.input = zeros;
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, kExitOK) << result.err;
    const std::string expected[] = {"-dash",  "schema", paths[0], paths[1], folder + "/\uFFFD\uFFFD.velmora",
                                    paths[3], paths[4]};
    const std::vector<tJSON> records = ParseLines(result.out);
    ASSERT_EQ(records.size(), std::size(expected));
    for (size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(records[i]["path"], expected[i]);
        EXPECT_EQ(records[i].contains("path_base64"), i == 4);
        EXPECT_EQ(records[i]["attributes"]["kMDItemDescription"], here) << records[i];
    }
    const tProgramResult piped = RunVelmora({"import", "-", "--format", "json"}, MakeLayout("from a pipe"));
    EXPECT_EQ(piped.status, kExitOK) << piped.err;
    EXPECT_EQ(ParseLines(piped.out).at(0)["path"], "-");
    EXPECT_EQ(ParseLines(piped.out).at(0)["attributes"]["kMDItemDescription"], "from a pipe");
    WriteFile(folder + "/\2", "garbage");
    WriteFile(folder + "/<", MakeLayout("a<b\r\1"));
    run.arguments = {BUILD_FOLDER "/velmora", "import", "--format=plist", "--name=kMDItemDescription", "\2", "<"};
    std::string list = RunProgram(run).out;
    std::erase_if(list, [](char c) { return c == '\n' || c == '\t'; });
    EXPECT_EQ(list.substr(list.find("<array>")),
              "<array><dict><key>path</key><string></string><key>path_base64</key><string>Ag==</string>"
              "<key>ok</key><false/><key>error</key><dict><key>code</key><integer>2</integer><key>message</key>"
              "<string>is not a layout document</string></dict></dict>"
              "<dict><key>path</key><string>&lt;</string><key>ok</key><true/><key>attributes</key>"
              "<dict><key>kMDItemDescription</key><string>a&lt;b&#13;</string></dict></dict></array></plist>");
    const tProgramResult empty = RunVelmora({"import", MakeFolder("nothing")});
    EXPECT_EQ(empty.status, kExitOK);
    EXPECT_EQ(empty.out, "");
    EXPECT_NE(empty.err.find("/nothing: there are no layouts in this folder\n"), std::string::npos) << empty.err;
}

TEST(Import, PrintsWhatIsAskedFor)
{
    const std::string folder = MakeFolder("chosen");
    WriteFile(folder + "/a.velmora", MakeLayout("first", 2));
    WriteFile(folder + "/b.velmora", "garbage");
    WriteFile(folder + "/c.velmora", MakeLayout("third"));
    WriteFile(folder + "/old/d.velmora", MakeLayout("excluded"));
    WriteFile(folder + "/a~1.velmora", MakeLayout("excluded"));
    const auto import = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"import", "-q", "--exclude", "*~*", "--exclude", "*/old"});
        options.push_back(folder);
        return RunVelmora(options);
    };
    const tProgramResult raw =
        import({"-n", "LAYERS", "-n", "revision", "--name=kMDItemDescription", "--raw", "--null-marker", "-"});
    std::string out = raw.out;
    std::replace(out.begin(), out.end(), '\0', '|');
    EXPECT_EQ(out, "Layer 0\nLayer 1|1.2|first|-|-|-|Layer 0|1.2|third");
    EXPECT_EQ(raw.err, "velmora: " + folder + "/b.velmora: is not a layout document\n");
    EXPECT_EQ(raw.status, kExitFailed);

    const tJSON named =
        ParseLines(import({"--format=json", "-n", "kMDItemDescription", "-n", "kMDItemAuthors"}).out).at(0);
    EXPECT_EQ(named["attributes"].dump(), R"({"kMDItemDescription":"first","kMDItemAuthors":[""]})");
    for (int level = 1; level <= 3; ++level) {
        const tJSON record = ParseLines(import({"--format=json", "-d" + std::to_string(level)}).out).at(0);
        EXPECT_EQ(record["type"], Importer::kContentType);
        EXPECT_EQ(record["importer"], BUILD_FOLDER "/" + std::string(Importer::kBundleName));
        EXPECT_EQ(record["attributes"].size(), level == 1 ? 0U : level == 2 ? 4U : 5U);
    }
}

TEST(Serve, AnswersEachLine)
{
    const std::string folder = MakeFolder("served");
    WriteFile(folder + "/a.velmora", MakeLayout("first"));
    WriteFile(folder + "/\xFF", MakeLayout("bytes"));
    tProgramRun run;
    run.arguments = {BUILD_FOLDER "/velmora", "serve"};
    run.folder = folder;
    run.input = "{\"path\":\"a.velmora\"}\n\nnonsense\n{\"id\":[],\"path\":\"a\"}\n{\"id\":7}\n"
                "{\"id\":\"x\",\"path_base64\":\"/w==\"}\n{\"path_base64\":\"/w=\"}\n{\"path\":\".\"}\n"
                "{\"path\":\"a\\u0000\"}\n{\"verb\":\"chekc\",\"path\":\"a.velmora\"}\n"
                "{\"verb\":\"render\",\"size\":\"9\",\"path\":\"a.velmora\"}\n"
                "{\"verb\":\"check\",\"path\":\"a.velmora\"}\n{\"verb\":\"parts\",\"path\":\"a.velmora\"}\n"
                "{\"verb\":\"thumbnail\",\"size\":16,\"path\":\"a.velmora\"}\n"
                "{\"verb\":\"render\",\"path\":\"a.velmora\",\"output\":\"" +
                folder + "/a.svg\"}\n{\"verb\":\"render\",\"path\":\"a.velmora\",\"output\":\"" + folder +
                "/a.svg\"}\n{\"path\":\"a.velmora\"}"; // the last line without its end
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, kExitOK) << result.err;
    std::string inOrder;
    std::multiset<std::string> named; // which may come in any order
    std::vector<tJSON> records = ParseLines(result.out);
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.front().dump(), R"({"schema":1,"version":")" + std::string(GetVersion()) +
                                          R"(","verbs":["import","check","parts","render","thumbnail","search"]})");
    records.erase(records.begin());
    for (const tJSON& record : records) {
        const std::string outcome = !record["ok"] ? record["error"]["code"].get<std::string>()
                                    : record.contains("attributes")
                                        ? record["attributes"]["kMDItemDescription"].get<std::string>()
                                    : record.contains("data")   ? record["data"].get<std::string>().substr(0, 8)
                                    : record.contains("kind")   ? record["kind"].get<std::string>()
                                    : record.contains("output") ? std::string("drawn")
                                                                : record["parts"].dump();
        if (record.contains("id")) {
            named.insert(record["id"].dump() + outcome + (record.contains("path_base64") ? " in base 64" : ""));
        } else {
            inOrder += outcome + " ";
        }
    }
    EXPECT_EQ(inOrder,
              "first request request request path path request request layout [] iVBORw0K drawn output first ");
    EXPECT_NE(ReadFile(folder + "/a.svg").find("</svg>"), std::string::npos);
    EXPECT_EQ(named, (std::multiset<std::string>{"7request", "\"x\"bytes in base 64"}));
}

#if !defined(__SANITIZE_ADDRESS__) // no limit can be set there
TEST(Import, ReportsADocumentThatNeedsMoreMemoryThanGranted)
{
    constexpr unsigned kLayers = 100000;
    const std::string folder = MakeFolder("memory");
    WriteFile(folder + "/1.velmora", MakeLayout("x", kLayers));
    WriteFile(folder + "/2.velmora", MakeLayout("next"));
    // With the grant, it is another library that first goes without: the core, Foundation, the C++ library.
    for (const int megabytes : {2, 6, 10, 14, 18, 22, 1024}) {
        SCOPED_TRACE(megabytes);
        const tProgramResult result = RunVelmora(
            {"import", "--memory", std::to_string(megabytes), "--timeout", "60", "--format", "json", folder});
        const std::vector<tJSON> records = ParseLines(result.out);
        ASSERT_EQ(records.size(), 2U) << result.out.substr(0, 1000);
        EXPECT_EQ(records[1]["ok"], true);
        if (records[0]["ok"]) {
            EXPECT_GT(megabytes, 2);
            EXPECT_EQ(records[0]["attributes"]["kMDItemLayerNames"].size(), kLayers);
        } else {
            EXPECT_LT(megabytes, 1024);
            EXPECT_EQ(records[0]["error"]["code"], "memory") << records[0];
        }
    }
}
#endif

TEST(PlugIn, ThatCannotServeIsOneClearLine)
{
    const std::string folder = MakeFolder("plug-ins");
    const std::string document = folder + "/a.velmora";
    WriteFile(document, MakeLayout("x"));
    std::string list = ReadFile(BUILD_FOLDER "/" + std::string(Importer::kBundleName) + "/Contents/Info.plist");
    WriteFile(folder + "/no-code/Contents/Info.plist", list);
    WriteFile(folder + "/garbage/Contents/Info.plist", list);
    WriteFile(folder + "/garbage/Contents/Linux/VelmoraLayouts", "no program");
    list.at(list.find("8B08C4BF-415B") + 12) = 'C';
    WriteFile(folder + "/other-kind/Contents/Info.plist", list);
    const std::pair<const char*, const char*> cases[] = {
        {"missing", "does not exist"},   {"a.velmora", "is no bundle"},   {".", "is no bundle"},
        {"no-code", "cannot be loaded"}, {"garbage", "cannot be loaded"}, {"other-kind", "is not a metadata importer"}};
    for (const auto& [name, message] : cases) {
        const std::string plugIn = folder + "/" + name;
        SCOPED_TRACE(plugIn);
        const tProgramResult text = RunVelmora({"import", "--plugin", plugIn, document, document});
        EXPECT_EQ(text.status, kExitFailed);
        EXPECT_EQ(text.out, "");
        EXPECT_EQ(text.err.rfind("velmora: the plug-in " + plugIn + " " + message, 0), 0U) << text.err;
        EXPECT_EQ(std::count(text.err.begin(), text.err.end(), '\n'), 1);
        const tProgramResult json =
            RunVelmora({"import", "--format", "json", document, folder + "/absent"}, "", {"VELMORA_PLUGIN=" + plugIn});
        EXPECT_EQ(json.err, text.err);
        EXPECT_EQ(ParseLines(json.out).at(1)["error"]["code"], "plugin");
        EXPECT_EQ(RunVelmora({"schema", "--plugin", plugIn}).err, text.err);
    }
}

TEST(Installation, WorksFromAnotherPlaceWithoutAnEnvironment)
{
    const std::string prefix = MakeFolder("installed");
    tProgramRun run;
    run.arguments = {CMAKE_PROGRAM, "--install", BUILD_FOLDER, "--prefix", prefix};
    tProgramResult result = RunProgram(run);
    ASSERT_EQ(result.status, 0) << result.err;
#ifdef NDEBUG // what is given to users is optimised
    run.arguments = {SOURCE_FOLDER "/scripts/check-hardening", prefix};
    result = RunProgram(run);
    EXPECT_EQ(result.status, 0) << result.err;
#endif
    const std::string moved = MakeFolder("moved") + "/here";
    std::filesystem::rename(prefix, moved);
    run.arguments = {moved + "/" INSTALLED_PROGRAMS "/velmora", "import", "--format", "json", "-"};
    run.input = MakeLayout("installed");
    run.emptyEnvironment = true;
    result = RunProgram(run);
    EXPECT_EQ(result.status, kExitOK) << result.out << result.err;
    EXPECT_EQ(ParseLines(result.out).at(0)["attributes"]["kMDItemDescription"], "installed");

    const std::string home = MakeFolder("home");
    run.environment = {"HOME=" + home};
    EXPECT_EQ(RunProgram(run).status, kExitOK);
    struct stat status = {};
    ASSERT_EQ(stat((home + "/.local/state/velmora").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);

    const std::string libraries = moved + "/" INSTALLED_LIBRARIES "/";
    std::filesystem::rename(libraries + "libvelmora-platform.so", libraries + "away");
    EXPECT_NE(ReadFile(libraries + "velmora-worker.packages").find("libstdc++.so.6 libstdc++6\n"), std::string::npos);
    WriteFile(libraries + "velmora-worker.packages", "libvelmora-platform.so platform1\n");
    result = RunProgram(run);
    EXPECT_NE(result.err.find("libvelmora-platform.so: cannot open"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("; install the package platform1\n"), std::string::npos) << result.err;
    std::filesystem::rename(libraries + "away", libraries + "libvelmora-platform.so");

    std::filesystem::remove_all(libraries + std::string(Importer::kBundleName));
    result = RunProgram(run);
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_NE(result.err.find("there is no importer plug-in"), std::string::npos) << result.err;
}
