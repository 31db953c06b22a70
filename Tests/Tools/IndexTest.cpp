// The search index without the host: query language, words, file, and what a run decides.
#include "ProgramRun.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexRun.h"
#include "index/CQuery.h"
#include "index/Tokenizer.h"
#include "support/Random.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <sys/stat.h>

using eAccess = CIndexDatabase::eAccess;

static void Store(CIndexDatabase& index, const std::string& path, const tIndexedTexts& texts)
{
    index.StoreTexts({path, {1, 2, 3}, "hash", "importer"}, texts, 1);
}

/// The paths a query finds, best first, joined by blanks.
static std::string Find(CIndexDatabase& index, const std::string& text)
{
    const CQuery query(text, [&](std::string_view word) { return index.HasWords(word); });
    if (!query.IsGood()) {
        return "wrong: " + query.GetMessage();
    }
    std::string paths;
    index.Search(query.GetExpression(), {}, -1, [&](const tFoundDocument& found) {
        paths += (paths.empty() ? "" : " ") + found.path;
        return true;
    });
    return paths;
}

TEST(Query, FindsWhatPeopleMean)
{
    CIndexDatabase index(MakeFolder("query") + "/index.db", eAccess::kWrite);
    Store(index, "/a/1",
          {"Nebenbahn", "Jürgen Müller", "Straße am Fluß", "1.2", "Gleise, Gebäude", "Halvensen H0", "3601, Q 1120",
           "Überholgleis, Sägewerk"});
    Store(index, "/a/2",
          {"Hafen", "Åse Brøndal", "Gleisdreieck mit Straßenbahn", "2", "Gleise, Wasser", "Quirrin", "Q 1140",
           "Œttinger Kai, Gleis 1"});
    Store(index, "/a/b/3",
          {"Kopfbahnhof", "Mueller, Jurgen", "Gleis im Bau", "3", "Notizen", "Halvensen N", "3602",
           "Bahnsteig A, Bahnsteig B, Straße"});
    Store(index, "/ab/4", {"x\"y", "", "weissagung 12:30 C++", "", "", "", "", "author gleis-anschluss"});
    index.Commit();
    // A query, and what it finds: where several are found, the shorter field and the description weigh more.
    std::istringstream cases(
        R"(uberholgleis = /a/1; SÄGEWERK = /a/1; author:müller = /a/b/3 /a/1; author:mueller = /a/b/3 /a/1;
author:muller = /a/1; Juergen Mueller = /a/1; strasse = /a/1 /a/b/3; straße = /a/1 /a/b/3;
strassenbahn OR fluss = /a/2 /a/1; brondal oettinger = /a/2; gleisdr* = /a/2; ma* bahn* = ;
"bahnsteig b" = /a/b/3; "bahnsteig b" -author:åse = /a/b/3; "b bahnsteig" = ; "gleis i"* = /a/b/3;
layer:(gleise -wasser) = /a/1; library:halvensen article:3602 = /a/b/3; articles:"q 1140" = /a/2;
name:hafen || name:kopfbahnhof = /a/2 /a/b/3; halvensen && NOT (nebenbahn OR wasser) = /a/b/3;
revision:1.2 = /a/1; 12:30 = /ab/4; C++ & author = /ab/4; gleis-anschluss = /ab/4; "author:gleis" = /ab/4;
text:author = /ab/4; description:author =)");
    for (std::string line; std::getline(cases >> std::ws, line, ';');) {
        const size_t equals = line.find(" =");
        EXPECT_EQ(Find(index, line.substr(0, equals)), line.substr(std::min(equals + 3, line.size()))) << line;
    }
    EXPECT_EQ(index.Count("\"gleis\"", {}), 3);
    EXPECT_EQ(index.Count("\"gleis\"", "/a"), 2);
    EXPECT_EQ(index.Count("\"gleis\"", "/a/b"), 1);
    std::string passage;
    index.Search("\"sagewerk\"", {}, 1, [&](const tFoundDocument& found) {
        passage = found.passage;
        return true;
    });
    EXPECT_EQ(passage, std::string("Überholgleis, ") + kMatchBegin + "Sägewerk" + kMatchEnd);
}

