// What velmora index says of an index without reading documents, and what it drops.
#include "ExitCodes.h"
#include "commands/IndexOptions.h"
#include "index/FileSystemName.h"
#include "output/CJSONLines.h"
#include "output/COutput.h"
#include "output/Escapes.h"
#include "output/JSON.h"

#include <cstdio>
#include <ctime>
#include <filesystem>

static int Print(COutput& output)
{
    return output.Flush() || output.IsReaderGone() ? kExitOK : kExitFailed;
}

/// A time for people, in their zone.
static std::string DescribeTime(int64_t seconds)
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
    std::vector<tPlace> places = index.GetPlaces();
    for (tPlace& place : places) { // as it is now, and as the last run has found it
        place.isAbsent = place.isAbsent || FileSystemName::Of(place.path).empty();
    }
    COutput output(STDOUT_FILENO);
    if (json) {
        JSON::tRecord record;
        JSON::PutPath(record, "database", index.GetPath());
        record["version"] = status.version;
        record["bytes"] = status.bytes;
        record["documents"] = status.documents;
        record["failed"] = status.failed;
        record["roots"] = JSON::tRecord::array();
        record["mount_points"] = JSON::tRecord::array();
        for (const tPlace& place : places) {
            JSON::tRecord entry;
            JSON::PutPath(entry, "path", place.path);
            entry["absent"] = place.isAbsent;
            entry["kept"] = place.held > 0;
            record[place.isRoot ? "roots" : "mount_points"].push_back(std::move(entry));
        }
        CJSONLines(output).Write(record);
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
    const char* label = "Indexed:    ";
    for (const tPlace& place : places) {
        const bool isWhole = !place.isAbsent && place.held == 0;
        if (place.isRoot || !isWhole) {
            output.Write(label + Escapes::ForTerminal(place.path) +
                         (isWhole          ? "\n"
                          : place.isAbsent ? " (not reachable; its documents are kept)\n"
                                           : " (most of its documents are missing, and kept)\n"));
            label = "            ";
        }
    }
    return Print(output);
}

int ListFailed(CIndexDatabase& index, bool json)
{
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    index.ForEachFailed([&](const tFailedDocument& document) {
        if (json) {
            JSON::tRecord record;
            JSON::PutPath(record, "path", document.path);
            record["ok"] = false;
            record["error"] = JSON::DescribeFailure(document.failure.code, document.failure.message);
            record["time"] = document.failure.time;
            record["searchable"] = document.searchable;
            if (document.isFolder) {
                record["folder"] = true;
            }
            lines.Write(record);
        } else {
            output.Write(Escapes::ForTerminal(document.path) + ": " + Escapes::ForTerminal(document.failure.message) +
                         " (" + DescribeTime(document.failure.time) +
                         (document.searchable ? "; an earlier state is still found)\n" : ")\n"));
        }
        return output.Flush();
    });
    return Print(output);
}

int ForgetPaths(CIndexDatabase& index, const tIndexOptions& options)
{
    COutput output(STDOUT_FILENO);
    CJSONLines lines(output);
    bool allKnown = true;
    for (const std::string& named : options.forget) {
        std::string path = ResolvePath(named);
        std::optional<int64_t> documents = index.Forget(path);
        if (!documents) { // a link on the way may be gone with the disk that it led to
            std::error_code error;
            path = std::filesystem::absolute(named, error).lexically_normal().string();
            documents = error ? documents : index.Forget(path.substr(0, path.find_last_not_of('/') + 1));
        }
        allKnown = allKnown && documents;
        const std::string unknown =
            "the index knows nothing at or below it ('velmora index --status' shows its folders)";
        if (options.format == "json") {
            JSON::tRecord record;
            JSON::PutPath(record, "path", path);
            record["ok"] = documents.has_value();
            if (documents) {
                record["removed"] = *documents;
            } else {
                record["error"] = JSON::DescribeFailure("path", unknown);
            }
            lines.Write(record);
        } else if (documents && !options.quiet) {
            output.Write(Escapes::ForTerminal(path) + " is forgotten: " + std::to_string(*documents) +
                         (*documents == 1 ? " document has left the index\n" : " documents have left the index\n"));
        }
        if (!documents) {
            output.Flush();
            COutput::PrintMessage(Escapes::ForTerminal(named) + ": " + unknown);
        }
    }
    index.Commit();
    const int printed = Print(output);
    return allKnown ? printed : kExitFailed;
}
