// The search index without the host: query language, words, file, and what a run decides.
#include "ProgramRun.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexRun.h"
#include "index/CIndexSearch.h"
#include "index/Schema.h"
#include "index/Tokenizer.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <algorithm>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

using eAccess = CIndexDatabase::eAccess;

static void Store(CIndexDatabase& index, const std::string& path, const tIndexedTexts& texts,
                  const tFigures& figures = {}, int64_t modified = 0)
{
    index.StoreTexts({path, {1000 * static_cast<int64_t>(path.size()), 2, 3}, "hash", "importer", modified}, texts,
                     figures, 1);
}

/// The paths a query finds, joined by blanks.
static std::string Find(CIndexDatabase& index, const std::string& text, const tSearchWish& wish = {})
{
    CIndexSearch search(index, text);
    if (!search.GetQuery().IsGood()) {
        return "wrong: " + search.GetQuery().GetMessage();
    }
    std::string paths;
    search.Find(wish, [&](const tFoundDocument& found) {
        paths += (paths.empty() ? "" : " ") + found.path;
        return true;
    });
    return paths;
}

static int64_t Count(CIndexDatabase& index, const std::string& text, const std::string& folder = {})
{
    return CIndexSearch(index, text).Count(folder);
}

/// Expects what queries find: "QUERY = PATHS; QUERY = PATHS".
static void ExpectFound(CIndexDatabase& index, const std::string& text, const tSearchWish& wish = {})
{
    std::istringstream cases(text);
    for (std::string line; std::getline(cases >> std::ws, line, ';');) {
        const size_t equals = line.find(" =");
        const std::string query = line.substr(0, equals);
        const std::string expected = line.substr(std::min(equals + 3, line.size()));
        EXPECT_EQ(Find(index, query, wish), expected) << line;
        EXPECT_EQ(Count(index, query, wish.folder),
                  expected.empty() ? 0 : 1 + std::count(expected.begin(), expected.end(), ' '))
            << line;
    }
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
    ExpectFound(index,
                R"(uberholgleis = /a/1; SÄGEWERK = /a/1; author:müller = /a/b/3 /a/1; author:mueller = /a/b/3 /a/1;
author:muller = /a/1; Juergen Mueller = /a/1; strasse = /a/1 /a/b/3 /a/2; straße = /a/1 /a/b/3 /a/2;
strassenbahn OR fluss = /a/2 /a/1; brondal oettinger = /a/2; gleisdr* = /a/2; ma* bahn* = ; bröndal = /a/2; BROENDAL = /a/2; aase = /a/2;
bahn = /a/b/3 /a/1 /a/2; *bahn = /a/1 /a/2; *hnho* = /a/b/3; bahn* = /a/b/3; fen = /a/2; weg = ; -*bahn* gleis = /ab/4;
author:üll = /a/1 /a/b/3; gleis wasser = /a/2; *ße = /a/1 /a/b/3; gl = /a/2 /a/b/3 /a/1 /ab/4; g = ;
"bahnsteig b" = /a/b/3; "bahnsteig b" -author:åse = /a/b/3; "b bahnsteig" = ; "gleis i"* = /a/b/3;
layer:(gleise -wasser) = /a/1; library:halvensen article:3602 = /a/b/3; articles:"q 1140" = /a/2;
name:hafen || name:kopfbahnhof = /a/2 /a/b/3; halvensen && NOT (nebenbahn OR wasser) = /a/b/3;
revision:1.2 = /a/1; 12:30 = /ab/4; C++ & author = /ab/4; gleis-anschluss = /ab/4; "author:gleis" = /ab/4;
text:author = /ab/4; description:author =)");
    ExpectFound(index, "gleis = /a/b/3 /a/2 /a/1; size:>1 = /a/2 /a/b/3 /a/1", {"/a", eSearchOrder::kRelevance});
    ExpectFound(index, "gleis = /a/b/3", {"/a/b", eSearchOrder::kRelevance});
    tPassage passage;
    CIndexSearch(index, "gewe").Find({}, [&](const tFoundDocument& found) {
        passage = found.passage;
        EXPECT_EQ(found.match, eWordMatch::kPart);
        return true;
    });
    ASSERT_EQ(passage.matches.size(), 1U);
    EXPECT_EQ(passage.text, "Überholgleis, Sägewerk");
    EXPECT_EQ(passage.text.substr(passage.matches[0].start, passage.matches[0].end), "Sägewerk");
    CIndexSearch mistyped(index, "author:müler Nebnebahn");
    EXPECT_EQ(mistyped.Count({}), 0);
    EXPECT_EQ(mistyped.Suggest(), "author:muller nebenbahn");
}

