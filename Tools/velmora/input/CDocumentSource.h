// The documents a command line names, one after the other.
#pragma once

#include "input/CLineReader.h"
#include "protocol/CDescriptor.h"
#include "protocol/Messages.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// What tells that a file has not changed.
struct tFileStatus {
    uint64_t size = 0;    ///< bytes
    int64_t modified = 0; ///< nanoseconds since 1970; 0 for a time that cannot be
    uint64_t inode = 0;
    uint64_t device = 0;
};

/// One input: a document, or why there is none. Each becomes one record.
struct tInput {
    std::string path;     ///< as given, or the given folder's path and the names below it; any bytes
    tFileStatus status;   ///< by its name when it was found; once opened, of the file that was opened
    CDescriptor document; ///< a regular file; not open before Open, and when failure is set
    std::optional<tFailure> failure;
    size_t ownPart = 0; ///< where in the path the name of a named file begins, or what lies below a named folder
    std::string note;   ///< for whoever handles the input, empty at first
};

/// Walks operands and lists lazily: what it keeps in memory is the names of the folders it is in.
///
/// A file named on the command line or in a list is always taken. A folder named on the command line is walked in the
/// order of its names' bytes; links to folders are not followed below it, and those entries are taken whose name ends
/// in ".velmora" (in either case) or whose first bytes are a layout's. "-" on the command line is standard input.
class CDocumentSource {
public:
    enum class eResult {
        kFound,
        kNotYet, ///< the list has no further path at the moment: wait until GetDescriptor() can be read
        kEnd     ///< there is none left, or the user has interrupted
    };
    /// Whether a file is wanted, asked before anything has opened it. `input` has its path and status. A file that is
    /// wanted may still turn out to be no document.
    using tFilter = std::function<bool(const tInput& input)>;

    /// @param paths          operands, first to be walked
    /// @param list           further paths, read after the operands; may be closed
    /// @param listSeparator  what ends a path in the list: a line break, perhaps with a carriage return before it, or
    /// zero
    CDocumentSource(std::vector<std::string> paths, CDescriptor list = CDescriptor(), char listSeparator = '\n');
    ~CDocumentSource();

    /// Opens a list of paths. @param name  a file, or "-" for standard input
    /// @return closed, with errno set, when it cannot be read
    static CDescriptor OpenList(const std::string& name);

    /// Files that the filter does not want are passed over. Standard input is always wanted.
    void SetFilter(tFilter filter) { mFilter = std::move(filter); }

    /// Passes over what a walk finds, files and folders, where a pattern of the shell matches the name, or the whole
    /// path if the pattern holds a slash.
    void SetExcludes(std::vector<std::string> patterns) { mExcludes = std::move(patterns); }

    /// Goes on to the next input without waiting. The document is not open yet.
    eResult Find(tInput& input);

    /// Opens the document found last, or sets its failure.
    void Open(tInput& input);

    /// Finds and opens the next input, waiting for it.
    /// @return false when there is none left, or the user has interrupted
    bool Next(tInput& input);

    /// Whether a walk would take a file.
    static bool IsDocument(const std::string& path);

    /// Opens the file at the input's path, as if a list had named it.
    static void OpenNamed(tInput& input);

    /// The system's error at which the list broke off; 0 when it did not.
    int GetListError() const { return mList ? mList->GetError() : 0; }

    /// The folders named on the command line in which nothing was found when they had been walked, nor anything that
    /// could not be read. What the filter does not want counts as found.
    const std::vector<std::string>& GetEmptyFolders() const { return mEmptyFolders; }

    /// What to wait for after kNotYet.
    int GetDescriptor() const { return mList->GetDescriptor(); }

private:
    struct tFolder;

    bool FindOperand(tInput& input);
    eResult FindInList(tInput& input);
    bool FindInFolder(tInput& input);
    bool LeaveFolder(tInput& input);
    bool EnterFolder(int parent, const std::string& name, const std::string& path, tInput& input);
    bool IsWanted(const tInput& input) const { return !mFilter || mFilter(input); }
    bool TakeFile(int folder, std::string name, tInput& input);

    std::deque<std::string> mOperands;
    std::optional<CLineReader> mList;
    bool mHasLines = false;        ///< the list: else zeros
    std::vector<tFolder> mFolders; ///< from the outermost to the one being walked
    std::vector<std::string> mExcludes;
    bool mHasFound = false; ///< something in the folder of the command line that is being walked
    std::vector<std::string> mEmptyFolders;
    tFilter mFilter;
    int mFoundIn = -1;      ///< the folder of the document found last, not owned
    std::string mFoundName; ///< its name there; empty for standard input
};
