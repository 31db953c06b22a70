// Whether libraries know what a stock file names.
#pragma once

#include "commands/Batch.h"
#include "commands/Parts.h"

#include <optional>
#include <string>
#include <vector>

/// Completes the reports about stock files by what the user's track libraries know. Those are read when the first such
/// report comes.
class CArticleCheck {
public:
    /// @param libraries  given on the command line
    CArticleCheck(const tWorkerOptions& options, std::vector<std::string> libraries)
        : mOptions(options), mLibraries(std::move(libraries))
    {}

    /// @param report  of any document; becomes one with further findings where a stock file names articles that their
    ///                library lacks
    CReport Complete(const CReport& report);
    /// What has become of reading the libraries: an eExitCode.
    int GetStatus() const { return mStatus; }

private:
    void ReadLibraries();

    const tWorkerOptions& mOptions; ///< the caller's
    std::vector<std::string> mLibraries;
    std::optional<tArticlesOf> mArticlesOf;
    int mStatus = 0;
};
