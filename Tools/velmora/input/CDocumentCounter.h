// How many documents a walk will find, counted ahead of it.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// Counts in a thread of its own, by names alone: documents that only their first bytes tell are not among them, so the
/// number is for people.
class CDocumentCounter {
public:
    CDocumentCounter(std::vector<std::string> paths, std::vector<std::string> excludes);
    ~CDocumentCounter();
    CDocumentCounter(const CDocumentCounter&) = delete;
    CDocumentCounter& operator=(const CDocumentCounter&) = delete;

    /// The number, once it is known.
    std::optional<uint64_t> GetTotal() const;

private:
    void Count(const std::vector<std::string>& paths);
    void CountFolder(int parent, const char* name, const std::string& path);

    std::vector<std::string> mExcludes;
    uint64_t mCount = 0;
    std::atomic<bool> mStop = false;
    std::atomic<bool> mDone = false;
    std::thread mThread; ///< last: it uses all the others
};
