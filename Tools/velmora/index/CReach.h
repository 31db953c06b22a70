// Tells documents that are gone from those that are only out of reach.
#pragma once

#include "index/CIndexDatabase.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// How much is believed of what a walk does not find.
enum class eTrust {
    kCareful,  ///< where most of a folder's documents are missing, they are kept
    kAsked,    ///< the user says that what is missing is gone
    kWitnessed ///< the system has told of each removal
};

/// Documents that were not found, and are kept.
struct tKept {
    enum class eWhy {
        kNotThere,  ///< their folder is not, or has another file system without any document
        kEmpty,     ///< their folder holds no document any more
        kElsewhere, ///< their folder is on another file system than before
        kTooMany    ///< more than half of a folder's, and more than kFewMissing
    };
    std::string path; ///< of the folder, or the document that was named
    eWhy why = eWhy::kNotThere;
    int64_t documents = 0;
    int64_t known = 0;  ///< documents of the folder, with these
    bool isNew = false; ///< it was not so at the last run
};

/// Judges the folders of a run when it has walked them. What it keeps is then below CIndexDatabase::KeepBelow.
class CReach {
public:
    /// So many documents may go from a folder, were they all it has.
    static constexpr int64_t kFewMissing = 20;

    /// @param database  open for writing; must outlive this
    explicit CReach(CIndexDatabase& database) : mDatabase(database) {}

    /// To be called for each file of a walk, so that mount points are noticed. @param device  0 is none
    void Note(const std::string& path, uint64_t device)
    {
        if (device != mDevice && device != 0) {
            NoteDevice(path, device);
        }
    }

    /// Decides what becomes of the documents at and below a path that were not seen.
    /// @return whether some of them are to go
    bool Judge(const std::string& path, eTrust trust);

    const std::vector<tKept>& GetKept() const { return mKept; }

private:
    void NoteDevice(const std::string& path, uint64_t device);
    static bool IsGone(const std::string& path, const tPlace& place, eTrust trust);
    void JudgeMountPoints(const std::string& path);
    void Keep(tPlace place, tKept::eWhy why, const tCensus& census, bool remember);
    void Settle(const tPlace& before, const std::string& fileSystem);

    CIndexDatabase& mDatabase;
    uint64_t mDevice = 0; ///< of the last file
    std::set<uint64_t> mDevices;
    std::map<std::string, std::string> mMountPoints; ///< that were met, with the names of their file systems
    std::vector<tKept> mKept;
};
