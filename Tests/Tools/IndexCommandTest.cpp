// velmora index and velmora search as a user runs them.
#include "ExitCodes.h"
#include "ProgramRun.h"
#include "index/CIndexDatabase.h"
#include "index/Tokenizer.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <spawn.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <thread>
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

static pid_t Start(std::vector<std::string> arguments, int out)
{
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    pid_t process = 0;
    EXPECT_EQ(posix_spawn(&process, pointers[0], &actions, nullptr, pointers.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

static int WaitFor(pid_t process)
{
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST(IndexCommand, FollowsItsDocuments)
{
    const std::string folder = MakeFolder("followed");
    const std::string database = MakeFolder("followed-index") + "/deep/er/index.db";
    std::filesystem::create_directory(folder + "/sub");
    WriteFile(folder + "/a.velmora", MakeLayout("Hauptbahn \x8A")); // ä
    WriteFile(folder + "/sub/b\n\xFF.velmora", MakeLayout("Nebenbahn"));
    WriteFile(folder + "/other.txt", "no layout");
    EXPECT_EQ(Velmora("index", database, {}).status, kExitUsage); // nothing indexed yet
    tJSON summary = Index(database, {folder});
    EXPECT_EQ(summary["added"], 2);
    EXPECT_EQ(summary["opened"], 2);

    // Unchanged: found without opening one. The watch is proved by what it sees when a document is opened.
    const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    ASSERT_GE(inotify_add_watch(watch, folder.c_str(), IN_OPEN), 0);
    ASSERT_GE(inotify_add_watch(watch, (folder + "/sub").c_str(), IN_OPEN), 0);
    const auto countOpened = [&] {
        alignas(inotify_event) char buffer[16384];
        const ssize_t size = read(watch, buffer, sizeof buffer);
        int opened = 0;
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            opened += event->len > 0 && std::string(event->name).ends_with(".velmora") ? 1 : 0;
            at += static_cast<ssize_t>(sizeof *event + event->len);
        }
        return opened;
    };
    summary = Index(database, {});
    EXPECT_EQ(countOpened(), 0);
    EXPECT_EQ(summary["unchanged"], 2);
    EXPECT_EQ(summary["opened"], 0);
    EXPECT_EQ(Index(database, {"--verify"})["opened"], 2);
    EXPECT_GE(countOpened(), 2);
    close(watch);

    // Changed, broken, removed, added; the broken one is found as it was.
    WriteFile(folder + "/a.velmora", MakeLayout("Hauptbahn", 1, 5));
    WriteFile(folder + "/c.velmora", MakeLayout("Bergbahn"));
    summary = Index(database, {}, kExitFailed);
    EXPECT_EQ(summary["failed"], 1);
    EXPECT_EQ(summary["added"], 1);
    EXPECT_EQ(Search(database, {"-0", "haupt*"}), folder + "/a.velmora" + '\0');
    const tJSON failed = tJSON::parse(Velmora("index", database, {"--failed", "--format", "json"}).out);
    EXPECT_EQ(failed["path"], folder + "/a.velmora");
    EXPECT_EQ(failed["error"]["code"], 4);
    EXPECT_EQ(failed["searchable"], true);
    summary = Index(database, {}, kExitFailed);
    EXPECT_EQ(summary["known_failed"], 1);
    EXPECT_EQ(summary["opened"], 0);
    EXPECT_EQ(Index(database, {"--retry-failed"}, kExitFailed)["opened"], 1);
    WriteFile(folder + "/a.velmora", MakeLayout("Schmalspur"));
    std::filesystem::remove(folder + "/c.velmora");
    summary = Index(database, {});
    EXPECT_EQ(summary["changed"], 1);
    EXPECT_EQ(summary["removed"], 1);
    EXPECT_EQ(summary["documents"], 2);
    EXPECT_EQ(Search(database, {"--count", "haupt* OR bergbahn"}), "0\n");
    EXPECT_EQ(Index(database, {"--rebuild"})["changed"], 2);

    // A name of any bytes, in each kind of output.
    EXPECT_EQ(Search(database, {"nebenbahn"}), folder + "/sub/b\\n\\xFF.velmora\n  «Nebenbahn»\n");
    const tJSON found = tJSON::parse(Search(database, {"--format", "json", "nebenbahn"}));
    EXPECT_EQ(found["passage"], "«Nebenbahn»");
    EXPECT_TRUE(found.contains("path_base64"));
    EXPECT_EQ(Search(database, {"-0", "--only-in", folder + "/./sub/", "layer"}),
              folder + "/sub/b\n\xFF.velmora" + '\0');
    EXPECT_EQ(Search(database, {"--limit", "1", "layer", "-nebenbahn"}),
              folder + "/a.velmora\n  Schmalspur\n  «Layer» 0\n");

    // A folder above takes over, a folder that has gone takes its documents along.
    Index(database, {folder + "/.."}, kExitOK);
    const tJSON status = tJSON::parse(Velmora("index", database, {"--status", "--format", "json"}).out);
    ASSERT_EQ(status["roots"].size(), 1U);
    EXPECT_EQ(status["roots"][0]["path"], std::filesystem::path(folder).parent_path().string());
    std::filesystem::remove_all(folder);
    EXPECT_EQ(Search(database, {"--count", "nebenbahn"}), "1\n");
    Index(database, {});
    EXPECT_EQ(Search(database, {"--count", "nebenbahn"}), "0\n");
}

TEST(IndexCommand, KnowsEveryLibraryAndArticle)
{
    const std::string database = MakeFolder("names-index") + "/index.db";
    Index(database, {SOURCE_FOLDER "/Samples"});
    EXPECT_EQ(Search(database, {"--count", "library:halvensen", "article:3602"}),
              "2\n"); // the summary names one article
    EXPECT_EQ(Search(database, {"--count", "text:3602"}), "0\n");
    EXPECT_EQ(Search(database, {"--count", "author:Mueller"}), "1\n");
}

TEST(IndexCommand, RefusesWrongUsage)
{
    const std::string database = MakeFolder("usage") + "/index.db";
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* message;
    } cases[] = {{{"index", "-"}, kExitUsage, "standard input"},
                 {{"index", "--status", "x"}, kExitUsage, "only show"},
                 {{"index", "/nonexistent"}, kExitFailed, "no such file"},
                 {{"index", "--plugin", "/nonexistent", "/"}, kExitFailed, "plug-in"},
                 {{"search"}, kExitUsage, "nothing to search for"},
                 {{"search", "--cuont"}, kExitUsage, "--cuont"},
                 {{"search", "gleis", "foo:x"}, kExitUsage, "at character 7"}};
    for (const auto& c : cases) {
        std::vector<std::string> arguments = c.arguments;
        arguments.insert(arguments.begin() + 1, {"--database", database});
        const tProgramResult result = RunVelmora(arguments);
        EXPECT_EQ(result.status, c.status) << c.message;
        EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
    }
    const tProgramResult none = Velmora("search", database + "x", {"gleis"});
    EXPECT_EQ(none.status, kExitFailed);
    EXPECT_NE(none.err.find("'velmora index FOLDER' makes it"), std::string::npos) << none.err;
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
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    std::mt19937 random(7);
    int killed = 0;
    int partial = 0;
    for (int round = 0; round < 4; ++round) {
        const std::string database = place + "/" + std::to_string(round) + ".db";
        for (int i = 0; i < 4; ++i) {
            const pid_t process = Start({BUILD_FOLDER "/velmora", "index", "--database", database, folder}, nowhere);
            std::this_thread::sleep_for(whole * (random() % 1000) / 1500);
            kill(process, SIGKILL);
            killed += WaitFor(process) == 128 + SIGKILL ? 1 : 0;
            const tProgramResult found = Velmora("search", database, {"--count", "plan"});
            partial += found.status == kExitOK && found.out != "0\n" && found.out != "3000\n" ? 1 : 0;
        }
        const tJSON summary = Index(database, {folder});
        EXPECT_EQ(summary["documents"], count);
        EXPECT_EQ(Dump(database), expected);
    }
    EXPECT_GT(killed, 4);
    EXPECT_GT(partial, 0);

    // An interrupt keeps what is done.
    const std::string database = place + "/interrupted.db";
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const pid_t process =
        Start({BUILD_FOLDER "/velmora", "index", "--format", "json", "--database", database, folder}, ends[1]);
    close(ends[1]);
    std::this_thread::sleep_for(whole / 2);
    kill(process, SIGINT);
    EXPECT_EQ(WaitFor(process), kExitInterrupted);
    char text[4096] = {};
    EXPECT_GE(read(ends[0], text, sizeof text - 1), 0);
    close(ends[0]);
    const tJSON before = tJSON::parse(text, nullptr, false);
    const int64_t done = before.is_object() ? before["added"].get<int64_t>() : 0;
    EXPECT_LT(done, count);
    const tJSON after = Index(database, {folder});
    EXPECT_EQ(after["unchanged"], done);
    EXPECT_EQ(after["added"], count - done);
    EXPECT_EQ(Dump(database), expected);
    close(nowhere);
}

TEST(IndexCommand, HasOneWriterAndManyReaders)
{
    const std::string folder = MakeManyLayouts("shared", 3);
    const std::string database = MakeFolder("shared-index") + "/index.db";
    Index(database, {folder});
    CIndexDatabase writer(database, CIndexDatabase::eAccess::kWrite);
    writer.StoreTexts({"/elsewhere", {}, "", ""}, {"", "", "plan", "", "", "", "", ""}, 1);
    const tProgramResult second = Velmora("index", database, {folder});
    EXPECT_EQ(second.status, kExitFailed);
    EXPECT_NE(second.err.find("another run is writing"), std::string::npos) << second.err;
    EXPECT_EQ(Search(database, {"--count", "plan"}), "3\n"); // not yet committed
    writer.Commit();
    EXPECT_EQ(Search(database, {"--count", "plan"}), "4\n");
}
