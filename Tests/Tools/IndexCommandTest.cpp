// velmora index and velmora search as a user runs them.
#include "ExitCodes.h"
#include "ProgramRun.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexSearch.h"
#include "index/FileSystemName.h"
#include "index/Tokenizer.h"
#include "support/Random.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

using tJSON = nlohmann::json;

static tProgramResult Velmora(const std::string& command, const std::string& database,
                              std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), {command, "--database", database});
    return RunVelmora(std::move(arguments));
}

/// The summary of an index run.
static tJSON Index(const std::string& database, std::vector<std::string> arguments, int status = kExitOK)
{
    arguments.insert(arguments.begin(), {"--format", "json"});
    const tProgramResult result = Velmora("index", database, std::move(arguments));
    EXPECT_EQ(result.status, status) << result.err;
    return tJSON::parse(result.out, nullptr, false);
}

static std::string Search(const std::string& database, std::vector<std::string> arguments)
{
    const tProgramResult result = Velmora("search", database, std::move(arguments));
    EXPECT_EQ(result.status, kExitOK) << result.err;
    return result.out;
}

/// As many small layouts as a run takes about a second for.
static std::string MakeManyLayouts(const std::string& name, int count)
{
    const std::string folder = MakeFolder(name);
    for (int i = 0; i < count; ++i) {
        WriteFile(folder + "/" + std::to_string(i) + ".velmora", MakeLayout("plan " + std::to_string(i)));
    }
    return folder;
}

/// Everything in an index that does not depend on when it was made; what SQLite finds wrong comes first.
static std::string Dump(const std::string& database)
{
    SQLite::Database raw(database, SQLite::OPEN_READWRITE);
    EXPECT_TRUE(Tokenizer::Register(raw.getHandle()));
    std::string text = raw.execAndGet("PRAGMA integrity_check").getString() + "\n";
    EXPECT_NO_THROW(raw.exec("INSERT INTO words (words, rank) VALUES ('integrity-check', 1)"));
    SQLite::Statement row(raw, "SELECT hex(path), size, modified, inode, hex(hash), importer, failure_code, name,"
                               " description, layer, text FROM document ORDER BY path");
    while (row.executeStep()) {
        for (int i = 0; i < row.getColumnCount(); ++i) {
            text += row.getColumn(i).getString() + (i + 1 < row.getColumnCount() ? "|" : "\n");
        }
    }
    return text;
}

