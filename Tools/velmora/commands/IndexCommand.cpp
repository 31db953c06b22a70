// velmora index: keeps the full-text index of documents up to date.
#include "ExitCodes.h"
#include "Importer/Names.h"
#include "Interrupt.h"
#include "Places.h"
#include "commands/Batch.h"
#include "commands/IndexOptions.h"
#include "index/CIndexDatabase.h"
#include "index/CIndexRun.h"
#include "index/ContentHash.h"
#include "output/COutput.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace {
struct tIndexOptions : tBatchOptions {
    std::string format = "text";
    std::string database;     ///< the search index; empty for the user's own
    bool showStatus = false;  ///< what is in it
    bool listFailed = false;  ///< the documents that failed
    bool rebuild = false;     ///< read everything again
    bool retryFailed = false; ///< also what failed and has not changed
    bool verify = false;      ///< compare contents, not times
};

void AddIndexOptions(CLI::App& app, tIndexOptions& options)
{
    AddBatchOptions(app, options, "Folders with documents, and documents; without any, all that was indexed before");
    AddFormatOption(app, options.format, {"text", "json"}, "text (for people) or json");
    app.add_flag("--status", options.showStatus, "Show what is in the index, and do nothing");
    app.add_flag("--failed", options.listFailed, "List the documents that cannot be read, and do nothing");
    app.add_flag("--retry-failed", options.retryFailed, "Try also those that failed and have not changed since");
    app.add_flag("--verify", options.verify, "Compare contents: trust no times and sizes of files");
    app.add_flag("--rebuild", options.rebuild, "Read every document again, and put the index in order");
    AddDatabaseOption(app, options.database);
}

std::string CheckIndex(const tIndexOptions& options)
{
    const bool reads = !options.filesFrom.empty() || options.retryFailed || options.verify || options.rebuild ||
                       !options.paths.empty();
    if (options.showStatus && options.listFailed) {
        return "--status and --failed go one at a time";
    }
    if ((options.showStatus || options.listFailed) && reads) {
        return "--status and --failed only show something: no documents and no other work go with them";
    }
    if (std::find(options.paths.begin(), options.paths.end(), "-") != options.paths.end()) {
        return "standard input has no name under which it could be found again";
    }
    if (options.nullSeparated && options.filesFrom.empty()) {
        return "--null says how the list of --files-from is written; there is none";
    }
    return {};
}

int Print(COutput& output)
{
    return output.Flush() || output.IsReaderGone() ? kExitOK : kExitFailed;
}

/// A time for people, in their zone.
std::string DescribeTime(int64_t seconds)
{
    const time_t value = static_cast<time_t>(seconds);
    tm parts = {};
    localtime_r(&value, &parts);
    char text[32];
    return std::string(text, strftime(text, sizeof text, "%Y-%m-%d %H:%M", &parts));
}

int ShowStatus(CIndexDatabase& index, bool json)
{
    const tIndexStatus status = index.GetStatus();
    COutput output(STDOUT_FILENO);
    if (json) {
        JSON::tRecord record;
        JSON::PutPath(record, "database", index.GetPath());
        record["version"] = status.version;
        record["bytes"] = status.bytes;
        record["documents"] = status.documents;
        record["failed"] = status.failed;
        record["roots"] = JSON::tRecord::array();
        for (const std::string& root : status.roots) {
            JSON::tRecord entry;
            JSON::PutPath(entry, "path", root);
            record["roots"].push_back(std::move(entry));
        }
        output.Write(JSON::ToLine(record));
        return Print(output);
    }
    char size[32];
    const bool isLarge = status.bytes >= 1000000;
    snprintf(size, sizeof size, isLarge ? "%.1f MB" : "%.0f kB",
             static_cast<double>(status.bytes) / (isLarge ? 1e6 : 1e3));
    output.Write("Index:      " + Escapes::ForTerminal(index.GetPath()) + " (" + size + ", version " +
                 std::to_string(status.version) + ")\n");
    output.Write("Documents:  " + std::to_string(status.documents) + "\n");
    output.Write("Failed:     " + std::to_string(status.failed) +
                 (status.failed > 0 ? " ('velmora index --failed' lists them)\n" : "\n"));
    for (size_t i = 0; i < status.roots.size(); ++i) {
        output.Write((i == 0 ? "Indexed:    " : "            ") + Escapes::ForTerminal(status.roots[i]) + "\n");
    }
    return Print(output);
}

