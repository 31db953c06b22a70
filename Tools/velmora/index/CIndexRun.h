// One pass over documents that brings an index up to date.
#pragma once

#include "index/CIndexDatabase.h"
#include "input/CDocumentSource.h"

#include <chrono>
#include <string>

/// What a pass has done, in documents.
struct tIndexSummary {
    int64_t added = 0;
    int64_t changed = 0;
    int64_t unchanged = 0; ///< of those that can be read
    int64_t removed = 0;
    int64_t failed = 0;      ///< could not be read, now or when they last changed
    int64_t knownFailed = 0; ///< of the failed: not tried again, since neither they nor the importer have changed
    int64_t opened = 0;      ///< whose content was looked at
};

/// Decides for each document whether it must be read, and stores what the importer answered. What is done is committed
/// every thousand documents or every second: a pass that is killed has lost the last of these portions, and the next
/// pass makes up for it.
class CIndexRun {
public:
    struct tSettings {
        std::string importer;     ///< which importer this is; documents that another one has read are read again
        bool retryFailed = false; ///< also documents that failed and have not changed
        bool verify = false;      ///< trust contents only, no times and sizes
    };

    /// @param database  open for writing; must outlive this
    CIndexRun(CIndexDatabase& database, tSettings settings);

    /// Whether a document must be opened. @param path  absolute
    bool Wants(const std::string& path, const tFileStatus& status);

    /// Whether an open document must be imported: its content is not that of before.
    /// @param document  not owned
    /// @param note      set to what Take needs to know
    bool WantsOpen(const std::string& path, const tFileStatus& status, int document, std::string& note);

    /// Takes the answer for a document, or the failure of something that could not be opened.
    /// @param note  from WantsOpen; empty if that was not asked
    /// @return false when nothing bears the name any more: what was known of it has been removed
    bool Take(const std::string& path, const tFileStatus& status, const std::string& note, const tAnswer& answer);

    /// To be called when everything at and below a root was seen: the others have been removed.
    void Finish(const std::string& root);

    /// Makes what was done so far permanent.
    void Commit();
    /// The same, if it is time for it.
    void CommitIfDue();

    const tIndexSummary& GetSummary() const { return mSummary; }

private:
    using tClock = std::chrono::steady_clock;

    bool IsSettled(const tKnownDocument& known) const;
    void CountAsBefore(const tKnownDocument& known);
    void CountOne();

    CIndexDatabase& mDatabase;
    tSettings mSettings;
    tIndexSummary mSummary;
    int mUncommitted = 0;
    tClock::time_point mLastCommit;
};