TEST(Query, FindsByFigureAndSorts)
{
    CIndexDatabase index(MakeFolder("figures") + "/index.db", eAccess::kWrite);
    constexpr int64_t kMarch = 1742000000; // 15 March 2025
    constexpr uint32_t kLate2019 = 1577836799;
    Store(index, "/1", {"Zoo", "Ärmel", "gleis", "", "", "", "", "", "Keller, Süd"},
          {kLate2019, 100, 12500, {{"H0", 1650}, {"N", 900}}}, kMarch);
    Store(index, "/22", {"ähre", "Zander", "gleis", "", "", "", "", "", "keller"}, {0, 500, 4000, {{"H0e", 900}}},
          kMarch + 40 * 86400);
    Store(index, "/333", {"Bahn", "", "", "", "", "", "", "", ""}, {kLate2019 + 1, 501, 99, {}}, 0);
    index.Commit();
    ExpectFound(index, R"(elements:100..500 = /22 /1; elements:>100 = /22 /333; elements:>=501 = /333; elements:..99 = ;
tracks:12.5 = /1; tracks:13 = /1; tracks:>4 = /1; tracks:<=4 = /22 /333; size:2kB = /1; size:>2.5k = /22 /333; size:<1KiB = ;
gauge:h0 = /1; gauge:HO = /1; gauge:9 = /22 /1; gauge:>9 = /1; gauge:H = ; gauge:"H0" -gauge:N = ; created:2019 = /1;
created:<2020 = /1; created:2019-12-31..2020-01 = /333 /1; -created:>2019 = /22 /1; modified:2025 = /22 /1;
modified:2025-03 = /1; modified:>2025-03-31 = /22; gleis elements:>100 = /22; gleis -elements:>100 = /1;
elements:>100 -gleis = /333; gleis OR elements:501 = /22 /333 /1; (leis tracks:<5) OR (bah -size:<1) = /22 /333;
folder:keller = /22 /1; süd = /1; folder:ell = /22 /1; NOT (gauge:9 OR size:<1) = /333)");
    ExpectFound(index, "size:>0 = /22 /333 /1", {{}, eSearchOrder::kName});
    ExpectFound(index, "size:>0 = /1 /22 /333", {{}, eSearchOrder::kAuthor});
    ExpectFound(index, "gleis OR bahn = /22 /1 /333", {{}, eSearchOrder::kModified});
    EXPECT_EQ(Find(index, "size:>0", {{}, eSearchOrder::kName, 1, 1}), "/333");
    EXPECT_EQ(Find(index, "gleis", {{}, eSearchOrder::kRelevance, 1, 5}), "/1");
}

TEST(Query, RanksTheSameHoweverManyAreWanted)
{
    CIndexDatabase index(MakeFolder("common") + "/index.db", eAccess::kWrite);
    for (int i = 0; i < 3000; ++i) { // every document has both words, a few in a prominent place
        const bool isProminent = i % 100 == 7;
        Store(index, "/" + std::to_string(i),
              {"", "", isProminent ? "kurve gleis" : "", "", "", "", "", "gleis kurve"});
    }
    Store(index, "/part", {"", "", "", "", "", "", "", "gleisbett kurven"});
    index.Commit();
    CIndexSearch search(index, "gleis kurve");
    std::vector<std::string> all;
    std::vector<std::string> some;
    search.Find({}, [&](const tFoundDocument& found) {
        all.push_back(found.path);
        return true;
    });
    CIndexSearch limited(index, "gleis kurve");
    EXPECT_TRUE(limited.Find({{}, eSearchOrder::kRelevance, 0, 40}, [&](const tFoundDocument& found) {
        some.push_back(found.path);
        return true;
    }));
    ASSERT_EQ(all.size(), 3001U);
    EXPECT_EQ(all.back(), "/part");
    ASSERT_EQ(some.size(), 40U);
    EXPECT_TRUE(std::equal(some.begin(), some.end(), all.begin()));
}

