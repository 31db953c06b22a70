// The sandbox of the built host's workers, and the doctor's word on it.
#include "ExitCodes.h"
#include "ProgramRun.h"
#include "support/DocumentBuilder.h"

#include <set>

using nlohmann::json;

/// What the doctor of a host that is started with these arguments says, and its exit status.
static json Examine(const std::vector<std::string>& start)
{
    tProgramRun run;
    run.arguments = start;
    run.arguments.insert(run.arguments.end(), {BUILD_FOLDER "/velmora", "doctor", "--format", "json"});
    const tProgramResult result = RunProgram(run);
    EXPECT_EQ(result.err, "");
    json found = json::parse(result.out, nullptr, false);
    found["status"] = result.status;
    return found;
}

/// Why workers of this build, on this system, put on no sandbox or not all of it; empty where they do.
static std::string FindObstacle()
{
    const json sandbox = Examine({})["sandbox"];
    std::string obstacle = sandbox["note"];
    for (const json& layer : sandbox["layers"]) {
        obstacle += layer["on"] ? "" : layer["name"].get<std::string>() + ": " + layer["detail"].get<std::string>();
    }
    return obstacle;
}

TEST(Doctor, ProvesThatEachLayerHolds)
{
    if (const std::string obstacle = FindObstacle(); !obstacle.empty()) {
        GTEST_SKIP() << obstacle;
    }
    const json found = Examine({});
    EXPECT_EQ(found["status"], kExitOK) << found["problems"];
    EXPECT_EQ(found["ok"], true);
    EXPECT_EQ(found["plugin"]["imports"], true);
    EXPECT_EQ(found["plugin"]["types"], json({"com.velmora.layout"}));
    std::set<std::string> proved;
    const json& trials = found["sandbox"]["trials"];
    ASSERT_GE(trials.size(), 9U);
    for (const json& trial : trials) {
        EXPECT_EQ(trial["outside"]["result"], "succeeded") << trial;
        EXPECT_EQ(trial["confined"]["result"], "refused") << trial;
        EXPECT_FALSE(trial["layers"].empty()) << trial;
        for (const auto& layer : trial["layers"].items()) {
            EXPECT_EQ(layer.value()["result"], "refused") << trial;
            proved.insert(layer.key());
        }
    }
    EXPECT_EQ(proved, (std::set<std::string>{"landlock", "limits", "memory", "seccomp"}));
    const tProgramResult text = RunVelmora({"doctor", "--sandbox", "require"});
    EXPECT_EQ(text.status, kExitOK);
    EXPECT_NE(text.out.find("\nAll is well.\n"), std::string::npos) << text.out;
}

TEST(Doctor, NamesWhatIsMissing)
{
    const std::string data = MakeFolder("data");
    WriteFile(data + "/velmora/index.db", "no database at all");
    const tProgramResult result = RunVelmora({"doctor", "--plugin", "/nonexistent"}, "", {"XDG_DATA_HOME=" + data});
    EXPECT_EQ(result.status, kExitFailed);
    EXPECT_NE(result.out.find("  the plug-in /nonexistent does not exist\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("/index.db cannot be used: file is not a database; 'velmora index --rebuild"),
              std::string::npos)
        << result.out;
}

TEST(Sandbox, ChangesNoAnswer)
{
    const std::string folder = MakeFolder("sandbox");
    for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA "/documents")) {
        if (entry.path().extension() == ".velmora") {
            std::filesystem::copy(entry.path(), folder);
        }
    }
    for (uint64_t seed = 1; seed <= 20; ++seed) { // with texts in turned elements, of all kinds of characters
        WriteFile(folder + "/random " + std::to_string(seed) + ".velmora",
                  Layout(RandomLayout(seed, 60, true)).Bytes());
    }
    const std::string stock = SOURCE_FOLDER "/Samples/stock.xml";
    const std::vector<std::string> commands[] = {
        {"import", "--quiet", "--format", "json", folder},
        {"check", "--quiet", "--format", "json", folder, stock},
        {"parts", "--quiet", "--format", "json", "--stock", stock, folder},
        {"render", "--format", "png", SOURCE_FOLDER "/Samples/terminus.velmora"},
        {"render", "--format", "svg", "--labels", "--grid", SOURCE_FOLDER "/Samples/oval.velmora"},
        {"render", "--format", "pdf", SOURCE_FOLDER "/Samples/oval.velmora"},
        {"stock", "--format", "json", stock},
        {"schema", "--format", "json"}};
    const std::string mode = FindObstacle().empty() ? "require" : "auto";
    for (std::vector<std::string> command : commands) {
        SCOPED_TRACE(command[0]);
        command.insert(command.end(), {"--sandbox", "off"});
        const tProgramResult expected = RunVelmora(command);
        command.back() = mode;
        const tProgramResult result = RunVelmora(command);
        EXPECT_EQ(result.status, expected.status);
        EXPECT_EQ(result.out, expected.out);
        EXPECT_EQ(result.err, expected.err);
        EXPECT_NE(result.out, "");
        EXPECT_EQ(result.out.find("\"crash\""), std::string::npos);
    }
}

TEST(Sandbox, GoesOnWithWhatTheSystemGrants)
{
    if (const std::string obstacle = FindObstacle(); !obstacle.empty()) {
        GTEST_SKIP() << obstacle;
    }
    const std::string document = SOURCE_FOLDER "/Samples/oval.velmora";
    const struct {
        const char* calls;
        bool landlock; ///< on nevertheless
        bool seccomp;
    } cases[] = {{"landlock", false, true}, {"seccomp", true, true}, {"landlock,seccomp,prctl", false, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.calls);
        const bool whole = c.landlock && c.seccomp;
        const json found = Examine({REFUSE_CALLS, c.calls});
        EXPECT_EQ(found["status"], whole ? kExitOK : kExitFailed);
        for (const json& layer : found["sandbox"]["layers"]) {
            const std::string name = layer["name"];
            EXPECT_EQ(layer["on"], name == "landlock" ? c.landlock : name != "seccomp" || c.seccomp) << layer;
        }
        for (const json& trial : found["sandbox"]["trials"]) {
            if (trial["name"] == "fork") {
                EXPECT_EQ(trial["confined"]["result"], c.seccomp ? "refused" : "succeeded");
            }
        }
        tProgramRun run;
        run.arguments = {REFUSE_CALLS, c.calls, BUILD_FOLDER "/velmora", "import", "--format", "json", document};
        EXPECT_EQ(RunProgram(run).status, kExitOK);
        run.arguments.insert(run.arguments.end(), {"--sandbox", "require"});
        const tProgramResult required = RunProgram(run);
        EXPECT_EQ(required.status, whole ? kExitOK : kExitFailed);
        EXPECT_EQ(required.out.find("\"code\":\"sandbox\"") == std::string::npos, whole) << required.out;
        EXPECT_EQ(required.err.find("the sandbox that is required cannot be had: ") == std::string::npos, whole);
    }
}
