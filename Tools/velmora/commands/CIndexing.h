// A run of velmora index over documents.
#pragma once

#include "commands/IndexOptions.h"
#include "index/CIndexRun.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

/// Goes once over folders and documents with an index that is open for writing.
class CIndexing {
public:
    using tListener = std::function<void(const tIndexChange&)>;

    /// Both must outlive this.
    CIndexing(CIndexDatabase& index, const tIndexOptions& options);

    /// Each change is told to the listener; failures are then not said, and no summary is printed.
    void SetListener(tListener listener) { mListener = std::move(listener); }

    /// What the options say: the paths, or all that was indexed before. @return an eExitCode
    int Run();

    /// What the system has told of: reads what has changed, and believes what is gone.
    /// @param changed  as the index knows paths; folders are walked
    /// @param gone     sorted: what a folder held goes before the folder, which may turn out to be out of reach
    void Update(const std::vector<std::string>& changed, const std::vector<std::string>& gone);

    /// Whether there are workers, which has been said if not; after Run or Update.
    bool CanServe() const { return mCanServe; }

private:
    bool Prepare(const std::vector<std::string>& paths);
    void RememberRoots(const std::vector<std::string>& roots);
    std::optional<int> Walk(CIndexRun& run, tIndexOptions& options, bool& whole);
    void Take(CIndexRun& run, const tInput& input, const tAnswer& answer);
    void TakeGone(CIndexRun& run, const std::string& path, const std::string& shown);
    void Tell(const tIndexChange& change) const;
    int64_t SayKept(const CIndexRun& run) const;
    void PrintSummary(const CIndexRun& run, bool isSilent) const;

    CIndexDatabase& mIndex;
    const tIndexOptions& mOptions;
    tListener mListener;
    std::vector<tPlace> mPlaces;      ///< when the run began
    std::vector<std::string> mRoots;  ///< to be judged in the end
    std::vector<std::string> mWalked; ///< of these: are there
    std::string mShown;               ///< the input at hand, as the user has named it
    std::chrono::steady_clock::time_point mBegin = std::chrono::steady_clock::now();
    bool mCanServe = true;
    bool mMissing = false; ///< something that was named does not exist
};