TEST(Query, SaysWhereItIsWrong)
{
    const auto hasWords = [](std::string_view text) { return text.find_first_not_of("-&") != std::string_view::npos; };
    const struct {
        const char* query;
        size_t column;
        const char* message;
    } cases[] = {{"", 1, "no word"},
                 {" & -- ", 1, "no word"},
                 {"-gleis", 1, "only exclusions"},
                 {"weiß OR (-a -b)", 9, "only exclusions"},
                 {"ä (ö", 3, "never closed"},
                 {"ä ö)", 4, "never opened"},
                 {"ä \"ö", 3, "no counterpart"},
                 {"a OR", 3, "both sides"},
                 {"OR a", 1, "both sides"},
                 {"a AND AND b", 7, "both sides"},
                 {"a NOT", 3, "nothing to exclude"},
                 {"ß fo:x", 3, "no field"},
                 {"author: x", 1, "without a blank"},
                 {"author:(a text:b)", 11, "within another field"},
                 {"gl*s", 3, "end of a word"}};
    for (const auto& c : cases) {
        const CQuery query(c.query, hasWords);
        EXPECT_EQ(query.GetColumn(), c.column) << c.query;
        EXPECT_NE(query.GetMessage().find(c.message), std::string::npos) << c.query << ": " << query.GetMessage();
    }
}

TEST(Query, IsRefusedOrTakenWhateverItSays)
{
    CIndexDatabase index(MakeFolder("hostile") + "/index.db", eAccess::kWrite);
    const auto hasWords = [&](std::string_view word) { return index.HasWords(word); };
    // Besides these, blanks and a zero byte.
    std::istringstream list(
        "a gleis ß \" \"\" ' ( ) * - ^ : author: { } NEAR( OR || && AND NOT + , \xFF \xC3 ; -- words "
        "rowid 0 \\ /* % text: \xF0\x9F\x9A\x82 \x02 *)");
    std::vector<std::string> pieces = {" ", " ", " ", "\n", std::string(1, '\0')};
    pieces.insert(pieces.end(), std::istream_iterator<std::string>(list), {});
    CRandom random(5);
    int good = 0;
    int bad = 0;
    const auto tryQuery = [&](const std::string& text) {
        const CQuery query(text, hasWords);
        ++(query.IsGood() ? good : bad);
        if (query.IsGood()) {
            EXPECT_NO_THROW(index.Count(query.GetExpression(), {})) << text << " -> " << query.GetExpression();
        } else {
            EXPECT_GE(query.GetColumn(), 1U) << text;
        }
    };
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (size_t n = random() % 12; n > 0; --n) {
            text += pieces[random() % pieces.size()];
        }
        tryQuery(text);
    }
    EXPECT_GT(good, 1000);
    EXPECT_GT(bad, 1000);
    for (const char* piece : {"a ", "a OR ", "(a ", "-", "NOT a ", "a -b ", "author:(a OR (", "\"a b\"* "}) {
        std::string text;
        for (int times = 1; times <= 20000; ++times) {
            text += piece;
            if (times == 15 || times == 150 || times == 2000 || times == 20000) {
                tryQuery(text + "a" + std::string(static_cast<size_t>(times), ')'));
                tryQuery(text + "a");
            }
        }
    }
}

/// The tables of version 1 as they were released.
static const char* const kVersion1 = R"sql(
CREATE TABLE document (id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, size INTEGER NOT NULL,
    modified INTEGER NOT NULL, inode INTEGER NOT NULL, hash BLOB, importer TEXT NOT NULL, indexed INTEGER,
    failure_code TEXT, failure_message TEXT, failure_time INTEGER, name TEXT, author TEXT, description TEXT,
    revision TEXT, layer TEXT, library TEXT, article TEXT, text TEXT);
CREATE VIRTUAL TABLE words USING fts5(name, author, description, revision, layer, library, article, text,
    content = 'document', content_rowid = 'id', prefix = '2 3',
    tokenize = 'velmora unicode61 remove_diacritics 2');
CREATE TRIGGER document_inserted AFTER INSERT ON document BEGIN
    INSERT INTO words (rowid, name, author, description, revision, layer, library, article, text)
    VALUES (new.id, new.name, new.author, new.description, new.revision, new.layer, new.library, new.article, new.text);
