// The pool against a worker that misbehaves on demand, first alone, then behind the host.
#include "Importer/Names.h"
#include "ProgramRun.h"
#include "output/CRecordWriter.h"
#include "pool/CDocumentRun.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

static CDescriptor OpenDocument(const std::string& text)
{
    const std::string path = std::string(getenv("TEST_FOLDER")) + "/document";
    WriteFile(path, text);
    CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    unlink(path.c_str());
    return file;
}

static tAnswer Ask(CWorkerPool& pool, const std::string& document)
{
    static uint64_t sTicket = 0;
    EXPECT_TRUE(pool.HasRoom());
    pool.Submit(++sTicket, {eVerb::kImport, "type"}, OpenDocument(document));
    uint64_t ticket = 0;
    tAnswer answer;
    EXPECT_EQ(pool.Collect(ticket, answer), CWorkerPool::eResult::kDone);
    EXPECT_EQ(ticket, sTicket);
    return answer;
}

struct tMisbehaviour {
    std::string command;
    eFailure kind;
    const char* message; ///< part of it
};

static std::vector<tMisbehaviour> ListMisbehaviours()
{
    std::vector<tMisbehaviour> list = {{"crash", eFailure::kCrash, "signal 11"},
                                       {"exit 0", eFailure::kCrash, "without an answer (status 0)"},
                                       {"exit 3", eFailure::kCrash, "without an answer (status 3)"},
                                       {"hang", eFailure::kTimeout, "within 0.5 seconds"},
                                       {"close and hang", eFailure::kCrash, "without an answer"},
                                       {"fatal", eFailure::kCrash, "Layer list is null"},
                                       {"memory", eFailure::kMemory, "memory"},
                                       {"half a header", eFailure::kCrash, "without an answer"},
                                       {"half an answer", eFailure::kTimeout, "seconds"}};
    for (const char* command : {"wrong magic", "unknown kind", "greeting", "request", "wrong sequence", "too long",
                                "cut", "longer", "bad UTF-8", "wrong verb", "descriptor", "flood", "flood bytes"}) {
        list.push_back({command, eFailure::kCrash, "out of form"});
    }
    return list;
}

TEST(Supervisor, ReportsEveryMisbehaviourForThatDocumentAlone)
{
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 0.5, 1);
    for (const tMisbehaviour& c : ListMisbehaviours()) {
        SCOPED_TRACE(c.command);
        const tAnswer answer = Ask(pool, c.command);
        EXPECT_FALSE(answer.ok);
        if (c.command != "flood bytes") { // which may be late
            EXPECT_EQ(answer.failure.kind, c.kind);
            EXPECT_NE(answer.failure.message.find(c.message), std::string::npos) << answer.failure.message;
        }
        const tAnswer next = Ask(pool, "the next one");
        ASSERT_TRUE(next.ok) << next.failure.message;
        EXPECT_EQ(next.attributes.at(0).texts.at(0), "the next one");
    }
    EXPECT_EQ(Ask(pool, "long").attributes.at(0).texts.at(0).size(), 3000000U);
}

TEST(Supervisor, DoesNotBlameADocumentForWhatCameBefore)
{
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 5, 1);
    for (const char* before : {"answer twice", "answer and die"}) {
        for (int i = 0; i < 5; ++i) {
            EXPECT_TRUE(Ask(pool, before).ok);
            // So that the second frame, or the end, has come before the next request goes out.
            usleep(20000);
            EXPECT_EQ(Ask(pool, "innocent").attributes.at(0).texts.at(0), "innocent");
        }
    }
}

TEST(Supervisor, TellsADocumentThatIsWrittenToFromAFault)
{
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 5, 1);
    const std::string path = WriteTestFile("changing", std::string("exit 3\0", 7));
    pool.Submit(1, {eVerb::kImport, "type"}, CDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)));
    std::ofstream(path, std::ios::app) << "more";
    uint64_t ticket = 0;
    tAnswer answer;
    EXPECT_EQ(pool.Collect(ticket, answer), CWorkerPool::eResult::kDone);
    EXPECT_EQ(FailureCode(answer.failure) + answer.failure.message, "1was changed while it was read");
}

#if defined(__linux__)
// What is left when the host's own clock stands still. Takes three seconds of processor time, the fewest that count.
TEST(Supervisor, EndsAWorkerThatHasUsedItsProcessorTime)
{
    tWorkerSettings settings = {STAND_IN_WORKER, "/plug-in", 64};
    settings.processorSeconds = 1;
    CWorkerPool pool(settings, 600, 1);
    const tAnswer answer = Ask(pool, "spin");
    EXPECT_EQ(answer.failure.kind, eFailure::kTimeout);
    EXPECT_NE(answer.failure.message.find("processor time"), std::string::npos) << answer.failure.message;
    EXPECT_TRUE(Ask(pool, "the next one").ok);
}

