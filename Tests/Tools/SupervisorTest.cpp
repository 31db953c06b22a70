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

static const struct tMisbehaviour {
    const char* command;
    eFailure kind;
    const char* message; ///< part of it
} kMisbehaviours[] = {{"crash", eFailure::kCrash, "signal 11"},
                      {"exit 0", eFailure::kCrash, "without an answer (status 0)"},
                      {"exit 3", eFailure::kCrash, "without an answer (status 3)"},
                      {"hang", eFailure::kTimeout, "within 0.5 seconds"},
                      {"close and hang", eFailure::kCrash, "without an answer"},
                      {"fatal", eFailure::kCrash, "Layer list is null"},
                      {"memory", eFailure::kMemory, "memory"},
                      {"half a header", eFailure::kCrash, "without an answer"},
                      {"half an answer", eFailure::kTimeout, "seconds"},
                      {"wrong magic", eFailure::kCrash, "out of form"},
                      {"unknown kind", eFailure::kCrash, "out of form"},
                      {"greeting", eFailure::kCrash, "out of form"},
                      {"request", eFailure::kCrash, "out of form"},
                      {"wrong sequence", eFailure::kCrash, "out of form"},
                      {"too long", eFailure::kCrash, "out of form"},
                      {"cut", eFailure::kCrash, "out of form"},
                      {"longer", eFailure::kCrash, "out of form"},
                      {"bad UTF-8", eFailure::kCrash, "out of form"},
                      {"wrong verb", eFailure::kCrash, "out of form"},
                      {"descriptor", eFailure::kCrash, "out of form"},
                      {"flood", eFailure::kCrash, "out of form"}};

TEST(Supervisor, ReportsEveryMisbehaviourForThatDocumentAlone)
{
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 0.5, 1);
    for (const tMisbehaviour& c : kMisbehaviours) {
        SCOPED_TRACE(c.command);
        const tAnswer answer = Ask(pool, c.command);
        EXPECT_FALSE(answer.ok);
        EXPECT_EQ(answer.failure.kind, c.kind);
        EXPECT_NE(answer.failure.message.find(c.message), std::string::npos) << answer.failure.message;
        const tAnswer next = Ask(pool, "the next one");
        ASSERT_TRUE(next.ok) << next.failure.message;
        EXPECT_EQ(next.attributes.at(0).texts.at(0), "the next one");
    }
    const tAnswer flood = Ask(pool, "flood bytes");
    EXPECT_FALSE(flood.ok);
    EXPECT_EQ(Ask(pool, "long").attributes.at(0).texts.at(0).size(), 5000000U);
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
#endif

TEST(Supervisor, KeepsSeveralWorkersApart)
{
    CWorkerPool pool({STAND_IN_WORKER, "/plug-in", 64}, 0.5, 3);
    std::vector<std::string> documents;
    for (int i = 0; i < 60; ++i) {
        documents.push_back(i % 10 == 3 ? kMisbehaviours[static_cast<size_t>(i) / 10].command
                                        : "document " + std::to_string(i));
    }
    std::vector<int> answers(documents.size());
    size_t next = 0;
    for (size_t collected = 0; collected < documents.size(); ++collected) {
        for (; next < documents.size() && pool.HasRoom(); ++next) {
            pool.Submit(next, {eVerb::kImport, "type"}, OpenDocument(documents[next]));
        }
        uint64_t ticket = 0;
        tAnswer answer;
        ASSERT_EQ(pool.Collect(ticket, answer), CWorkerPool::eResult::kDone);
        ASSERT_LT(ticket, next);
        ++answers[ticket];
        EXPECT_EQ(answer.ok, ticket % 10 != 3) << ticket << ": " << answer.failure.message;
        if (answer.ok) {
            EXPECT_EQ(answer.attributes.at(0).texts.at(0), documents[ticket]);
        }
    }
    EXPECT_EQ(answers, std::vector<int>(documents.size(), 1));
}

TEST(Supervisor, SaysWhyNoWorkerCanBeHad)
{
    const struct {
        const char* program;
        const char* plugIn;
        const char* message;
    } cases[] = {{STAND_IN_WORKER, "/refuses", "the plug-in is of another kind"},
                 {STAND_IN_WORKER, "/dies", "(status 5)"},
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

/// The processes that this one has started.
static std::vector<pid_t> ListChildren()
{
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const int process = atoi(entry.path().filename().c_str());
        std::ifstream file(entry.path() / "stat");
        std::string text;
        if (process > 0 && std::getline(file, text)) {
            char state = 0;
            int parent = 0;
            sscanf(text.c_str() + text.rfind(')') + 1, " %c %d", &state, &parent);
            if (parent == getpid() && state != 'Z') {
                children.push_back(process);
            }
        }
    }
    return children;
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
            const std::vector<pid_t> workers = ListChildren();
            killed += !workers.empty() && kill(workers[next / 50 % workers.size()], SIGKILL) == 0 ? 1 : 0;
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
    std::vector<std::string> texts(80, "long"); // answers of 5 MB
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
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_LT(count, texts.size());
        SCOPED_TRACE(texts[count] + ": " + line);
        const auto record = nlohmann::json::parse(line);
        const auto& c = cases[count / 21];
        if (count % 21 < 20 || *c.code == '\0') {
            EXPECT_EQ(record["ok"], true);
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
    for (const tMisbehaviour& c : kMisbehaviours) {
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
    std::istringstream lines(result.out);
    size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const auto record = nlohmann::json::parse(line);
        ASSERT_LT(count, expected.size());
        EXPECT_EQ(record["path"], run.arguments[9 + count]);
        EXPECT_EQ(record["ok"] ? "ok" : record["error"]["code"], expected[count]);
    }
    EXPECT_EQ(count, expected.size());
}

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
    EXPECT_LT(result.out.size(), 5000000U);
}
