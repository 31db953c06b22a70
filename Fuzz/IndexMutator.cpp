// Changes index files page by page, or as somebody with SQLite at hand would.
#include "Properties.h"
#include "index/Tokenizer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <sqlite3.h>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {
/// What somebody with SQLite at hand could do to an index; %lld is a random number.
constexpr const char* kStatements[] = {
    "CREATE TRIGGER more AFTER INSERT ON document BEGIN DELETE FROM root; END",
    "CREATE TRIGGER more AFTER UPDATE ON document BEGIN UPDATE document SET text = text || text; END",
    "CREATE VIEW more AS SELECT * FROM document",
    "CREATE TABLE more (a, b AS (a || a))",
    "CREATE INDEX more ON document (length(text))",
    "DROP TABLE words",
    "DROP INDEX document_failed",
    "DROP TRIGGER document_deleted",
    "UPDATE sqlite_master SET sql = replace(sql, 'unicode61', 'porter') WHERE name = 'words'",
    "UPDATE sqlite_master SET sql = replace(sql, 'BLOB NOT NULL', 'AS (randomblob(9))') WHERE name = 'document'",
    "UPDATE sqlite_master SET rootpage = %lld %% 40 WHERE rowid = 1 + %lld %% 14",
    "UPDATE sqlite_master SET type = 'view' WHERE rowid = 1 + %lld %% 14",
    "UPDATE sqlite_master SET name = 'more' WHERE rowid = 1 + %lld %% 14",
    "DELETE FROM sqlite_master WHERE rowid = 1 + %lld %% 14",
    "UPDATE words_data SET block = randomblob(%lld %% 200) WHERE id %% 3 = 1",
    "UPDATE words_data SET block = zeroblob(%lld %% 20) WHERE id = 10",
    "UPDATE words_data SET block = substr(block, 1, %lld %% 40) || randomblob(2) || substr(block, 40) WHERE id > 10",
    "UPDATE words_data SET id = id + %lld %% 5 WHERE id > 10",
    "DELETE FROM words_data WHERE id = 1",
    "UPDATE words_docsize SET sz = randomblob(%lld %% 12)",
    "UPDATE words_idx SET pgno = %lld %% 100, term = randomblob(2)",
    "INSERT OR REPLACE INTO words_config VALUES ('version', %lld %% 6)",
    "INSERT OR REPLACE INTO words_config VALUES ('rank', 'bm25(' || hex(randomblob(3)) || ')')",
    "INSERT OR REPLACE INTO words_config VALUES ('pgsz', %lld)",
    "INSERT OR REPLACE INTO words_config VALUES ('crisismerge', %lld)",
    "UPDATE document SET size = 'x', inode = 1e300, path = 'text', hash = 5",
    "UPDATE vocabulary SET words = char(10) || hex(randomblob(%lld %% 90)) || substr(words, 3)",
    "UPDATE vocabulary SET words = randomblob(%lld %% 90), id = id * 1000",
    "UPDATE figure SET size = 'x', modified = -%lld, created = 1e300, elements = randomblob(3)",
    "UPDATE gauge SET scale = randomblob(%lld %% 9), width = 'x'",
    "INSERT INTO figure (id, size) VALUES (%lld %% 9, 1)",
    "UPDATE document SET failure_code = randomblob(9), failure_time = %lld, failure_message = 7",
    "UPDATE document SET text = randomblob(%lld %% 3000)",
    "UPDATE document SET id = %lld WHERE id = 1",
    "INSERT INTO root VALUES (randomblob(%lld %% 900))",
    "PRAGMA user_version = %lld",
    "PRAGMA user_version = 1",
    "PRAGMA encoding = 'UTF-16'",
    "VACUUM",
    "DELETE FROM document"};

/// The file after one of the statements, or as it was.
std::string AfterStatement(std::string file, std::minstd_rand& random)
{
    sqlite3* connection = nullptr;
    if (file.size() < 100 || sqlite3_open(":memory:", &connection) != SQLITE_OK) {
        return file;
    }
    file[18] = file[19] = 1; // a log cannot be beside a file in memory
    auto* const bytes = static_cast<unsigned char*>(sqlite3_malloc64(file.size()));
    memcpy(bytes, file.data(), file.size());
    const auto size = static_cast<sqlite3_int64>(file.size());
    sqlite3_deserialize(connection, "main", bytes, size, size,
                        SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE);
    Tokenizer::Register(connection);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_WRITABLE_SCHEMA, 1, nullptr);
    sqlite3_progress_handler(
        connection, 100000, [](void*) { return 1; }, nullptr);
    char statement[400];
    const auto number = static_cast<long long>(random()) << (random() % 33);
    snprintf(statement, sizeof statement, kStatements[random() % std::size(kStatements)], number, number);
    sqlite3_exec(connection, statement, nullptr, nullptr, nullptr);
    sqlite3_int64 length = 0;
    if (unsigned char* const after = sqlite3_serialize(connection, "main", &length, 0); after != nullptr) {
        file.assign(reinterpret_cast<char*>(after), static_cast<size_t>(length));
        sqlite3_free(after);
    }
    sqlite3_close(connection);
    return file;
}

/// The file with another value where a page says how it is laid out, or with one page in place of another.
std::string WithOtherPage(std::string file, std::minstd_rand& random)
{
    constexpr size_t kPage = 512;
    const size_t pages = file.size() / kPage;
    const size_t page = random() % pages * kPage;
    if (random() % 8 == 0) {
        file.replace(page, kPage, file.substr(random() % pages * kPage, kPage));
        return file;
    }
    // Page type, first free block, cells and their places, rightmost child; in the first page behind the file's header.
    const size_t at = page + (page == 0 && random() % 2 == 0 ? 100 : 0) + random() % (random() % 2 == 0 ? 12 : 60);
    constexpr unsigned char kEdges[] = {0, 1, 2, 5, 10, 13, 0x7F, 0x80, 0xFF};
    file[at] = static_cast<char>(random() % 3 == 0 ? random() : kEdges[random() % std::size(kEdges)]);
    return file;
}
} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed)
{
    static const std::string sIndex = Properties::MakeIndex();
    std::minstd_rand random(seed);
    const bool isFile = size >= 2048 && memcmp(data, "SQLite format 3", 16) == 0;
    const unsigned how = static_cast<unsigned>(random() % 8);
    if (isFile && how == 0) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    const std::string before = isFile ? std::string(reinterpret_cast<char*>(data), size) : sIndex;
    std::string after = how < 4 ? AfterStatement(before, random) : WithOtherPage(before, random);
    after.resize(std::min(after.size(), maxSize));
    memcpy(data, after.data(), after.size());
    return after.size();
}
