// The pool against a worker that misbehaves on demand, first alone, then behind the host.
#include "Importer/Names.h"
#include "ProgramRun.h"
#include "output/CRecordWriter.h"
#include "pool/CDocumentRun.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <set>

static CDescriptor OpenDocument(const std::string& text)
{
    return CDescriptor(open(WriteTestFile("document", text).c_str(), O_RDONLY | O_CLOEXEC));
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

TEST(Supervisor, ReportsEveryMisbehaviourForThatDocumentAlone)
{
    struct tMisbehaviour {
        const char* command;
        eFailure kind;
        const char* message; ///< part of it
    };
    std::vector<tMisbehaviour> cases = {{"crash", eFailure::kCrash, "signal 11"},
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
        cases.push_back({command, eFailure::kCrash, "out of form"});
    }
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 0.5, 1);
    for (const tMisbehaviour& c : cases) {
        SCOPED_TRACE(c.command);
        const tAnswer answer = Ask(pool, c.command);
        EXPECT_FALSE(answer.ok);
        if (strcmp(c.command, "flood bytes") != 0) { // which may be late
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
    pool.Submit(1, {eVerb::kImport, "type"}, OpenDocument(std::string("exit 3\0", 7)));
    std::ofstream(TestPath("document"), std::ios::app) << "more";
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

TEST(Supervisor, RenewsAWorkerThatGrows)
{
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 60, 1);
    const std::string process = Ask(pool, "limits").attributes.at(0).texts.at(0);
    EXPECT_TRUE(Ask(pool, "grow").ok);
    std::string after = process;
    for (int i = 0; i < 200 && after == process; ++i) {
        after = Ask(pool, "limits").attributes.at(0).texts.at(0);
    }
    EXPECT_NE(after, process);
}

TEST(Supervisor, SaysWhyNoWorkerCanBeHad)
{
    const std::pair<tWorkerSettings, const char*> cases[] = {
        {{STAND_IN_WORKER, "/refuses", 64}, "the plug-in is of another kind"},
        {{STAND_IN_WORKER, "/dies", 64}, "(status 5)"},
        {{STAND_IN_WORKER, "/killed", 64}, "is killed as it starts"},
        {{"/nonexistent", "/plug-in", 64}, "cannot be started: No such file"}};
    for (const auto& [settings, message] : cases) {
        CWorkerPool pool(settings, 5, 1);
        tFailure failure;
        ASSERT_EQ(pool.WaitUntilReady(failure), CWorkerPool::eResult::kFailed);
        EXPECT_EQ(failure.kind, eFailure::kPlugIn);
        EXPECT_NE(failure.message.find(message), std::string::npos) << failure.message;
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
    // What the document makes the plug-in do, and the code of its failure; none where it answers.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"crash", "crash"},
        {"exit", "crash"},
        {"hang", "timeout"},
        {"throw", "crash"},
        {"flood the host", "crash"},
#if !defined(__SANITIZE_ADDRESS__) // no limit can be set there
        {"memory", "memory"},
#endif
        {"flood the streams", ""},
        {"strange values", ""}
    };
    std::vector<std::string> texts;
    for (const auto& c : cases) {
        texts.insert(texts.end(), 20, "good");
        texts.push_back(c.first);
    }
    const tProgramResult result =
        RunVelmora({"import", "-q", "--jobs", "4", "--timeout", "1", "--memory", "64", "--format", "json", "--plugin",
                    FAULTY_PLUG_IN, WriteDocuments("faulty", texts)});
    EXPECT_EQ(result.err, "");
    const auto records = ParseLines(result.out);
    ASSERT_EQ(records.size(), texts.size());
    for (size_t i = 0; i < texts.size(); ++i) {
        const auto& record = records[i];
        SCOPED_TRACE(record);
        const std::string code = i % 21 < 20 ? "" : cases[i / 21].second;
        if (code.empty()) {
            EXPECT_EQ(record["attributes"]["kMDItemDescription"], texts[i]);
        } else {
            EXPECT_EQ(record["error"]["code"], code);
        }
    }
}

TEST(FaultyPlugIn, FindsNothingOfTheCallers)
{
    const std::string look = WriteTestFile("look.velmora", "look around");
    tProgramRun run;
    run.environment = {"SECRET=secret"};
    for (const char* program : {"/bin/cat /proc/self/fd/9", // which can read it
                                "\"$1\" import --plugin \"$2\" --raw -n kMDItemDescription \"$3\""}) {
        const std::string line = std::string("exec 9<\"$0\"; exec ") + program;
        run.arguments = {"/bin/sh",      "-c", line, WriteTestFile("secret", "secret"), BUILD_FOLDER "/velmora",
                         FAULTY_PLUG_IN, look};
        EXPECT_EQ(RunProgram(run).out, program[0] == '/' ? "secret" : "");
    }
}

/// A copy of the host whose worker is the stand-in. @return its path
static std::string MakeHostWithStandIn()
{
    const std::string folder = MakeFolder("host");
    std::filesystem::copy_file(BUILD_FOLDER "/velmora", folder + "/velmora");
    std::filesystem::copy_file(STAND_IN_WORKER, folder + "/velmora-worker");
    std::filesystem::create_directory(folder + "/" + Importer::kBundleName);
    return folder + "/velmora";
}

TEST(HostWithStandIn, ReadsNoReportThatItsDocumentCannotExplain)
{
    tProgramRun run;
    run.arguments = {MakeHostWithStandIn(), "check", "-q"};
    std::string expected;
    for (const char* command : {"nested report", "report of many values", "long report"}) {
        run.arguments.push_back(WriteTestFile(command, command));
        expected += "velmora: " + run.arguments.back() + ": the worker process answered out of form\n";
    }
    run.arguments.push_back(WriteTestFile("strange report", "strange report"));
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, expected);
    EXPECT_EQ(result.out, run.arguments.back() + ": \\x1B[31m, 0 elements, whole\n");
}

#if !defined(__SANITIZE_ADDRESS__) // no limit can be set there
TEST(HostWithStandIn, OutlivesAnswersThatItHasNoMemoryFor)
{
    const std::string large = WriteTestFile("large", "flood bytes");
    std::filesystem::resize_file(large, 5000000); // for such a document the answer is not too long
    tProgramRun run;
    run.arguments = {"/bin/sh",
                     "-c",
                     "ulimit -v 300000; exec \"$0\" import --format json -j1 \"$@\"",
                     MakeHostWithStandIn(),
                     large,
                     WriteTestFile("good", "good")};
    const tProgramResult result = RunProgram(run);
    EXPECT_NE(result.out.find("\"code\":\"memory\""), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("\"kMDItemDescription\":\"good\""), std::string::npos) << result.out;
}
#endif

TEST(HostWithStandIn, EndsCleanlyWhenInterrupted)
{
    for (const std::string format : {"json", "plist"}) {
        tProgramRun run;
        run.arguments = {MakeHostWithStandIn(),
                         "import",
                         "--timeout",
                         "60",
                         "--format",
                         format,
                         WriteDocuments("interrupted", {"first", "second", "hang", "never"})};
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
        EXPECT_TRUE(result.out.ends_with(format == "json" ? "}}\n" : "</plist>\n")) << result.out;
    }
}

TEST(HostWithStandIn, EndsQuietlyWhenNobodyReads)
{
    tProgramRun run;
    run.arguments = {MakeHostWithStandIn(), "import", "--format", "json"};
    run.arguments.insert(run.arguments.end(), 20, WriteTestFile("long", "long"));
    run.onOutput = [](int, const std::string&) { return false; };
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_LT(result.out.size(), 3000000U);
}