// The signal of the soft limit can be blocked; the hard one cannot be raised, so it must not come near.
TEST(Supervisor, RenewsAWorkerBeforeItsLastProcessorTime)
{
    tWorkerSettings settings = {STAND_IN_WORKER, "/plug-in", 64};
    settings.processorSeconds = 5;
    for (const auto& [life, isFresh] : {std::pair(60U, false), {0U, false}, {60U, true}}) {
        settings.processorLife = life;
        settings.isFresh = isFresh;
        CWorkerPool pool(settings, 60, 1);
        std::set<std::string> processes;
        for (int i = 0; i < 3; ++i) {
            processes.insert(Ask(pool, "limits").attributes.at(0).texts.at(0));
        }
        EXPECT_EQ(processes.size(), life > 0 && !isFresh ? 1U : 3U);
        EXPECT_NE(processes.begin()->find(" " + std::to_string(life + 42)), std::string::npos) << *processes.begin();
    }
}
#endif

TEST(Supervisor, SaysWhyNoWorkerCanBeHad)
{
    const struct {
        const char* program;
        const char* plugIn;
        const char* message;
    } cases[] = {{STAND_IN_WORKER, "/refuses", "the plug-in is of another kind"},
                 {STAND_IN_WORKER, "/dies", "(status 5)"},
                 {STAND_IN_WORKER, "/killed", "is killed as it starts"},
                 {"/nonexistent", "/plug-in", "cannot be started: No such file"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        CWorkerPool pool({c.program, c.plugIn, 64}, 5, 1);
        tFailure failure;
        ASSERT_EQ(pool.WaitUntilReady(failure), CWorkerPool::eResult::kFailed);
        EXPECT_EQ(failure.kind, eFailure::kPlugIn);
        EXPECT_NE(failure.message.find(c.message), std::string::npos) << failure.message;
        EXPECT_EQ(Ask(pool, "anything").failure.kind, eFailure::kPlugIn);
    }
}

/// Documents with these texts, and a source that gives them in this order.
static std::string WriteDocuments(const std::string& name, const std::vector<std::string>& texts)
{
    const std::string folder = MakeFolder(name);
    char file[32];
    for (size_t i = 0; i < texts.size(); ++i) {
        snprintf(file, sizeof file, "/%05zu.velmora", i);
        WriteFile(folder + file, texts[i]);
    }
    return folder;
}

/// A process that this one has started; 0 when there is none.
static pid_t FindChild()
{
    const std::string self = std::to_string(getpid());
    std::ifstream children("/proc/" + self + "/task/" + self + "/children");
    pid_t child = 0;
    children >> child;
    return child;
}

TEST(DocumentRun, LosesNothingWhenWorkersAreKilled)
{
    constexpr size_t kDocuments = 2000;
    std::vector<std::string> texts;
    for (size_t i = 0; i < kDocuments; ++i) {
        texts.push_back("document " + std::to_string(i));
    }
    CDocumentSource source({WriteDocuments("killed", texts)});
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 5, 4);
    CDocumentRun run(source, pool, {eVerb::kImport, "type"});
    size_t next = 0;
    size_t killed = 0;
    tRunHandlers handlers;
    handlers.take = [&](const tInput&, const tAnswer& answer) {
        EXPECT_TRUE(answer.ok) << answer.failure.message;
        EXPECT_EQ(answer.ok ? answer.attributes.at(0).texts.at(0) : "", texts[next]);
        if (++next % 50 == 0) {
            const pid_t worker = FindChild();
            killed += worker > 0 && kill(worker, SIGKILL) == 0 ? 1 : 0;
        }
        return true;
    };
    EXPECT_EQ(run.Run(handlers), CDocumentRun::eResult::kDone);
    EXPECT_EQ(next, kDocuments);
    EXPECT_EQ(run.GetCounts().good, kDocuments);
    EXPECT_GE(killed, 10U); // fewer than 40: at times none is running
}

