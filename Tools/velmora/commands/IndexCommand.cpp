// velmora index: keeps the full-text index of documents up to date.
#include "ExitCodes.h"
#include "Places.h"
#include "commands/CIndexing.h"
#include "output/COutput.h"
#include "output/Escapes.h"

#include <algorithm>
#include <filesystem>

namespace {
void AddIndexOptions(CParser& parser, tIndexOptions& options)
{
    AddBatchOptions(parser, options, "Folders with documents, and documents; without any, all that was indexed before");
    AddFormatOption(parser, options.format, {"text", "json"}, "text (for people) or json");
    parser.AddFlag("--status", options.showStatus, "Show what is in the index, and do nothing");
    parser.AddFlag("--failed", options.listFailed, "List the documents that cannot be read, and do nothing");
    parser.AddFlag("--retry-failed", options.retryFailed, "Try also those that failed and have not changed since");
    parser.AddFlag("--verify", options.verify, "Compare contents: trust no times and sizes of files");
    parser.AddFlag("--rebuild", options.rebuild,
                   "Read every document again; a broken index is set aside and made anew");
    parser.AddFlag("--remove-missing", options.removeMissing, "Believe it when most documents of a folder are missing");
    parser.AddFlag("--watch", options.watch, "Go on: read what changes in the folders when it has changed");
    parser.Add("--forget", options.forget, "Drop a folder or document, which may not be there, and do nothing else")
        .Named("DIR")
        .TakesOne();
    parser.AddFlag("--new-failures", options.newFailures,
                   "Speak of what is wrong only if it was not so at the last run");
    parser.Add("--wait", options.waitSeconds, "Wait for another run to end, so long at most")
        .Between(0, static_cast<long long>(Bounds::kMostDocumentSeconds))
        .Named("SECONDS");
    AddDatabaseOption(parser, options.database);
}

std::string CheckIndex(const tIndexOptions& options)
{
    const bool reads = !options.filesFrom.empty() || options.retryFailed || options.verify || options.rebuild ||
                       options.removeMissing || options.newFailures || options.watch || !options.paths.empty();
    const int others = (options.showStatus ? 1 : 0) + (options.listFailed ? 1 : 0) + (options.forget.empty() ? 0 : 1);
    if (others > 1) {
        return "--status, --failed and --forget go one at a time";
    }
    if (others > 0 && reads) {
        return "--status, --failed and --forget read nothing: no documents and no other work go with them";
    }
    if (options.watch && (options.rebuild || !options.filesFrom.empty())) {
        return "--watch goes on with folders: neither --rebuild nor --files-from goes with it";
    }
    if (std::find(options.paths.begin(), options.paths.end(), "-") != options.paths.end()) {
        return "standard input has no name under which it could be found again";
    }
    if (options.nullSeparated && options.filesFrom.empty()) {
        return "--null says how the list of --files-from is written; there is none";
    }
    return {};
}

/// Opens the index for writing, and says it when a broken one was replaced.
int Write(const std::string& path, const tIndexOptions& options)
{
    using eAccess = CIndexDatabase::eAccess;
    Places::MakeFolderOf(path);
    CIndexDatabase index(path, options.rebuild ? eAccess::kRebuild : eAccess::kWrite,
                         {static_cast<double>(options.waitSeconds), !options.paths.empty()});
    std::string why;
    const std::string aside = index.GetSetAside(why);
    if (!aside.empty()) {
        COutput::PrintMessage(why + "\nIt is now " + Escapes::ForTerminal(aside) + ", and a new one is made.");
    }
    return options.forget.empty() ? CIndexing(index, options).Run() : ForgetPaths(index, options);
}

int RunIndex(const tIndexOptions& options)
{
    const std::string path = GetDatabasePath(options.database);
    try {
        if (path.empty()) {
            throw CIndexError("there is no folder for the index: name one with --database");
        }
        if (options.showStatus || options.listFailed) {
            CIndexDatabase index(path, CIndexDatabase::eAccess::kRead);
            const bool json = options.format == "json";
            return options.showStatus ? ShowStatus(index, json) : ListFailed(index, json);
        }
        return options.watch ? WatchFolders(path, options) : Write(path, options);
    } catch (const CIndexLocked& error) {
        COutput::PrintMessage(error.what());
        return kExitLocked;
    } catch (const CIndexError& error) {
        COutput::PrintMessage(error.what());
    } catch (const std::exception& error) { // SQLite's: no space, no rights, a damaged file
        COutput::PrintMessage(CIndexDatabase::Explain(path, error));
    }
    return kExitFailed;
}
} // namespace

void AddDatabaseOption(CParser& parser, std::string& database)
{
    parser.Add("--database", database, "The index's file, where it is not the user's own")
        .OrFrom("VELMORA_DATABASE")
        .Named("FILE");
}

std::string GetDatabasePath(const std::string& database)
{
    return database.empty() ? Places::FindIndex() : ResolvePath(database);
}

std::string ResolvePath(const std::string& path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path resolved = fs::absolute(path, error);
    if (resolved.filename().empty() || resolved.filename() == "." || resolved.filename() == ".." ||
        fs::is_directory(resolved, error)) {
        resolved = fs::weakly_canonical(resolved, error);
    } else {
        resolved = fs::weakly_canonical(resolved.parent_path(), error) / resolved.filename();
    }
    std::string text = (error ? fs::path(path) : resolved).string();
    while (text.size() > 1 && text.ends_with('/')) {
        text.pop_back();
    }
    return text;
}

const tCommand kIndexCommand = {"index", "Keep the search index of layouts up to date",
                                "  velmora index ~/Layouts     reads what is new or has changed\n"
                                "  velmora index               the same, for all that was indexed before\n"
                                "  velmora index --status\n",
                                CallCommand<tIndexOptions, AddIndexOptions, RunIndex, CheckIndex>};
