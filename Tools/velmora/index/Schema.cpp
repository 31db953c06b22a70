#include "index/Schema.h"

/// Paths are bytes, therefore BLOB; times of files in nanoseconds, others in seconds since 1970. `words` holds no texts
/// of its own: it is an index over the columns of the same names, which the triggers keep in step.
static constexpr const char* kVersion1 = R"sql(
CREATE TABLE document (
    id INTEGER PRIMARY KEY,
    path BLOB NOT NULL UNIQUE,
    size INTEGER NOT NULL,
    modified INTEGER NOT NULL,
    inode INTEGER NOT NULL,
    hash BLOB,
    importer TEXT NOT NULL,
    indexed INTEGER,
    failure_code TEXT,
    failure_message TEXT,
    failure_time INTEGER,
    name TEXT,
    author TEXT,
    description TEXT,
    revision TEXT,
    layer TEXT,
    library TEXT,
    article TEXT,
    text TEXT
);
CREATE VIRTUAL TABLE words USING fts5(
    name, author, description, revision, layer, library, article, text,
    content = 'document', content_rowid = 'id', prefix = '2 3',
    tokenize = 'velmora unicode61 remove_diacritics 2'
);
INSERT INTO words (words, rank) VALUES ('automerge', 8);
CREATE TRIGGER document_inserted AFTER INSERT ON document BEGIN
    INSERT INTO words (rowid, name, author, description, revision, layer, library, article, text)
    VALUES (new.id, new.name, new.author, new.description, new.revision, new.layer, new.library, new.article, new.text);
END;
CREATE TRIGGER document_deleted AFTER DELETE ON document BEGIN
    INSERT INTO words (words, rowid, name, author, description, revision, layer, library, article, text)
    VALUES ('delete', old.id, old.name, old.author, old.description, old.revision, old.layer, old.library, old.article,
            old.text);
END;
CREATE TRIGGER document_changed
AFTER UPDATE OF name, author, description, revision, layer, library, article, text ON document BEGIN
    INSERT INTO words (words, rowid, name, author, description, revision, layer, library, article, text)
    VALUES ('delete', old.id, old.name, old.author, old.description, old.revision, old.layer, old.library, old.article,
            old.text);
    INSERT INTO words (rowid, name, author, description, revision, layer, library, article, text)
    VALUES (new.id, new.name, new.author, new.description, new.revision, new.layer, new.library, new.article, new.text);
END;
CREATE TABLE root (
    path BLOB PRIMARY KEY
) WITHOUT ROWID;
)sql";

/// The failed documents are few and asked for after every run.
static constexpr const char* kVersion2 = R"sql(
CREATE INDEX document_failed ON document (path) WHERE failure_code IS NOT NULL;
)sql";

/// Where documents may be out of reach for a while: roots, and mount points below them. And the folders that could not
/// be read, which are no documents.
static constexpr const char* kVersion3 = R"sql(
CREATE TABLE place (
    path BLOB PRIMARY KEY,
    file_system TEXT NOT NULL,
    absent INTEGER NOT NULL,
    held INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE unreadable (
    path BLOB PRIMARY KEY,
    failure_code TEXT NOT NULL,
    failure_message TEXT NOT NULL,
    failure_time INTEGER NOT NULL
) WITHOUT ROWID;
)sql";

/// Names of folders are words, too. Figures stand apart from the texts, behind which they would lie on other pages; a
/// document that was never read has none. Those that are not known yet come when the documents are read again.
static constexpr const char* kVersion4 = R"sql(
ALTER TABLE document ADD COLUMN folder TEXT;
DROP TRIGGER document_inserted;
DROP TRIGGER document_deleted;
DROP TRIGGER document_changed;
DROP TABLE words;
CREATE VIRTUAL TABLE words USING fts5(
    name, author, description, revision, layer, library, article, text, folder,
    content = 'document', content_rowid = 'id', prefix = '2 3',
    tokenize = 'velmora unicode61 remove_diacritics 2'
);
INSERT INTO words (words, rank) VALUES ('automerge', 8);
INSERT INTO words (words) VALUES ('rebuild');
CREATE TABLE figure (
    id INTEGER PRIMARY KEY,
    size INTEGER NOT NULL,
    modified INTEGER,
    created INTEGER,
    elements INTEGER,
    tracks INTEGER
);
CREATE TABLE gauge (
    id INTEGER NOT NULL,
    scale TEXT NOT NULL,
    width INTEGER NOT NULL,
    PRIMARY KEY (id, scale)
) WITHOUT ROWID;
CREATE TABLE vocabulary (
    id INTEGER PRIMARY KEY,
    words TEXT NOT NULL
);
INSERT INTO figure (id, size, modified)
SELECT id, size, nullif(modified / 1000000000, 0) FROM document WHERE indexed IS NOT NULL;
UPDATE document SET importer = '';
CREATE TRIGGER document_inserted AFTER INSERT ON document BEGIN
    INSERT INTO words (rowid, name, author, description, revision, layer, library, article, text, folder)
    VALUES (new.id, new.name, new.author, new.description, new.revision, new.layer, new.library, new.article, new.text,
            new.folder);
END;
CREATE TRIGGER document_deleted AFTER DELETE ON document BEGIN
    INSERT INTO words (words, rowid, name, author, description, revision, layer, library, article, text, folder)
    VALUES ('delete', old.id, old.name, old.author, old.description, old.revision, old.layer, old.library, old.article,
            old.text, old.folder);
    DELETE FROM figure WHERE id = old.id;
    DELETE FROM gauge WHERE id = old.id;
END;
CREATE TRIGGER document_changed
AFTER UPDATE OF name, author, description, revision, layer, library, article, text, folder ON document BEGIN
    INSERT INTO words (words, rowid, name, author, description, revision, layer, library, article, text, folder)
    VALUES ('delete', old.id, old.name, old.author, old.description, old.revision, old.layer, old.library, old.article,
            old.text, old.folder);
    INSERT INTO words (rowid, name, author, description, revision, layer, library, article, text, folder)
    VALUES (new.id, new.name, new.author, new.description, new.revision, new.layer, new.library, new.article, new.text,
            new.folder);
END;
)sql";

std::span<const char* const> Schema::GetSteps()
{
    static constexpr const char* kSteps[] = {kVersion1, kVersion2, kVersion3, kVersion4};
    return kSteps;
}