int ListFailed(CIndexDatabase& index, bool json)
{
    COutput output(STDOUT_FILENO);
    index.ForEachFailed([&](const tFailedDocument& document) {
        if (json) {
            JSON::tRecord record;
            JSON::PutPath(record, "path", document.path);
            record["error"] = JSON::DescribeFailure(document.failure.code, document.failure.message);
            record["time"] = document.failure.time;
            record["searchable"] = document.searchable;
            output.Write(JSON::ToLine(record));
        } else {
            output.Write(Escapes::ForTerminal(document.path) + ": " + Escapes::ForTerminal(document.failure.message) +
                         " (" + DescribeTime(document.failure.time) +
                         (document.searchable ? "; an earlier state is still found)\n" : ")\n"));
        }
        return output.Flush();
    });
    return Print(output);
}

/// Tells one importer from another: the program's version, and the content of plug-in and worker.
std::string IdentifyImporter(const tWorkerSettings& settings)
{
    std::vector<std::string> files = {settings.program};
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator entry(settings.plugIn, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file(error)) {
            files.push_back(entry->path().string());
        }
    }
    std::sort(files.begin() + 1, files.end());
    std::string hashes;
    for (const std::string& file : files) {
        const CDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC));
        hashes += ContentHash::OfFile(descriptor.Get()).value_or(std::string());
    }
    return VELMORA_VERSION "-" + ContentHash::InHex(ContentHash::OfBytes(hashes)).substr(0, 16);
}

bool IsAtOrBelow(const std::string& path, const std::string& folder)
{
    return path == folder || (path.starts_with(folder) && (folder.ends_with('/') || path[folder.size()] == '/'));
}

/// Paths without those that lie below others.
std::vector<std::string> Outermost(std::vector<std::string> paths)
{
    std::sort(paths.begin(), paths.end(),
              [](const std::string& one, const std::string& other) { return one.size() < other.size(); });
    std::vector<std::string> kept;
    for (std::string& path : paths) {
        if (std::none_of(kept.begin(), kept.end(),
                         [&](const std::string& other) { return IsAtOrBelow(path, other); })) {
            kept.push_back(std::move(path));
        }
    }
    std::sort(kept.begin(), kept.end());
    return kept;
}

/// Whether a path is in the form in which the index keeps them.
bool IsResolved(const std::string& path)
{
    return path.starts_with('/') && path.find("//") == std::string::npos && path.find("/./") == std::string::npos &&
           path.find("/../") == std::string::npos && !path.ends_with('/') && !path.ends_with("/.") &&
           !path.ends_with("/..");
}

/// A run over some roots.
class CIndexing {
public:
    CIndexing(CIndexDatabase& index, const tIndexOptions& options)
        : mIndex(index), mOptions(options), mKnownRoots(index.GetStatus().roots),
          mBegin(std::chrono::steady_clock::now())
    {}

    int Run()
    {
        std::vector<std::string> roots;
        for (const std::string& path : mOptions.paths) {
            roots.push_back(ResolvePath(path));
        }
        if (mOptions.rebuild || (roots.empty() && mOptions.filesFrom.empty())) { // everything
            roots.insert(roots.end(), mKnownRoots.begin(), mKnownRoots.end());
        }
        if (roots.empty() && mOptions.filesFrom.empty()) {
            COutput::PrintMessage("nothing is indexed yet: name folders or documents\nTry 'velmora help index'.");
            return kExitUsage;
        }
        roots = Outermost(std::move(roots));
        tIndexOptions options = mOptions;
        options.paths = roots;
        options.quiet = true; // this command has a summary of its own
        CBatch batch(options);
        if (const std::optional<int> status = batch.Begin()) {
            return *status;
        }
        if (batch.CannotServe()) {
            return kExitFailed;
        }
        std::optional<tFailure> ignored;
        CIndexRun run(mIndex,
                      {IdentifyImporter(GetWorkerSettings(options, ignored)), options.retryFailed, options.verify});
        if (options.rebuild) {
            mIndex.ForgetOrigins();
        }
        RememberRoots(roots);
        const bool whole = Walk(batch, run);
        if (whole) {
            for (const std::string& root : roots) {
                run.Finish(root);
            }
            if (options.rebuild) {
                mIndex.Optimize();
            }
        }
        run.Commit();
        PrintSummary(run.GetSummary());
        if (Interrupt::IsRequested()) {
            return kExitInterrupted;
        }
        return !whole || mMissing || run.GetSummary().failed > 0 ? kExitFailed : kExitOK;
    }

private:
    /// Keeps the folders and documents to be walked again; what lies below another one needs no mention.
    void RememberRoots(const std::vector<std::string>& roots)
    {
        std::vector<std::string> all = mKnownRoots;
        all.insert(all.end(), roots.begin(), roots.end());
        const std::vector<std::string> kept = Outermost(all);
        for (const std::string& root : all) {
            struct stat status = {};
            if (std::find(kept.begin(), kept.end(), root) == kept.end()) {
                mIndex.RemoveRoot(root);
            } else if (lstat(root.c_str(), &status) == 0) {
                mIndex.AddRoot(root);
            }
        }
        mIndex.Commit();
    }

