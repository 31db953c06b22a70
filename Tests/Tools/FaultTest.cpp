// Bad days of disks: every call that writes fails in turn, and every call that reads.
#include "BuildingBlocks/CCountedCIG.h"
#include "ExitCodes.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "ProgramRun.h"
#include "Source/TrackLibraries/LibraryBuilder.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailSet.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexSearch.h"
#include "index/Tokenizer.h"
#include "support/DocumentBuilder.h"
#include "support/Faults.h"

#include <CoreFoundation/CoreFoundation.h>
#include <SQLiteCpp/SQLiteCpp.h>

#include <cerrno>
#include <fcntl.h>
#include <set>
#include <unistd.h>

namespace {
namespace fs = std::filesystem;
using tHow = tFault::eHow;
constexpr tFault::eCalls kReads = tFault::eCalls::kRead;
constexpr tFault::eCalls kWrites = tFault::eCalls::kWrite;
const char kOval[] = SOURCE_FOLDER "/Samples/oval.velmora";

int OpenNew(const std::string& path)
{
    return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

/// Runs the host as the action of a faulty run. What it prints goes to files that do not fail.
int Velmora(std::vector<std::string> arguments, int out = OpenNew(TestPath("out")))
{
    dup2(out, STDOUT_FILENO);
    dup2(OpenNew(TestPath("err")), STDERR_FILENO);
    arguments.insert(arguments.begin(), BUILD_FOLDER "/velmora");
    std::vector<char*> words;
    for (std::string& argument : arguments) {
        words.push_back(argument.data());
    }
    words.push_back(nullptr);
    execv(words[0], words.data());
    return 127;
}

std::set<std::string> NamesIn(const std::string& folder)
{
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        names.insert(entry.path());
    }
    return names;
}

class Faults : public testing::Test {
protected:
    void SetUp() override
    {
        if (RunWithFault(mPlace, {}, [] { return 0; }).status < 0) {
            GTEST_SKIP() << "this system lets no process decide on another one's calls: " << strerror(errno);
        }
    }

    /// What the host has said, after a run that may not have gone well.
    static void ExpectToldIfFailed(int status, const std::string& path, int error)
    {
        const std::string said = ReadFile(TestPath("err"));
        EXPECT_TRUE(status == kExitOK || status == kExitFailed) << status << "\n" << said;
        const auto says = [&](std::string_view text) { return said.find(text) != std::string::npos; };
        // SQLite has words of its own.
        const bool saysWhy = error == ENOSPC
                                 ? says("full") || says(strerror(error))
                                 : says(strerror(error)) || says("disk I/O error") || says("unable to open");
        EXPECT_TRUE(status == kExitOK || (says(path) && saysWhy)) << said;
    }

#if defined(__SANITIZE_ADDRESS__) // starting a process takes ten times as long
    static constexpr int kStride = 5;
#else
    static constexpr int kStride = 1;
#endif

    /// Calls `check` after runs of the action in which each of its calls failed, in each of the ways.
    /// @param step  from one call to the next, in ways other than the first
    static void ForEachFault(const std::string& folder, tFault::eCalls calls, const std::vector<tFault>& ways,
                             const std::function<int()>& action, const std::function<void()>& prepare,
                             const std::function<void(int status, const tFault&)>& check, int step = 1)
    {
        prepare();
        const tFaultyRun good = RunWithFault(folder, {calls}, action);
        ASSERT_EQ(good.status, kExitOK);
        ASSERT_GT(good.calls, 0);
        check(good.status, {calls});
        int failed = 0;
        for (tFault fault : ways) {
            const bool isFirst = fault.how == ways.front().how;
            for (; fault.at <= good.calls && !HasFailure(); fault.at += kStride * (isFirst ? 1 : step)) {
                SCOPED_TRACE("call " + std::to_string(fault.at) + ", way " +
                             std::to_string(static_cast<int>(fault.how)) + ", " + strerror(fault.error));
                prepare();
                const int status = RunWithFault(folder, fault, action).status;
                failed += status != kExitOK ? 1 : 0;
                check(status, fault);
            }
        }
        EXPECT_GT(failed, 0);
    }