TEST(DocumentRun, AsksWhatIsWantedAndKeepsTheOrder)
{
    const std::vector<std::string> texts = {"hang", "one", "exit 0", "two", "three", "four"};
    CDocumentSource source({WriteDocuments("wanted", texts), "missing"});
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 0.5, 2);
    CDocumentRun run(source, pool, {eVerb::kImport, "type"});
    tRunHandlers handlers;
    std::vector<std::string> answers;
    handlers.isWanted = [](const tInput& input) {
        EXPECT_FALSE(input.document.IsOpen());
        EXPECT_GT(input.status.modified, 0);
        return input.status.size != 5; // "three"
    };
    handlers.isWantedOpen = [](tInput& input) {
        char text[16] = {};
        EXPECT_GT(pread(input.document.Get(), text, sizeof text - 1, 0), 0);
        input.note = std::string("note ") + text;
        return strcmp(text, "four") != 0;
    };
    handlers.take = [&](const tInput& input, const tAnswer& answer) {
        answers.push_back(answer.ok ? answer.attributes.at(0).texts.at(0) + ", " + input.note
                                    : FailureCode(answer.failure));
        return true;
    };
    EXPECT_EQ(run.Run(handlers), CDocumentRun::eResult::kDone);
    EXPECT_EQ(answers, (std::vector<std::string>{"timeout", "one, note one", "crash", "two, note two", "1"}));
    EXPECT_EQ(run.GetCounts().skipped, 2U);
    EXPECT_EQ(run.GetCounts().CountFailed(), 3U);
}

TEST(DocumentRun, DoesNotPileUpAnswersBehindASlowDocument)
{
    std::vector<std::string> texts(80, "long"); // answers of 3 MB
    texts.front() = "hang";
    CDocumentSource source({WriteDocuments("piled", texts)});
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 3, 2);
    CDocumentRun run(source, pool, {eVerb::kImport, "type"});
    size_t begun = 0;
    size_t begunBefore = 0;
    tRunHandlers handlers;
    handlers.isWanted = [&](const tInput&) { return ++begun > 0; };
    handlers.take = [&](const tInput&, const tAnswer&) {
        begunBefore = begunBefore == 0 ? begun : begunBefore;
        return true;
    };
    EXPECT_EQ(run.Run(handlers), CDocumentRun::eResult::kDone);
    EXPECT_EQ(run.GetCounts().good, texts.size() - 1);
    EXPECT_LE(begunBefore, 40U);
}

/// The host with the real worker, and an importer that does what the document says.
TEST(FaultyPlugIn, IsReportedForEachDocumentAndLosesNone)
{
    const struct {
        const char* text;
        const char* code;    ///< empty: it answers
        const char* message; ///< part of it
    } cases[] = {
        {"crash", "crash", "signal 11"},
        {"exit", "crash", "without an answer (status 0)"},
        {"hang", "timeout", "within 1 seconds"},
        {"throw", "crash", "raised an exception"},
        {"garbage", "crash", "out of form"},
        {"flood the host", "crash", "out of form"},
#if !defined(__SANITIZE_ADDRESS__) // no limit can be set there
        {"memory", "memory", "did not suffice"},
#endif
        {"flood the streams", "", ""},
        {"strange values", "", ""}
    };
    std::vector<std::string> texts;
    for (const auto& c : cases) {
        texts.insert(texts.end(), 20, "good");
        texts.emplace_back(c.text);
    }
    const tProgramResult result =
        RunVelmora({"import", "-q", "--jobs", "4", "--timeout", "1", "--memory", "64", "--format", "json", "--plugin",
                    FAULTY_PLUG_IN, WriteDocuments("faulty", texts)});
    EXPECT_EQ(result.err, "");
    std::istringstream lines(result.out);
    size_t count = 0;
    for (std::string line; std::getline(lines, line) && count < texts.size(); ++count) {
        SCOPED_TRACE(texts[count] + ": " + line);
        const auto record = nlohmann::json::parse(line);
        const auto& c = cases[count / 21];
        if (count % 21 < 20 || *c.code == '\0') {
            EXPECT_EQ(record["attributes"]["kMDItemDescription"], texts[count]);
        } else {
            EXPECT_EQ(record["error"]["code"], c.code);
#if !defined(__SANITIZE_ADDRESS__) // which answers a fault with an exit
            EXPECT_NE(record["error"]["message"].get<std::string>().find(c.message), std::string::npos);
#endif
        }
    }
    EXPECT_EQ(count, texts.size());
}

TEST(FaultyPlugIn, FindsNothingOfTheCallers)
{
    const std::string folder = MakeFolder("open");
    WriteFile(folder + "/secret", "secret");
    WriteFile(folder + "/look.velmora", "look around");
    tProgramRun run;
    run.arguments = {"/bin/sh",
                     "-c",
                     "exec 9<\"$0\"; exec \"$@\"",
                     folder + "/secret",
                     BUILD_FOLDER "/velmora",
                     "import",
                     "--plugin",
                     FAULTY_PLUG_IN,
                     "--raw",
                     "-n",
                     "kMDItemDescription",
                     folder + "/look.velmora"};
    run.environment = {"SECRET=secret"};
    EXPECT_EQ(RunProgram(run).out, "");
    run.arguments[4] = "/bin/cat"; // which can read it
    run.arguments.resize(5);
    run.arguments.emplace_back("/proc/self/fd/9");
    EXPECT_EQ(RunProgram(run).out, "secret");
}