TEST(IndexCommand, FollowsItsDocuments)
{
    const std::string folder = MakeFolder("followed/documents");
    const std::string database = MakeFolder("followed-index") + "/deep/er/index.db";
    WriteFile(folder + "/a.velmora", MakeLayout("Hauptbahn \x8A")); // ä
    WriteFile(folder + "/sub/b\n\xFF.velmora", MakeLayout("Nebenbahn"));
    WriteFile(folder + "/other.txt", "no layout");
    EXPECT_EQ(Velmora("index", database, {}).status, kExitUsage); // nothing indexed yet
    const auto expectRun = [&](const std::vector<std::string>& options, const tJSON& expected) {
        const tJSON summary = Index(database, options, expected.value("failed", 0) > 0 ? kExitFailed : kExitOK);
        for (const auto& [name, value] : expected.items()) {
            EXPECT_EQ(summary[name], value) << name;
        }
    };
    expectRun({folder}, {{"added", 2}, {"opened", 2}});
    expectRun({}, {{"unchanged", 2}, {"opened", 0}});
    expectRun({"--verify"}, {{"unchanged", 2}, {"opened", 2}});

    // Changed, broken, removed, added; the broken one is found as it was.
    WriteFile(folder + "/a.velmora", MakeLayout("Hauptbahn", 1, 5));
    WriteFile(folder + "/c.velmora", MakeLayout("Bergbahn"));
    expectRun({}, {{"failed", 1}, {"added", 1}});
    EXPECT_EQ(Search(database, {"-0", "haupt*"}), folder + "/a.velmora" + '\0');
    const tJSON failed = tJSON::parse(Velmora("index", database, {"--failed", "--format", "json"}).out);
    EXPECT_EQ(failed["path"], folder + "/a.velmora");
    EXPECT_EQ(failed["error"]["code"], 4);
    EXPECT_EQ(failed["searchable"], true);
    EXPECT_EQ(Index(database, {}, kExitFailed)["known_failed"], 1);
    EXPECT_EQ(Index(database, {"--retry-failed"}, kExitFailed)["opened"], 1);
    WriteFile(folder + "/a.velmora", MakeLayout("Schmalspur"));
    std::filesystem::remove(folder + "/c.velmora");
    expectRun({}, {{"changed", 1}, {"removed", 1}, {"documents", 2}});
    EXPECT_EQ(Search(database, {"--count", "haupt* OR bergbahn"}), "0\n");
    expectRun({"--rebuild"}, {{"changed", 2}});

    // A name of any bytes, in each kind of output.
    EXPECT_EQ(Search(database, {"nebenbahn"}), folder + "/sub/b\\n\\xFF.velmora\n  revision 1.2\n  «Nebenbahn»\n");
    const tJSON found = tJSON::parse(Search(database, {"--format", "json", "nebenbahn"}));
    EXPECT_EQ(found["passage"], "Nebenbahn");
    EXPECT_EQ(found["matches"][0], tJSON::parse(R"({"field":"description","offset":0,"length":9})"));
    EXPECT_TRUE(found.contains("path_base64"));
    EXPECT_EQ(Search(database, {"-0", "--only-in", folder + "/./sub/", "layer"}),
              folder + "/sub/b\n\xFF.velmora" + '\0');
    EXPECT_EQ(Search(database, {"--limit", "1", "layer", "-nebenbahn"}),
              folder + "/a.velmora\n  Schmalspur\n  revision 1.2\n  «Layer» 0\n");

    // A folder above takes over.
    Index(database, {folder + "/.."}, kExitOK);
    const tJSON status = tJSON::parse(Velmora("index", database, {"--status", "--format", "json"}).out);
    ASSERT_EQ(status["roots"].size(), 1U);
    EXPECT_EQ(status["roots"][0]["path"], std::filesystem::path(folder).parent_path().string());
}

TEST(IndexCommand, KeepsWhatIsOutOfReach)
{
    namespace fs = std::filesystem;
    const std::string place = MakeFolder("reach");
    const std::string disk = place + "/disk";
    const std::string away = place + "/away";
    const std::string single = place + "/single.velmora";
    const std::string database = place + "/index.db";
    const auto make = [&](const std::string& folder, int first, int last) {
        for (int i = first; i <= last; ++i) {
            WriteFile(folder + "/" + std::to_string(i) + ".velmora", MakeLayout("plan " + std::to_string(i)));
        }
    };
    const auto remove = [&](int first, int last) {
        for (int i = first; i <= last; ++i) {
            fs::remove(disk + "/" + std::to_string(i) + ".velmora");
        }
    };
    const auto callFileSystem = [&](const std::string& name) { // as if the disk at hand were another one
        SQLite::Database(database, SQLite::OPEN_READWRITE).exec("UPDATE place SET file_system = '" + name + "'");
    };
    const struct {
        const char* what;
        std::function<void()> before;
        std::vector<std::string> options;
        const char* said; ///< empty: all is well
        int documents;
        bool reachable; ///< number 60
    } steps[] = {
        {"all there",
         [&] { make(disk, 1, 60), make(place + "/disk2", 1, 1), WriteFile(single, MakeLayout("plan")); },
         {disk, single, place + "/disk2"},
         "",
         62,
         true},
        {"not mounted", [&] { fs::rename(disk, away); }, {}, "/disk is not reachable", 62, false},
        {"said before", [] {}, {"--new-failures"}, "", 62, false},
        {"a document there", [] {}, {disk + "/3.velmora"}, "3.velmora is not reachable", 62, false},
        {"an empty mount point",
         [&] { fs::create_directory(disk), callFileSystem("other"); },
         {"--remove-missing"},
         "/disk is not reachable",
         62,
         false},
        {"another disk", [&] { make(disk, 101, 250); }, {"--remove-missing"}, "another file system", 212, false},
        {"that is still there", [] {}, {}, "another file system", 212, false},
        {"back",
         [&] { fs::remove_all(disk), fs::rename(away, disk), callFileSystem(FileSystemName::Of(disk)); },
         {"--remove-missing"},
         "",
         62,
         true},
        {"some gone", [&] { remove(1, 30); }, {}, "", 32, true},
        {"most gone", [&] { remove(31, 55); }, {}, "25 of 30 documents are missing", 32, true},
        {"and more new ones", [&] { make(disk, 300, 340); }, {}, "25 of 30 documents are missing", 73, true},
        {"as meant", [] {}, {"--remove-missing"}, "", 48, true},
        {"moved",
         [&] {
             fs::create_directory(place + "/sub"), fs::rename(disk, place + "/sub/x"), fs::rename(place + "/sub", disk),
                 make(disk, 60, 60);
         },
         {},
         "",
         49,
         true},
        {"emptied", [&] { fs::remove_all(disk), fs::create_directory(disk); }, {}, "holds no documents", 49, false},
        {"a document removed", [&] { fs::remove(single); }, {single}, "single.velmora is not reachable", 49, false},
        {"dropped", [] {}, {"--forget", disk, "--forget", single}, "", 1, false},
        {"unknown", [] {}, {"--forget", place + "/dis"}, "knows nothing", 1, false},
        {"never there", [] {}, {place + "/dis"}, "no such file", 1, false},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        step.before();
        const tProgramResult result = Velmora("index", database, step.options);
        EXPECT_EQ(result.status, *step.said == '\0' ? kExitOK : kExitFailed);
        EXPECT_TRUE(*step.said == '\0' ? result.err.empty() : result.err.find(step.said) != std::string::npos)
            << result.err;
        CIndexDatabase index(database, CIndexDatabase::eAccess::kRead);
        EXPECT_EQ(index.GetStatus().documents, step.documents);
        EXPECT_EQ(index.IsReachable(disk + "/60.velmora"), step.reachable);
    }
}