TEST(Query, SaysWhereItIsWrong)
{
    const auto countWords = [](std::string_view text) {
        const size_t signs = static_cast<size_t>(std::count(text.begin(), text.end(), '-'));
        return text.find_first_not_of("-&") != std::string_view::npos ? 1 + signs : 0;
    };
    // A query, the character where it is wrong, and part of what is said of it.
    std::istringstream cases(R"(= 1 no word; & -- = 1 no word; -gleis = 1 only exclusions;
weiß OR (-a -b) = 9 only exclusions; ä (ö = 3 never closed; ä ö) = 4 never opened; ä "ö = 3 no counterpart;
a OR = 3 both sides; OR a = 1 both sides; a AND AND b = 7 both sides; a NOT = 3 nothing to exclude; ß fo:x = 3 no field;
author: x = 1 without a blank; author:(a text:b) = 11 within another field; gl*s = 3 end of a word;
*a*b* = 3 beginning; ä *a-b = 3 single word; size:x = 6 a size is like; elements:9..1 = 10 must not be less; tracks:>.. = 8 like 100;
modified:2025-13 = 10 a date is; created:2023-02-29 = 9 a date is; size:99999999999 = 6 a size; author:(size:>1) = 9 within another field)");
    for (std::string line; std::getline(cases >> std::ws, line, ';');) {
        const size_t equals = line.find("= ");
        const CQuery query(line.substr(0, equals), countWords);
        const std::string said = std::to_string(query.GetColumn()) + " " + query.GetMessage();
        const std::string expected = line.substr(equals + 2);
        EXPECT_EQ(said.find(expected.substr(0, expected.find(' ') + 1)), 0U) << line << ": " << said;
        EXPECT_NE(said.find(expected.substr(expected.find(' ') + 1)), std::string::npos) << line << ": " << said;
    }
}