    /// @return false when not everything was seen
    bool Walk(CBatch& batch, CIndexRun& run)
    {
        bool stopped = false;
        tRunHandlers handlers;
        handlers.isWanted = [&](const tInput& input) { return run.Wants(Resolve(input.path), input.status); };
        handlers.isWantedOpen = [&](tInput& input) {
            return run.WantsOpen(Resolve(input.path), input.status, input.document.Get(), input.note);
        };
        handlers.take = [&](const tInput& input, const tAnswer& answer) {
            stopped = batch.CannotServe(); // then this failure is none of the document
            if (!stopped) {
                Take(run, input, answer);
            }
            return !stopped;
        };
        handlers.idle = [&] {
            run.CommitIfDue();
            return -1;
        };
        COutput output(STDOUT_FILENO);
        batch.Run({eVerb::kIndex, Importer::kContentType}, std::move(handlers), output, "indexed");
        return !stopped && !batch.HasBrokenList() && !Interrupt::IsRequested();
    }

    /// Only paths from a list need it: those below roots are as the index wants them.
    static std::string Resolve(const std::string& path) { return IsResolved(path) ? path : ResolvePath(path); }

    void Take(CIndexRun& run, const tInput& input, const tAnswer& answer)
    {
        const std::string path = Resolve(input.path);
        if (run.Take(path, input.status, input.note, answer)) {
            if (!answer.ok) {
                COutput::PrintMessage(Escapes::ForTerminal(input.path + ": " + answer.failure.message));
            }
            return;
        }
        const bool wasKnown = std::find(mKnownRoots.begin(), mKnownRoots.end(), path) != mKnownRoots.end();
        mIndex.RemoveRoot(path);
        mMissing = mMissing || !wasKnown;
        COutput::PrintMessage(Escapes::ForTerminal(input.path) +
                              (wasKnown ? " is gone, and leaves the index" : ": there is no such file or folder"));
    }

    void PrintSummary(const tIndexSummary& summary)
    {
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - mBegin).count();
        const int64_t documents = mIndex.GetStatus().documents;
        COutput output(STDOUT_FILENO);
        if (mOptions.format == "json") {
            output.Write(JSON::ToLine({{"added", summary.added},
                                       {"changed", summary.changed},
                                       {"unchanged", summary.unchanged},
                                       {"removed", summary.removed},
                                       {"failed", summary.failed},
                                       {"known_failed", summary.knownFailed},
                                       {"opened", summary.opened},
                                       {"documents", documents},
                                       {"seconds", seconds}}));
        } else if (!mOptions.quiet) {
            char text[512];
            snprintf(text, sizeof text,
                     "%lld added, %lld changed, %lld unchanged, %lld removed, %lld failed; %lld documents in the index"
                     " (%lld opened, %.1f s)\n",
                     static_cast<long long>(summary.added), static_cast<long long>(summary.changed),
                     static_cast<long long>(summary.unchanged), static_cast<long long>(summary.removed),
                     static_cast<long long>(summary.failed), static_cast<long long>(documents),
                     static_cast<long long>(summary.opened), seconds);
            output.Write(text);
        }
        output.Flush();
        if (summary.knownFailed > 0) {
            COutput::PrintMessage("failed before, and not changed since: " + std::to_string(summary.knownFailed) +
                                  " ('velmora index --failed' lists them)");
        }
    }

    CIndexDatabase& mIndex;
    const tIndexOptions& mOptions;
    std::vector<std::string> mKnownRoots;
    std::chrono::steady_clock::time_point mBegin;
    bool mMissing = false; ///< something that was named does not exist
};

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
        Places::MakeFolderOf(path);
        CIndexDatabase index(path, CIndexDatabase::eAccess::kWrite);
        return CIndexing(index, options).Run();
    } catch (const CIndexError& error) {
        COutput::PrintMessage(error.what());
    } catch (const std::exception& error) { // SQLite's: no space, no rights, a damaged file
        COutput::PrintMessage(CIndexDatabase::Explain(path, error));
    }
    return kExitFailed;
}
} // namespace

void AddDatabaseOption(CLI::App& app, std::string& database)
{
    app.add_option("--database", database, "The index's file, where it is not the user's own")
        ->envname("VELMORA_DATABASE")
        ->type_name("FILE");
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