TEST(IndexCommand, FollowsItsFolders)
{
    namespace fs = std::filesystem;
    const std::string folder = MakeFolder("watched");
    const std::string database = MakeFolder("watched-index") + "/index.db";
    const auto make = [&](const char* name) { WriteFile(folder + name, MakeLayout("plan")); };
    std::optional<CIndexDatabase> writer;
    const auto overflow = [&](int process) { // more than the system keeps, then a folder that nothing is told of
        kill(process, SIGSTOP);
        int most = 0;
        std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
        for (int i = 0; i < most + 10; ++i) { // of two in turn: the same event twice is one
            utimensat(AT_FDCWD, (folder + (i % 2 == 0 ? "/b.velmora" : "/late.txt")).c_str(), nullptr, 0);
        }
        make("/lost/1.velmora");
        kill(process, SIGCONT);
    };
    make("/a.velmora");
    const struct {
        std::vector<std::string> lines; ///< that have to come, in any order
        std::function<void(int process)> then;
    } steps[] = {
        {{"added /a.velmora"}, [&](int) { make("/sub/deep/1.velmora"), WriteFile(folder + "/bad.velmora", "bad"); }},
        {{"added /sub/deep/1.velmora", "failed /bad.velmora: is not a layout document"},
         [&](int) { fs::rename(folder + "/sub", folder + "/moved"), fs::remove(folder + "/a.velmora"); }},
        {{"added /moved/deep/1.velmora", "removed /sub/deep/1.velmora", "removed /a.velmora"},
         [&](int) { // between its turns others may write; while they do it waits
             EXPECT_EQ(Index(database, {folder}, kExitFailed)["documents"], 1);
             writer.emplace(database, CIndexDatabase::eAccess::kWrite);
             make("/moved/deep/2.velmora"), make("/b.velmora"), WriteFile(folder + "/late.txt", "");
             writer.reset();
         }},
        {{"added /moved/deep/2.velmora", "added /b.velmora"}, overflow},
        {{"added /lost/1.velmora"}, [&](int) { make("/lost/2.velmora"), fs::remove_all(folder + "/moved"); }},
        {{"added /lost/2.velmora", "removed /moved/deep/1.velmora", "removed /moved/deep/2.velmora"},
         [&](int process) { kill(process, SIGTERM); }},
    };
    size_t next = 0;
    size_t begin = 0;
    tProgramRun run;
    run.arguments = {BUILD_FOLDER "/velmora", "index", "--watch", "--database", database, folder};
    run.signal = SIGKILL; // when something never comes
    run.signalAfter = std::chrono::minutes(2);
    run.onOutput = [&](int process, const std::string& out) {
        const auto hasCome = [&](std::string line) {
            return out.find(line.insert(line.find('/'), folder) + "\n", begin) != std::string::npos;
        };
        if (next < std::size(steps) && std::all_of(steps[next].lines.begin(), steps[next].lines.end(), hasCome)) {
            begin = out.size();
            steps[next++].then(process);
        }
        return true;
    };
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, kExitOK) << "step " << next << "\n" << result.out << result.err;
    EXPECT_EQ(next, std::size(steps));
    EXPECT_EQ(Search(database, {"--count", "plan"}), "3\n");
}