    const std::string mPlace = fs::canonical(MakeFolder("faults"));
    const std::vector<tFault> mWriteWays = {
        {kWrites, tHow::kOnward, 1, ENOSPC}, {kWrites, tHow::kOnce, 1, EIO}, {kWrites, tHow::kShort, 1, ENOSPC}};
};

int SaveLayout(const std::string& path)
{
    CBoundLayout layout;
    return layout.Load(kOval) == CLayout::kLoaded && layout.Save(&path) ? kExitOK : kExitFailed;
}

int SaveLibrary(const std::string& path)
{
    CRailSet library(path);
    library.Append(new CCompositeGeometry);
    return library.Save() ? kExitOK : kExitFailed;
}

int SaveStock(const std::string& path)
{
    CCompositeGeometry article;
    article.SetName("1");
    article.SetRailSetName("Alpha");
    CStock stock;
    stock.AddElement(new CCountedCIG(&article, 1));
    return stock.SaveToFile(path.c_str()) ? kExitOK : kExitFailed;
}

int SavePreferences(const std::string& path)
{
    setenv("XDG_CONFIG_HOME", fs::path(path).parent_path().parent_path().c_str(), 1);
    CFPreferencesSetAppValue(CFSTR("key"), CFSTR("value"), CFSTR("faulty"));
    return CFPreferencesAppSynchronize(CFSTR("faulty")) ? kExitOK : kExitFailed;
}
} // namespace

TEST_F(Faults, AFileIsWrittenAsAWholeOrStaysAndTheUserIsTold)
{
    const struct {
        std::string name;
        int (*run)(const std::string& path); ///< null: the host, with these words and the path
        std::vector<std::string> words;
        std::string old;
        std::vector<tFault> ways;
    } operations[] = {
        {"layout", SaveLayout, {}, "old", mWriteWays},
        {"library", SaveLibrary, {}, "old", mWriteWays},
        {"stock", SaveStock, {}, "old", mWriteWays},
        {"velmora/faulty.plist",
         SavePreferences,
         {},
         "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><string>b</string></dict></plist>",
         mWriteWays},
        {"new.svg", nullptr, {"render", kOval, "-o"}, "", mWriteWays},
        {"picture.svg", nullptr, {"render", kOval, "-fo"}, "old", {mWriteWays[0]}},
        {"picture.png", nullptr, {"render", kOval, "-fo"}, "old", {mWriteWays[0]}},
        {"picture.pdf", nullptr, {"render", kOval, "-fo"}, "old", {mWriteWays[1]}},
        {"thumbnail", nullptr, {"thumbnail", kOval}, "old", {mWriteWays[2]}},
    };
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.name);
        const std::string path = mPlace + "/" + operation.name;
        std::string good;
        ForEachFault(
            mPlace, kWrites, operation.ways,
            [&] {
                std::vector<std::string> words = operation.words;
                words.push_back(path);
                return operation.run != nullptr ? operation.run(path) : Velmora(words);
            },
            [&] {
                MakeFolder("faults");
                if (!operation.old.empty()) {
                    WriteFile(path, operation.old);
                }
            },
            [&](int status, const tFault& fault) {
                const bool isThere = fs::exists(path);
                const std::string now = isThere ? ReadFile(path) : "";
                good = fault.how == tHow::kNone ? now : good;
                EXPECT_EQ(status == kExitOK ? now.size() : 0, status == kExitOK ? good.size() : 0); // dates differ
                EXPECT_TRUE(status == kExitOK || now == operation.old);
                EXPECT_EQ(isThere, status == kExitOK || !operation.old.empty());
                std::set<std::string> rest = NamesIn(mPlace);
                rest.erase(path);
                rest.erase(fs::path(path).parent_path());
                EXPECT_TRUE(rest.empty()) << *rest.begin() << " is left over";
                if (operation.run == nullptr) {
                    ExpectToldIfFailed(status, path, fault.error);
                }
            });
    }
}

TEST_F(Faults, OutputThatCannotBeWrittenIsSaid)
{
    int out = -1;
    ForEachFault(
        mPlace, kWrites, mWriteWays,
        [&] {
            return Velmora({"import", kOval}, out);
        },
        [&] { out = OpenNew(mPlace + "/out"); },
        [&](int status, const tFault& fault) { ExpectToldIfFailed(status, "the output", fault.error); });
}

