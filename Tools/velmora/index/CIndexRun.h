// One pass over documents that brings an index up to date.
#pragma once

#include "index/CReach.h"
#include "input/CDocumentSource.h"

#include <chrono>
#include <string>

/// What a pass has done, in documents.
struct tIndexSummary {
    int64_t added = 0;
    int64_t changed = 0;
    int64_t unchanged = 0; ///< of those that can be read
    int64_t removed = 0;
    int64_t failed = 0;      ///< could not be read, now or when they last changed; folders among them
    int64_t knownFailed = 0; ///< of the failed: not tried again, since neither they nor the importer have changed
    int64_t newFailed = 0;   ///< of the failed: could be read at the last run, were not there, or failed otherwise
    int64_t opened = 0;      ///< whose content was looked at
};

/// What has become of a document, to be told as it happens.
struct tIndexChange {
    enum class eKind { kAdded, kChanged, kRemoved, kFailed };
    eKind kind = eKind::kAdded;
    std::string path;
    tIndexFailure failure; ///< for kFailed
    bool isNew = true;     ///< for kFailed: not like this at the last run
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
        eTrust trust = eTrust::kCareful;
    };

    enum class eTaken {
        kTaken,
        kGone,      ///< nothing bears the name any more
        kNoDocument ///< nor could it be one: nothing is kept of it
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
    eTaken Take(const std::string& path, const tFileStatus& status, const std::string& note, const tAnswer& answer);

    /// To be called when everything at and below a path was seen, or is not there: what is missing leaves the index,
    /// unless it is only out of reach. Not yet permanent.
    void Finish(const std::string& path);

    /// @param changed  called for each change
    void SetListener(std::function<void(const tIndexChange&)> changed) { mChanged = std::move(changed); }

    /// What Finish has left in the index though it was missing.
    const std::vector<tKept>& GetKept() const { return mReach.GetKept(); }

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
    void CountFailure(const std::string& path, const tIndexFailure& failure, bool isNew);
    void Tell(const tIndexChange& change) const;

    CIndexDatabase& mDatabase;
    tSettings mSettings;
    CReach mReach;
    std::function<void(const tIndexChange&)> mChanged;
    tIndexSummary mSummary;
    int mUncommitted = 0;
    tClock::time_point mLastCommit;
};