/// A copy of the host whose worker is the stand-in.
class HostWithStandIn : public testing::Test {
protected:
    void SetUp() override
    {
        mFolder = MakeFolder("host");
        mHost = mFolder + "/velmora";
        std::filesystem::copy_file(BUILD_FOLDER "/velmora", mHost);
        std::filesystem::copy_file(STAND_IN_WORKER, mFolder + "/velmora-worker");
        std::filesystem::create_directory(mFolder + "/" + Importer::kBundleName);
    }

    std::string Document(const std::string& text)
    {
        std::string path = mFolder + "/" + std::to_string(mDocuments++) + ".velmora";
        WriteFile(path, text);
        return path;
    }

    std::string mFolder;
    std::string mHost;
    int mDocuments = 0;
};

TEST_F(HostWithStandIn, PrintsOneRecordForEveryInputInOrder)
{
    tProgramRun run;
    run.arguments = {mHost, "import", "-q", "--jobs", "4", "--format", "json", "--timeout", "0.5"};
    std::vector<std::string> expected;
    for (const tMisbehaviour& c : ListMisbehaviours()) {
        if (c.command == "flood bytes") {
            continue;
        }
        run.arguments.push_back(Document(c.command));
        expected.emplace_back(c.kind == eFailure::kTimeout  ? "timeout"
                              : c.kind == eFailure::kMemory ? "memory"
                                                            : "crash");
        run.arguments.push_back(Document("good"));
        expected.emplace_back("ok");
    }
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> outcomes;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
        const auto record = nlohmann::json::parse(line);
        EXPECT_EQ(record["path"], run.arguments.at(9 + outcomes.size()));
        outcomes.push_back(record["ok"] ? "ok" : record["error"]["code"]);
    }
    EXPECT_EQ(outcomes, expected);
}

TEST_F(HostWithStandIn, ReadsNoReportThatItsDocumentCannotExplain)
{
    tProgramRun run;
    run.arguments = {mHost, "check"};
    std::string expected;
    for (const char* command : {"nested report", "report of many values", "long report"}) {
        run.arguments.push_back(Document(command));
        expected += "velmora: " + run.arguments.back() + ": the worker process answered out of form\n";
    }
    run.arguments.push_back(Document("strange report"));
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, expected);
    EXPECT_EQ(result.out, run.arguments.back() + ": \\x1B[31m, 0 elements, whole\n");
}

#if !defined(__SANITIZE_ADDRESS__) // no limit can be set there
TEST_F(HostWithStandIn, OutlivesAnswersThatItHasNoMemoryFor)
{
    const std::string large = Document("flood bytes");
    std::filesystem::resize_file(large, 5000000); // for such a document the answer is not too long
    tProgramRun run;
    run.arguments = {"/bin/sh", "-c",  "ulimit -v 300000; exec \"$0\" import --format json -j1 \"$@\"",
                     mHost,     large, Document("good")};
    const tProgramResult result = RunProgram(run);
    EXPECT_NE(result.out.find("\"code\":\"memory\""), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("\"kMDItemDescription\":\"good\""), std::string::npos) << result.out;
}
#endif

TEST_F(HostWithStandIn, EndsCleanlyWhenInterrupted)
{
    for (const char* format : {"json", "plist"}) {
        tProgramRun run;
        run.arguments = {mHost, "import", "--timeout", "60", "--format", format};
        for (const char* text : {"first", "second", "hang", "never"}) {
            run.arguments.push_back(Document(text));
        }
        bool sent = false;
        run.onOutput = [&](int process, const std::string& out) {
            if (!sent && out.find("second") != std::string::npos) {
                sent = true;
                kill(process, SIGINT);
            }
            return true;
        };
        const tProgramResult result = RunProgram(run);
        EXPECT_TRUE(sent);
        EXPECT_EQ(result.status, 130);
        EXPECT_EQ(result.err.rfind("velmora: 2 imported in ", 0), 0U) << result.err;
        EXPECT_EQ(result.out.find("never"), std::string::npos);
        EXPECT_EQ(result.out.find("hang"), std::string::npos);
        const std::string end = result.out.substr(result.out.size() - 10);
        EXPECT_NE(end.find(std::string(format) == "json" ? "}}\n" : "</plist>\n"), std::string::npos) << end;
    }
}

TEST_F(HostWithStandIn, EndsQuietlyWhenNobodyReads)
{
    tProgramRun run;
    run.arguments = {mHost, "import", "--format", "json"};
    const std::string path = Document("long");
    run.arguments.insert(run.arguments.end(), 20, path);
    run.onOutput = [](int, const std::string&) { return false; };
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_LT(result.out.size(), 3000000U);
}
