// An index's file, from its lock to a connection that may be trusted.
#pragma once

#include "index/CIndexDatabase.h"
#include "index/CVocabulary.h"
#include "protocol/CDescriptor.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <optional>
#include <string>
#include <vector>

/// Opens the file of an index as CIndexDatabase promises it, and holds the writer's lock.
class CIndexFile {
public:
    using eAccess = CIndexDatabase::eAccess;

    CIndexFile(const std::string& path, eAccess access, const tIndexOpening& opening);

    SQLite::Database& GetDatabase() { return *mDatabase; }
    /// Has taken the words of what was stored through the connection.
    CVocabulary& GetVocabulary() { return mVocabulary; }

    /// What a broken file was renamed to, and why; empty when it was not.
    const std::string& GetSetAside() const { return mSetAside; }
    const std::string& GetReason() const { return mReason; }

    /// A text of which SQLite's "this is no database" or "this is damaged" are the cause. For files that are not ours
    /// it is a plain CIndexError, without the advice to replace them.
    [[noreturn]] static void ThrowBroken(const std::string& path, const std::string& text);

    /// What to do about a broken file, behind what is wrong.
    static constexpr const char* kRemedy = "; 'velmora index --rebuild [FOLDER]' sets it aside and makes"
                                           " a new one.";

private:
    void TakeLock(const std::string& path, double waitSeconds);
    void OpenChecked(const std::string& path, eAccess access);
    void Open(const std::string& path, int flags);
    int GetVersion(const std::string& path);
    void Migrate(const std::string& path);
    void CountAllAsChanged(const std::string& path);
    std::vector<std::string> ReadRoots(const std::string& path);
    void Replace(const std::string& path, const tIndexOpening& opening);

    CDescriptor mLock;
    CVocabulary mVocabulary; // the connection uses it
    std::optional<SQLite::Database> mDatabase;
    std::string mSetAside;
    std::string mReason;
};