END;
CREATE TABLE root (path BLOB PRIMARY KEY) WITHOUT ROWID;
INSERT INTO root VALUES (x'2F61');
INSERT INTO document (path, size, modified, inode, hash, importer, indexed, description, failure_code, failure_message,
    failure_time) VALUES (x'2F612F31', 5, 6, 7, x'00', '1', 8, 'Überholgleis', 'timeout', 'late', 9);
PRAGMA application_id = 1447840088;
PRAGMA user_version = 1;
)sql";

TEST(IndexFile, OfAnOlderVersionIsBroughtToTodays)
{
    for (const eAccess access : {eAccess::kRead, eAccess::kWrite}) {
        const std::string path = MakeFolder("migrated") + "/index.db";
        {
            SQLite::Database old(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
            ASSERT_TRUE(Tokenizer::Register(old.getHandle()));
            old.exec(kVersion1);
        }
        CIndexDatabase index(path, access);
        EXPECT_EQ(index.GetStatus().version, 2);
        EXPECT_EQ(index.GetStatus().failed, 1);
        EXPECT_EQ(index.GetStatus().roots, std::vector<std::string>{"/a"});
        EXPECT_EQ(Find(index, "uberholgl*"), "/a/1");
        index.ForEachFailed([](const tFailedDocument& document) {
            EXPECT_EQ(document.path + document.failure.code, "/a/1timeout");
            EXPECT_TRUE(document.searchable);
            return true;
        });
        SQLite::Database raw(path);
        EXPECT_EQ(raw.execAndGet("SELECT count(*) FROM sqlite_master WHERE name = 'document_failed'").getInt(), 1);
    }
}

TEST(IndexFile, LeavesWhatIsNotItsOwn)
{
    const std::string folder = MakeFolder("foreign");
    const struct {
        const char* statements;
        const char* message;
    } cases[] = {{"CREATE TABLE t (a); INSERT INTO t VALUES (1)", "another program"},
                 {"PRAGMA application_id = 1447840088; PRAGMA user_version = 99; CREATE TABLE t (a)", "newer"},
                 {nullptr, "not a database"}};
    for (const auto& c : cases) {
        const std::string path = folder + "/file.db";
        std::filesystem::remove(path);
        if (c.statements != nullptr) {
            SQLite::Database(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec(c.statements);
        } else {
            WriteFile(path, std::string(5000, 'x'));
        }
        const std::string before = ReadFile(path);
        for (const eAccess access : {eAccess::kRead, eAccess::kWrite}) {
            try {
                const CIndexDatabase index(path, access);
                ADD_FAILURE() << c.message;
            } catch (const CIndexError& error) {
                EXPECT_NE(std::string(error.what()).find(c.message), std::string::npos) << error.what();
            }
        }
        EXPECT_EQ(ReadFile(path), before) << c.message;
    }
    EXPECT_THROW(CIndexDatabase(folder + "/none.db", eAccess::kRead), CIndexMissing);
    EXPECT_FALSE(std::filesystem::exists(folder + "/none.db"));
}

namespace {
/// A file, and runs over it that no worker takes part in.
class CDocument {
public:
    explicit CDocument(const std::string& name) : mPath(MakeFolder(name) + "/a.velmora") {}

    void Write(const std::string& bytes, int64_t modified)
    {
        WriteFile(mPath, bytes);
        const timespec times[2] = {{0, UTIME_OMIT}, {modified, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, mPath.c_str(), times, 0), 0);
    }

    /// @return "settled" by the stamp, "same" by content, or "imported"
    std::string Run(CIndexDatabase& index, CIndexRun::tSettings settings, const tAnswer& answer)
    {
        CIndexRun run(index, std::move(settings));
        struct stat status = {};
        EXPECT_EQ(stat(mPath.c_str(), &status), 0);
        const tFileStatus now = {static_cast<uint64_t>(status.st_size),
                                 status.st_mtim.tv_sec * 1000000000 + status.st_mtim.tv_nsec, status.st_ino, 0};
        const CDescriptor document(open(mPath.c_str(), O_RDONLY | O_CLOEXEC));
        std::string note;
        std::string outcome = "settled";
        if (run.Wants(mPath, now)) {
            outcome = "same";
            if (run.WantsOpen(mPath, now, document.Get(), note)) {
                EXPECT_TRUE(run.Take(mPath, now, note, answer));
                outcome = "imported";
            }
        }
        run.Finish(std::filesystem::path(mPath).parent_path());
        EXPECT_EQ(run.GetSummary().removed, 0);
        return outcome;
    }

private:
    std::string mPath;
};
} // namespace

TEST(IndexRun, ReadsOnlyWhatMayHaveChanged)
{
    tAnswer good;
    good.ok = true;
    good.attributes = {{"kMDItemDescription", false, {"erste Fassung"}}};
    const tAnswer slow = MakeFailure(eFailure::kTimeout, "late");
    const tAnswer unreadable = MakeFailure(eFailure::kPlugIn, "no");
    CDocument document("decisions");
    CIndexDatabase index(MakeFolder("decisions-index") + "/index.db", eAccess::kWrite);
    const int64_t failedNow = 1;
    const struct {
        const char* what;
        std::string bytes;
        int64_t modified; ///< seconds
        CIndexRun::tSettings settings;
        const tAnswer* answer;
        const char* outcome;
        int64_t failed;
    } steps[] = {{"new", "a", 1000, {"1"}, &good, "imported", 0},
                 {"unchanged", "a", 1000, {"1"}, nullptr, "settled", 0},
                 {"touched", "a", 1001, {"1"}, nullptr, "same", 0},
                 {"as before", "a", 1001, {"1"}, nullptr, "settled", 0},
                 {"other content, nothing else", "b", 1001, {"1"}, nullptr, "settled", 0},
                 {"contents compared", "b", 1001, {"1", false, true}, &good, "imported", 0},
                 {"contents compared again", "b", 1001, {"1", false, true}, nullptr, "same", 0},
                 {"another importer", "b", 1001, {"2"}, &slow, "imported", failedNow},
                 {"failed, unchanged", "b", 1001, {"2"}, nullptr, "settled", failedNow},
                 {"failed, touched", "b", 1002, {"2"}, nullptr, "same", failedNow},
                 {"failed, tried again", "b", 1002, {"2", true}, &slow, "imported", failedNow},
                 {"failed, changed", "c", 1003, {"2"}, &unreadable, "imported", failedNow},
                 {"failed for a passing reason", "c", 1003, {"2"}, &slow, "imported", failedNow},
                 {"good again", "b", 1004, {"2"}, &good, "imported", 0}};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        document.Write(step.bytes, step.modified);
        EXPECT_EQ(document.Run(index, step.settings, step.answer != nullptr ? *step.answer : good), step.outcome);
        EXPECT_EQ(index.GetStatus().failed, step.failed);
        EXPECT_NE(Find(index, "fassung"), ""); // the last good state is found all the time
    }
    // Written a moment ago: it could be written once more at the same time.
    document.Write("d", time(nullptr));
    EXPECT_EQ(document.Run(index, {"2"}, good), "imported");
    EXPECT_EQ(document.Run(index, {"2"}, good), "same");
}

TEST(IndexRun, RemovesWhatIsGoneAndKeepsWhatItCouldNotLookAt)
{
    const std::string folder = MakeFolder("unseen");
    const std::string path = MakeFolder("unseen-index") + "/index.db";
    std::filesystem::create_directories(folder + "/closed");
    {
        CIndexDatabase index(path, eAccess::kWrite);
        for (const char* name : {"/closed", "/closed/1", "/closed0", "/close", "/closed/a/2", "/3", "0"}) {
            Store(index, folder + name, {"", "", "gleis", "", "", "", "", ""});
        }
        index.Commit();
    }
    CIndexDatabase index(path, eAccess::kWrite);
    CIndexRun run(index, {"importer"});
    EXPECT_TRUE(run.Take(folder + "/closed", {}, {}, MakeFailure(eFailure::kLoader, "the folder cannot be read")));
    run.Finish(folder);
    EXPECT_EQ(run.GetSummary().removed, 3);
    EXPECT_EQ(index.Count("\"gleis\"", folder + "/closed"), 2);
    EXPECT_EQ(index.Count("\"gleis\"", {}), 4);
    EXPECT_FALSE(run.Take(folder + "0", {}, {}, MakeFailure(eFailure::kLoader, "cannot be opened")));
    EXPECT_EQ(index.Count("\"gleis\"", {}), 3);
}
