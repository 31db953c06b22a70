// The documents a command line names, one after the other, opened.
#pragma once

#include "protocol/CDescriptor.h"
#include "protocol/Messages.h"

#include <cstdio>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// One input: a document open for reading, or why there is none. Each becomes one record.
struct tInput {
    std::string path;     ///< as given, or the given folder's path and the names below it; any bytes
    CDescriptor document; ///< a regular file; not open when failure is set
    std::optional<tFailure> failure;
};

/// Walks operands and lists lazily: what it keeps in memory is the names of the folders it is in.
///
/// A file named on the command line or in a list is always taken. A folder named on the command line is walked in the
/// order of its names' bytes; links to folders are not followed below it, and those entries are taken whose name ends
/// in
/// ".velmora" (in either case) or whose first bytes are a layout's. "-" on the command line is standard input.
class CDocumentSource {
public:
    struct tListCloser {
        void operator()(FILE* list) const;
    };
    using tList = std::unique_ptr<FILE, tListCloser>;

    /// @param paths          operands, first to be walked
    /// @param list           further paths, read after the operands; may be null
    /// @param listSeparator  what ends a path in the list: a line break, or zero
    CDocumentSource(std::vector<std::string> paths, tList list, char listSeparator);
    ~CDocumentSource();

    /// Opens a list of paths. @param name  a file, or "-" for standard input @return null with errno set
    static tList OpenList(const std::string& name);

    /// The next input. @return false when there is none left, or the user has interrupted
    bool Next(tInput& input);

private:
    struct tFolder;

    bool NextOperand(tInput& input);
    bool NextFromList(tInput& input);
    bool NextFromFolder(tInput& input);
    bool EnterFolder(int parent, const std::string& name, const std::string& path, tInput& input);

    std::deque<std::string> mOperands;
    tList mList;
    char mListSeparator;
    std::vector<tFolder> mFolders; ///< from the outermost to the one being walked
};
