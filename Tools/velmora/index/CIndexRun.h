// One pass over documents that brings an index up to date.
#pragma once

#include "index/CIndexDatabase.h"
#include "protocol/Messages.h"

#include <chrono>
#include <string>
#include <unordered_map>

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

    /// Whether a document must be imported. Looks at the file's content only where its stamp does not suffice.
    /// @param path  absolute
    bool Wants(const std::string& path, tFileStamp stamp);

    /// Takes the answer for a document that was wanted, or the failure of something that is no document.
    /// @return false when the path does not exist any more: nothing was stored
    bool Take(const std::string& path, const tAnswer& answer);

    /// To be called when everything at and below a root was seen: the others have been removed.
    void Finish(const std::string& root);

    /// Makes what was done so far permanent.
    void Commit();

    const tIndexSummary& GetSummary() const { return mSummary; }

private:
    using tClock = std::chrono::steady_clock;

    struct tPending {
        tFileStamp stamp;
        std::string hash;
        bool isKnown = false;
    };

    bool IsSettled(const tKnownDocument& known) const;
    void CountAsBefore(const tKnownDocument& known);
    void CommitPortion();

    CIndexDatabase& mDatabase;
    tSettings mSettings;
    tIndexSummary mSummary;
    std::unordered_map<std::string, tPending> mPending; ///< wanted, not yet answered
    int mUncommitted = 0;
    tClock::time_point mLastCommit;
};