TEST_F(Faults, AnIndexIsAsBeforeOrMoreAndTheNextRunMakesItWhole)
{
    const std::string documents = MakeFolder("documents");
    const std::string before = MakeFolder("before");
    const std::string database = mPlace + "/index.db";
    const auto index = [&](const std::string& path) {
        return RunVelmora({"index", "-q", "--database", path, documents});
    };
    for (const char* name : {"kept", "changed", "gone"}) {
        WriteFile(documents + "/" + name + ".velmora", MakeLayout(std::string("plan ") + name));
    }
    ASSERT_EQ(index(before + "/index.db").status, kExitOK);
    WriteFile(documents + "/changed.velmora", MakeLayout("plan B"));
    WriteFile(documents + "/added.velmora", MakeLayout("plan C"));
    fs::remove(documents + "/gone.velmora");
    for (const bool isNew : {true, false}) {
        SCOPED_TRACE(isNew ? "new" : "update");
        int runs = 0;
        ForEachFault(
            mPlace, kWrites, mWriteWays,
            [&] {
                return Velmora({"index", "-q", "-j1", "--database", database, documents});
            },
            [&] {
                MakeFolder("faults");
                if (!isNew) {
                    fs::copy(before, mPlace, fs::copy_options::recursive);
                }
            },
            [&](int status, const tFault& fault) {
                ExpectToldIfFailed(status, database, fault.error);
                if (++runs % 10 == 0) {
                    EXPECT_EQ(index(database).status, kExitOK);
                    status = kExitOK;
                }
                CIndexDatabase known(database, CIndexDatabase::eAccess::kWrite);
                EXPECT_LE(CIndexSearch(known, "plan").Count({}), 4);
                EXPECT_TRUE(status != kExitOK || CIndexSearch(known, "kept OR b OR c").Count({}) == 3);
                SQLite::Database raw(database, SQLite::OPEN_READWRITE);
                EXPECT_TRUE(Tokenizer::Register(raw.getHandle()));
                EXPECT_EQ(raw.execAndGet("PRAGMA integrity_check").getString(), "ok");
            },
            4);
    }
}

TEST_F(Faults, ADiskThatCannotBeReadIsNoDamageAndAShortReadNothingAtAll)
{
    const std::string layout = Layout(RandomLayout(1, 300, true)).Bytes(); // longer than a stream's buffer
    tLibrary library = {.elements = std::vector<tElement>(200, Article("100"))};
    std::string stock = "<Velmora_Stock>";
    for (int i = 0; i < 1000; ++i) {
        stock += "<StockItem><ProductNr>1</ProductNr><Railset>A</Railset><Count>1</Count></StockItem>\n";
    }
    stock += "</Velmora_Stock>";
    const std::string path = mPlace + "/document.velmora";
    const struct {
        std::vector<std::string> command;
        std::string bytes;
    } operations[] = {
        {{"import"}, layout},
        {{"check"}, layout},
        {{"parts", "--no-stock"}, layout},
        {{"render"}, layout},
        {{"index", "--rebuild", "--database", TestPath("read.db"), "--format", "json"}, layout},
        {{"check"}, Library(library).Bytes()},
        {{"library"}, Library(library).Bytes()},
        {{"check"}, stock},
        {{"stock"}, stock},
        {{"import", "-q", "--files-from"}, std::string(kOval) + "\n" + kOval},
    };
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.command[0] + " " + operation.bytes.substr(0, 4));
        std::vector<std::string> command = operation.command;
        command.insert(command.begin() + 1, "--sandbox=off"); // a confined worker's files are nobody's to look at
        command.push_back(path);
        // The index may find a document short before a worker has it, and prints times; a list is taken as it is.
        const bool isFree = command[0] == "index" || command[2] == "-q";
        std::string good;
        ForEachFault(
            mPlace, kReads, {{kReads, tHow::kOnward, 1, EIO}, {kReads, tHow::kCut, 1, 0}, {kReads, tHow::kShort, 1, 0}},
            [&] { return Velmora(command); }, [&] { WriteFile(path, operation.bytes); },
            [&](int status, const tFault& fault) {
                const std::string said = ReadFile(TestPath("err"));
                const std::string out = ReadFile(TestPath("out"));
                good = fault.how == tHow::kNone ? out : good;
                const auto says = [&](const char* text) { return (out + said).find(text) != std::string::npos; };
                if (fault.how == tHow::kOnward) {
                    EXPECT_TRUE(says("cannot be read") && says(path.c_str()) && !says("damaged")) << out << said;
                    EXPECT_EQ(status, kExitFailed);
                } else if (status != kExitOK) {
                    EXPECT_TRUE(fault.how == tHow::kCut && (isFree || says("was changed while it was read")))
                        << out << said;
                } else {
                    EXPECT_TRUE(isFree || out == good) << out << said;
                }
            },
            3);
    }
}
