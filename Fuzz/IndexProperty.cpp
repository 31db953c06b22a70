#include "CScratchFolder.h"
#include "Properties.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexSearch.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sstream>

using eAccess = CIndexDatabase::eAccess;

static const CScratchFolder& Folder()
{
    static const CScratchFolder sFolder;
    return sFolder;
}

static void Write(const std::string& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

static void RemoveIndex(const std::string& path)
{
    for (const char* end : {"", "-wal", "-shm", "-journal"}) {
        unlink((path + end).c_str());
    }
}

/// What goes wrong must be an error of the database, in words.
static void Try(const std::string& path, const std::function<void()>& use)
{
    try {
        use();
    } catch (const CIndexError&) {
    } catch (const SQLite::Exception& error) {
        CIndexDatabase::Explain(path, error);
    }
}

static void Read(const std::string& path)
{
    CIndexDatabase index(path, eAccess::kRead);
    Try(path, [&] { index.GetStatus(); });
    Try(path, [&] { index.ForEachFailed([](const tFailedDocument&) { return true; }); });
    Try(path, [&] { index.Find("/a/1"); });
    Try(path, [&] { index.IsReachable("/a/1"); });
    for (const char* query : {"gleis", "name:ha* OR *ai", "a b", "gauge:H0 elements:>1", "xaf OR created:<2030"}) {
        CIndexSearch search(index, query);
        Try(path, [&] { search.Count("/a"); });
        Try(path, [&] {
            search.Find({{}, eSearchOrder::kRelevance, 0, 5}, [](const tFoundDocument&) { return true; });
        });
        Try(path, [&] { search.Suggest(); });
    }
}

static void Change(const std::string& path)
{
    CIndexDatabase index(path, eAccess::kWrite);
    Try(path, [&] {
        index.StoreTexts({"/a/1", {1, 2, 3}, "hash", "importer"}, {"Hafen", "", "Gleis", "", "", "", "", "Kai"},
                         {1, 2, 3, {{"H0", 1650}}}, 1);
    });
    Try(path, [&] { index.StoreFailure({"/a/2", {1, 2, 3}, {}, "importer"}, {"4", "damaged", 9}); });
    Try(path, [&] { index.AddRoot("/a"); });
    Try(path, [&] { index.RemoveUnseen("/a", {}); });
    Try(path, [&] { index.StoreUnreadable("/a/b", {"1", "no", 9}); });
    Try(path, [&] { index.StorePlace({"/a", "system", true, true, 9}); });
    Try(path, [&] { index.TakeCensus("/a"); });
    Try(path, [&] { index.CountUnseenFailures("/a"); });
    Try(path, [&] { index.RemoveUnreadable("/a", false); });
    Try(path, [&] { index.Forget("/a/1"); });
    Try(path, [&] { index.Commit(); });
    Try(path, [&] { index.Optimize(); });
    Try(path, [&] { index.Commit(); });
}

std::string Properties::Index(std::string_view input)
{
    const std::string path = Folder().PathOf("index.db");
    RemoveIndex(path);
    Write(path, input);
    Try(path, [&] { Read(path); });
    Try(path, [&] { Change(path); });
    Try(path, [&] {
        std::string why;
        RemoveIndex(CIndexDatabase(path, eAccess::kRebuild, {0, true}).GetSetAside(why));
    });
    return {};
}

std::string Properties::MakeIndex()
{
    const std::string path = Folder().PathOf("made.db");
    RemoveIndex(path);
    {
        CIndexDatabase index(path, eAccess::kWrite);
        index.StoreTexts({"/a/1", {1, 2, 3}, "hash", "importer"},
                         {"Nebenbahn", "Müller", "Straße", "1.2", "Gleise", "Halvensen H0", "3601", "Überholgleis"},
                         {1, 2, 3, {{"H0", 1650}}}, 1);
        index.StoreTexts({"/a/b/2", {1, 2, 3}, "hash", "importer"},
                         {"Hafen", "Brøndal", "Gleis im Bau", "2", "Wasser", "Quirrin", "Q 1", std::string(900, 'x')},
                         {}, 1);
        index.StoreFailure({"/a/3", {1, 2, 3}, {}, "importer"}, {"4", "element 3 is damaged", 9});
        index.AddRoot("/a");
        index.Commit();
    }
    {
        SQLite::Database raw(path, SQLite::OPEN_READWRITE);
        raw.exec("PRAGMA journal_mode = DELETE; PRAGMA page_size = 512; VACUUM");
    }
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}