TEST(IndexFile, OfAnOlderVersionIsBroughtToTodays)
{
    for (int version = 1; version < static_cast<int>(Schema::GetSteps().size()); ++version) {
        for (const eAccess access : {eAccess::kRead, eAccess::kWrite}) {
            const std::string path = MakeFolder("migrated") + "/index.db";
            {
                SQLite::Database raw(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
                ASSERT_TRUE(Tokenizer::Register(raw.getHandle()));
                for (int step = 0; step < version; ++step) {
                    raw.exec(Schema::GetSteps()[static_cast<size_t>(step)]);
                }
                raw.exec("INSERT INTO document (path, size, modified, inode, importer, indexed, description) VALUES"
                         " (x'2F61', 5, 1742000000000000000, 1, '1', 2, 'Überholgleis');"
                         "INSERT INTO document (path, size, modified, inode, importer, failure_code, failure_message,"
                         " failure_time) VALUES (x'2F62', 5, 0, 1, '1', 'timeout', 'late', 9);"
                         "PRAGMA application_id = " +
                         std::to_string(Schema::kApplicationID) + "; PRAGMA user_version = " + std::to_string(version));
            }
            CIndexDatabase index(path, access);
            EXPECT_EQ(index.GetStatus().version, static_cast<int>(Schema::GetSteps().size()));
            EXPECT_EQ(index.GetStatus().failed, 1);
            ExpectFound(index, "uberholgl* = /a; holgl = /a; size:5 = /a; modified:2025-03 = /a; elements:>=0 = ");
            EXPECT_EQ(index.Find("/a")->importer, ""); // what is not known yet comes with the next run
        }
    }
}

TEST(IndexFile, LeavesWhatIsNotItsOwn)
{
    const std::string folder = MakeFolder("foreign");
    const std::string path = folder + "/file.db";
    const std::pair<const char*, const char*> cases[] = {
        {"CREATE TABLE t (a); INSERT INTO t VALUES (1)", "another program"},
        {"PRAGMA application_id = 1447840088; PRAGMA user_version = 99; CREATE TABLE t (a)", "newer"},
        {nullptr, "not a database"}};
    for (const auto& [statements, message] : cases) {
        WriteFile(path, std::string(statements != nullptr ? 0 : 5000, 'x'));
        if (statements != nullptr) {
            SQLite::Database(path, SQLite::OPEN_READWRITE).exec(statements);
        }
        const std::string before = ReadFile(path);
        for (const eAccess access : {eAccess::kRead, eAccess::kWrite}) {
            try {
                const CIndexDatabase index(path, access);
                ADD_FAILURE() << message;
            } catch (const CIndexError& error) {
                EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
            }
        }
        EXPECT_EQ(ReadFile(path), before) << message;
    }
    EXPECT_THROW(CIndexDatabase(folder + "/none.db", eAccess::kRead), CIndexMissing);
    EXPECT_FALSE(std::filesystem::exists(folder + "/none.db"));
}

TEST(IndexFile, DoesNothingForWhoeverMadeIt)
{
    const std::string folder = MakeFolder("smuggled");
    const std::string path = folder + "/index.db";
    const std::string victim = folder + "/victim";
    const auto isRefused = [&](const char* why) {
        for (const eAccess access : {eAccess::kRead, eAccess::kWrite}) {
            try {
                const CIndexDatabase index(path, access);
                ADD_FAILURE() << why << ": taken";
            } catch (const CIndexError& error) {
                EXPECT_NE(std::string(error.what()).find(why), std::string::npos) << error.what();
            }
        }
    };
    for (const std::string statement :
         {"CREATE TRIGGER t AFTER INSERT ON document BEGIN DELETE FROM root; END", "CREATE VIEW v AS SELECT 1",
          "ALTER TABLE document ADD COLUMN c AS (length(text))", "CREATE INDEX i ON document (upper(name))",
          "DROP TRIGGER document_deleted", "DROP INDEX document_failed", "PRAGMA user_version = 1"}) {
        std::filesystem::remove(path);
        CIndexDatabase(path, eAccess::kWrite).Commit();
        SQLite::Database raw(path, SQLite::OPEN_READWRITE);
        ASSERT_TRUE(Tokenizer::Register(raw.getHandle()));
        raw.exec(statement);
        isRefused("not those that velmora makes");
    }
    // A structure of the full-text index that claims 100 million segments.
    std::filesystem::remove(path);
    CIndexDatabase(path, eAccess::kWrite).Commit();
    SQLite::Database(path, SQLite::OPEN_READWRITE)
        .exec("UPDATE words_data SET block = x'00000001010100' || x'00B0808000' WHERE id = 10");
    sqlite3_memory_highwater(1);
    CIndexDatabase damaged(path, eAccess::kRead);
    EXPECT_ANY_THROW(Count(damaged, "gleis"));
    EXPECT_LE(sqlite3_memory_highwater(0), 1 << 30);
    // SQLite would take a change back that another program did not finish, and remove the file that the journal names.
    std::filesystem::remove(path);
    CIndexDatabase(path, eAccess::kWrite).Commit();
    WriteFile(victim, "precious");
    std::string journal(12 + victim.size(), '\0');
    journal.replace(0, 4, "VLIX")
        .replace(4, victim.size(), victim)
        .replace(journal.size() - 5, 1, 1, static_cast<char>(victim.size()));
    uint32_t sum = 0;
    for (const char character : victim) {
        sum += static_cast<unsigned char>(character);
    }
    for (const uint32_t part : {sum >> 24, sum >> 16, sum >> 8, sum}) {
        journal += static_cast<char>(part);
    }
    WriteFile(path + "-journal", journal + "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7");
    isRefused("a journal that is not its own");
    EXPECT_TRUE(std::filesystem::exists(victim));
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    isRefused("is no file");
}

/// What a run over the only document of a folder does that no worker takes part in.
/// @return "settled" by the stamp, "same" by content, or "imported"
static std::string RunOver(CIndexDatabase& index, CIndexRun::tSettings settings, const std::string& path,
                           const tAnswer& answer)
{
    CIndexRun run(index, std::move(settings));
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    const tFileStatus now = {static_cast<uint64_t>(status.st_size),
                             status.st_mtim.tv_sec * 1000000000 + status.st_mtim.tv_nsec, status.st_ino, 0};
    const CDescriptor document(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string note;
    std::string outcome = "settled";
    if (run.Wants(path, now)) {
        outcome = run.WantsOpen(path, now, document.Get(), note) ? "imported" : "same";
        EXPECT_TRUE(outcome == "same" || run.Take(path, now, note, answer) == CIndexRun::eTaken::kTaken);
    }
    run.Finish(std::filesystem::path(path).parent_path());
    EXPECT_EQ(run.GetSummary().removed, 0);
    return outcome;
}

TEST(IndexRun, ReadsOnlyWhatMayHaveChanged)
{
    tAnswer good;
    good.ok = true;
    good.attributes = {{"kMDItemDescription", false, {"erste Fassung"}}};
    const tAnswer slow = MakeFailure(eFailure::kTimeout, "late");
    const tAnswer unreadable = MakeFailure(eFailure::kPlugIn, "no");
    const std::string document = MakeFolder("decisions") + "/a.velmora";
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
                 {"other content, nothing else", "b", 1001, {"1"}, nullptr, "settled", 0},
                 {"contents compared", "b", 1001, {"1", false, true}, &good, "imported", 0},
                 {"another importer", "b", 1001, {"2"}, &slow, "imported", failedNow},
                 {"failed, unchanged", "b", 1001, {"2"}, nullptr, "settled", failedNow},
                 {"failed, touched", "b", 1002, {"2"}, nullptr, "same", failedNow},
                 {"failed, tried again", "b", 1002, {"2", true}, &slow, "imported", failedNow},
                 {"failed, changed", "c", 1003, {"2"}, &unreadable, "imported", failedNow},
                 {"failed for a passing reason", "c", 1003, {"2"}, &slow, "imported", failedNow},
                 {"good again", "b", 1004, {"2"}, &good, "imported", 0}};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        std::ofstream(document) << step.bytes; // into the same file
        const timespec times[2] = {{0, UTIME_OMIT}, {step.modified, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, document.c_str(), times, 0), 0);
        EXPECT_EQ(RunOver(index, step.settings, document, step.answer != nullptr ? *step.answer : good), step.outcome);
        EXPECT_EQ(index.GetStatus().failed, step.failed);
        EXPECT_NE(Find(index, "fassung"), ""); // the last good state is found all the time
    }
    // Written a moment ago: it could be written once more at the same time. A busy machine may miss the moment.
    std::string again;
    for (int attempt = 0; attempt < 10 && again != "same"; ++attempt) {
        std::ofstream(document) << "attempt " << attempt;
        const timespec times[2] = {{0, UTIME_OMIT}, {time(nullptr), 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, document.c_str(), times, 0), 0);
        EXPECT_EQ(RunOver(index, {"2"}, document, good), "imported");
        again = RunOver(index, {"2"}, document, good);
    }
    EXPECT_EQ(again, "same");
}