TEST(IndexCommand, ReplacesABrokenIndexThatIsItsOwn)
{
    const std::string home = MakeFolder("broken");
    const std::string database = home + "/velmora/index.db";
    const std::string documents = MakeManyLayouts("broken-documents", 3);
    const auto change = [&](const char* statements) {
        SQLite::Database raw(database, SQLite::OPEN_READWRITE);
        Tokenizer::Register(raw.getHandle());
        raw.exec(std::string("PRAGMA journal_mode = DELETE;") + statements);
    };
    const auto overwrite = [&](size_t from, size_t count) {
        std::string bytes = ReadFile(database);
        WriteFile(database, bytes.replace(from, count, count, 'x'));
    };
    const struct {
        const char* what;
        std::function<void()> damage;
        bool named;         ///< not the user's own, but typed
        bool hasRoots;      ///< that can be read
        bool isOurs = true; ///< or it stays as it is
    } cases[] = {
        {"newer", [&] { change("PRAGMA user_version = 99"); }, true, true},
        {"other tables", [&] { change("CREATE TABLE t (a)"); }, true, true},
        {"rows overwritten", [&] { change("VACUUM"), overwrite(2 * 4096, 4096); }, true, true},
        {"tables overwritten", [&] { change(""), overwrite(100, 3996); }, true, false},
        {"another program's", [&] { change("PRAGMA application_id = 7"); }, true, true, false},
        {"text that was named", [&] { WriteFile(database, std::string(5000, 'x')); }, true, false, false},
        {"text in the index's place", [&] { WriteFile(database, std::string(5000, 'x')); }, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::filesystem::remove_all(home + "/velmora");
        Index(database, {documents});
        c.damage();
        const std::string before = ReadFile(database);
        const auto run = [&](std::vector<std::string> arguments) {
            return RunVelmora(std::move(arguments), {},
                              {c.named ? "VELMORA_DATABASE=" + database : "XDG_DATA_HOME=" + home});
        };
        const std::string advice = c.isOurs ? "velmora index --rebuild" : "It is left alone";
        if (c.what != std::string("rows overwritten")) { // which only who reads them meets
            EXPECT_NE(run({"search", "plan"}).err.find(advice), std::string::npos);
        }
        EXPECT_EQ(run({"index", "--rebuild"}).status, c.hasRoots && c.isOurs ? kExitOK : kExitFailed);
        const tProgramResult result = run({"index", "--rebuild", documents});
        EXPECT_EQ(result.status, c.isOurs ? kExitOK : kExitFailed) << result.err;
        EXPECT_EQ(run({"search", "--count", "plan"}).out, c.isOurs ? "3\n" : "");
        int aside = 0;
        for (const auto& entry : std::filesystem::directory_iterator(home + "/velmora")) {
            const std::string name = entry.path().filename().string();
            aside += name.starts_with("index.db.broken-") && ReadFile(entry.path().string()) == before ? 1 : 0;
        }
        EXPECT_EQ(aside, c.isOurs ? 1 : 0);
        EXPECT_EQ(ReadFile(database) == before, !c.isOurs);
    }
}

TEST(SearchCommand, ShowsATerminalWhereDocumentsAre)
{
    const std::string folder = std::filesystem::canonical(MakeFolder("terminal"));
    const std::string database = MakeFolder("terminal-index") + "/index.db";
    WriteFile(folder + "/a b.velmora", MakeLayout("Hauptbahn"));
    Index(database, {folder});
    tProgramRun run;
    run.columns = 80;
    run.folder = folder;
    run.environment = {"TERM=xterm", "NO_COLOR=1"};
    run.arguments = {BUILD_FOLDER "/velmora", "search", "--database", database, "haup"};
    const std::string found = RunProgram(run).out;
    EXPECT_NE(found.find(folder + "/a%20b.velmora\x1B\\"
                                  "a b.velmora\x1B]8;;\x1B\\"),
              std::string::npos)
        << found;
    EXPECT_NE(found.find("  \x1B[1mHauptbahn\x1B["), std::string::npos) << found;
    run.environment[0] = "TERM=dumb";
    EXPECT_EQ(RunProgram(run).out.substr(0, 11), "a b.velmora");
    // What is unknown is asked back on a terminal only.
    run.arguments.back() = "Hupatbahn";
    run.arguments.insert(run.arguments.begin(), {"/bin/sh", "-c", "exec \"$0\" \"$@\" 2>&1"});
    EXPECT_EQ(RunProgram(run).out, "velmora: nothing found; did you mean: hauptbahn\r\n");
    run.columns = 0;
    EXPECT_EQ(RunProgram(run).out, "");
}

TEST(IndexCommand, KnowsEveryLibraryAndArticle)
{
    const std::string database = MakeFolder("names-index") + "/index.db";
    Index(database, {SOURCE_FOLDER "/Samples"});
    // The summary of the second, which is text, names one article.
    EXPECT_EQ(Search(database, {"--count", "library:halvensen", "article:3602", "-text:3602"}), "2\n");
    EXPECT_EQ(Search(database, {"--count", "author:Mueller"}), "1\n");
    // The figures are those that a list of parts has.
    const tJSON parts =
        tJSON::parse(RunVelmora({"parts", "--format", "json", SOURCE_FOLDER "/Samples/terminus.velmora"}).out);
    const tJSON found = tJSON::parse(Search(database, {"--format", "json", "name:terminus"}));
    EXPECT_NEAR(found["tracks"].get<double>(), parts["track_length"].get<double>() / 1000, 0.001);
    EXPECT_EQ(found["gauges"][0], parts["scales"].begin().key());
    EXPECT_EQ(found["created"].get<std::string>().substr(0, 5), "2026-");
    EXPECT_EQ(Search(database, {"--count", "gauge:16.5", "elements:>900", "created:2026"}), "1\n");
}

TEST(IndexCommand, GoesOnAfterBeingKilled)
{
    const int count = 3000;
    const std::string folder = MakeManyLayouts("killed", count);
    const std::string place = MakeFolder("killed-index");
    const std::string fresh = place + "/fresh.db";
    const auto begin = std::chrono::steady_clock::now();
    Index(fresh, {folder});
    const auto whole = std::chrono::steady_clock::now() - begin;
    const std::string expected = Dump(fresh);
    tProgramRun run;
    CRandom random(7);
    int killed = 0;
    int partial = 0;
    for (int round = 0; round < 20 && (round < 3 || killed < 6 || partial == 0); ++round) {
        const std::string database = place + "/" + std::to_string(round) + ".db";
        for (int i = 0; i < 4; ++i) {
            run.arguments = {BUILD_FOLDER "/velmora", "index", "--database", database, folder};
            run.signal = SIGKILL;
            run.signalAfter = whole * (random() % 1000) / 1500;
            killed += RunProgram(run).status == 128 + SIGKILL ? 1 : 0;
            const tProgramResult found = Velmora("search", database, {"--count", "plan"});
            partial += found.status == kExitOK && found.out != "0\n" && found.out != "3000\n" ? 1 : 0;
        }
        const tJSON summary = Index(database, {folder});
        EXPECT_EQ(summary["documents"], count);
        EXPECT_EQ(Dump(database), expected);
    }
    EXPECT_GE(killed, 6);
    EXPECT_GT(partial, 0);

    // An interrupt keeps what is done. It comes when the run has just begun, or later, until it meets one.
    std::string database;
    int64_t done = 0;
    for (int attempt = 1; attempt <= 20 && done == 0; ++attempt) {
        database = place + "/interrupted" + std::to_string(attempt) + ".db";
        run.arguments = {BUILD_FOLDER "/velmora", "index", "--format", "json", "--database", database, folder};
        run.signal = SIGINT;
        run.signalAfter = whole * attempt / 12;
        const tProgramResult result = RunProgram(run);
        done = result.status == kExitInterrupted && !result.out.empty()
                   ? ParseLines(result.out)[0]["added"].get<int64_t>()
                   : 0;
    }
    EXPECT_GT(done, 0);
    EXPECT_LT(done, count);
    const tJSON after = Index(database, {folder});
    EXPECT_EQ(after["unchanged"], done);
    EXPECT_EQ(after["added"], count - done);
    EXPECT_EQ(Dump(database), expected);
}

TEST(IndexCommand, SurvivesFilesThatMayNotGrow)
{
    const std::string folder = MakeManyLayouts("small", 3);
    const std::string place = MakeFolder("small-index");
    tProgramRun run;
    run.environment = {"VELMORA_DATABASE=" + place + "/index.db", "FOLDER=" + folder, "OUT=" + place + "/out.png"};
    for (const char* command : {"index \"$FOLDER\"", "render -o \"$OUT\" Samples/oval.velmora"}) {
        run.folder = SOURCE_FOLDER;
        run.arguments = {"/bin/sh", "-c", std::string("ulimit -f 8; exec \"$0\" ") + command, BUILD_FOLDER "/velmora"};
        const tProgramResult result = RunProgram(run);
        EXPECT_EQ(result.status, kExitFailed);
        EXPECT_NE(result.err.find(command[0] == 'i' ? "/index.db cannot be " : "/out.png"), std::string::npos)
            << result.err;
        EXPECT_EQ(result.err.find("damaged"), std::string::npos) << result.err;
    }
    for (const auto& entry : std::filesystem::directory_iterator(place)) {
        EXPECT_NE(entry.path().string().find("/index.db"), std::string::npos) << entry.path() << " is left over";
    }
    EXPECT_EQ(Index(place + "/index.db", {folder})["documents"], 3);
}

TEST(IndexCommand, IsSearchedWhereNobodyCanWrite)
{
    const std::string place = MakeFolder("fixed-index");
    Index(place + "/index.db", {MakeManyLayouts("fixed", 3)});
    std::filesystem::permissions(place, std::filesystem::perms(0555));
    for (std::filesystem::path folder = TestPath("."); folder.string().find("velmora-test") != std::string::npos;
         folder = folder.parent_path()) { // others may look from above
        std::filesystem::permissions(folder, std::filesystem::perms(0755));
    }
    std::filesystem::permissions(place + "/index.db", std::filesystem::perms(0444));
    const auto search = [&] { // as somebody who may not write, which root may everywhere
        const bool isOther = geteuid() != 0 || setresuid(65534, 65534, 65534) == 0;
        CIndexDatabase index(place + "/index.db", CIndexDatabase::eAccess::kRead);
        _exit(isOther && CIndexSearch(index, "plan").Count({}) == 3 ? 0 : 1);
    };
    EXPECT_EXIT(search(), testing::ExitedWithCode(0), "");
    std::filesystem::permissions(place, std::filesystem::perms(0755));
}

TEST(IndexCommand, HasOneWriterAndManyReaders)
{
    const std::string folder = MakeManyLayouts("shared", 3);
    const std::string database = MakeFolder("shared-index") + "/index.db";
    Index(database, {folder});
    std::optional<CIndexDatabase> held(std::in_place, database, CIndexDatabase::eAccess::kWrite);
    CIndexDatabase& writer = *held;
    writer.StoreTexts({"/elsewhere", {}, "", ""}, {"", "", "plan", "", "", "", "", ""}, {}, 1);
    const tProgramResult second = Velmora("index", database, {folder});
    EXPECT_EQ(second.status, kExitLocked) << second.err;
    EXPECT_EQ(Search(database, {"--count", "plan"}), "3\n"); // not yet committed
    writer.Commit();
    EXPECT_EQ(Search(database, {"--count", "plan"}), "4\n");
    auto third = std::async(std::launch::async, [&] { return Velmora("index", database, {"--wait", "100"}); });
    EXPECT_EQ(third.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
    held.reset();
    EXPECT_EQ(third.get().status, kExitOK);
}