TEST(IndexRun, RemovesWhatIsGoneAndKeepsWhatItCouldNotLookAt)
{
    const std::string folder = MakeFolder("unseen");
    const std::string path = MakeFolder("unseen-index") + "/index.db";
    std::filesystem::create_directories(folder + "/closed");
    for (const char* name : {"/closed", "/closed/1", "/closed0", "/close", "/closed/a/2", "/3", "0"}) {
        CIndexDatabase index(path, eAccess::kWrite);
        Store(index, folder + name, {"", "", "gleis", "", "", "", "", ""});
        index.Commit();
    }
    std::optional<CIndexDatabase> index(std::in_place, path, eAccess::kWrite);
    index->StoreFailure({folder + "/closed/failed", {}, {}, ""}, {"4", "damaged", 1});
    index->Commit();
    for (const int64_t failures : {3, 1}) { // the second time all can be looked at, and what is there is new
        index.emplace(path, eAccess::kWrite);
        CIndexRun run(*index, {"importer"});
        if (failures == 3) {
            run.Take(folder + "/closed", {}, {}, MakeFailure(eFailure::kLoader, "the folder cannot be read"));
        }
        run.Take(folder + "/new", {}, "nn", MakeFailure(eFailure::kLoader, "damaged"));
        run.Finish(folder);
        run.Commit();
        EXPECT_EQ(run.GetSummary().removed, failures == 3 ? 3 : 4);
        EXPECT_EQ(Count(*index, "gleis", folder + "/closed"), failures == 3 ? 2 : 0);
        int64_t listed = 0;
        index->ForEachFailed([&](const tFailedDocument&) { return ++listed > 0; });
        EXPECT_EQ(run.GetSummary().failed, failures);
        EXPECT_EQ(run.GetSummary().newFailed, failures == 3 ? 2 : 0);
        EXPECT_EQ(index->GetStatus().failed, failures);
        EXPECT_EQ(listed, failures);
        EXPECT_EQ(index->GetStatus().documents, failures == 3 ? 4 : 1);
    }
    CIndexRun run(*index, {"importer"});
    run.Finish(folder + "0");
    EXPECT_EQ(Count(*index, "gleis"), 0);
}
