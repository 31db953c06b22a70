// The command table and what reads it.
#pragma once

#include "pool/CWorker.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// What the options of all commands have set; a command uses those it has added.
struct tOptions {
    std::vector<std::string> paths;
    std::string filesFrom;      ///< a list of further paths; empty for none
    bool nullSeparated = false; ///< the list has zeros between paths, not line breaks
    std::string format = "text";
    std::vector<std::string> names;     ///< of the attributes to print, in this order; empty for all
    bool raw = false;                   ///< values alone
    std::string nullMarker = "(null)";  ///< stands for a value that is not there
    unsigned detail = 0;                ///< 1 to 3; 0 for the usual record
    std::string plugIn;                 ///< empty for the one that belongs to the executable
    std::string stock;                  ///< a stock file; empty for none
    std::vector<std::string> libraries; ///< track library files
    std::string output;                 ///< the file a picture goes to; empty or "-" for standard output
    bool force = false;                 ///< the file may be there already
    std::string size;                   ///< of a picture: "WxH" or "N"; empty for the usual one
    std::string style;                  ///< name of a track style; empty for the layout's own
    std::vector<std::string> layers;    ///< names of the layers to draw; empty for the visible ones
    bool labels = false;                ///< names of the elements are drawn
    bool grid = false;                  ///< a grid is drawn
    bool draws = false;                 ///< the workers are to draw
    std::vector<std::string> excludes;  ///< patterns of names that a walk passes over
    unsigned jobs = 0;                  ///< worker processes; 0 for one a core
    std::string progress = "auto";      ///< auto, always, never, plain
    bool quiet = false;                 ///< no summary
    std::string sandbox = "auto";       ///< auto, require or off
    double timeoutSeconds = 5;          ///< for one document
    unsigned memoryMegabytes = 1024;    ///< what a worker may use beyond what it needs at rest
    std::string database;               ///< the search index; empty for the user's own
    bool showStatus = false;            ///< index: what is in it
    bool listFailed = false;            ///< index: the documents that failed
    bool rebuild = false;               ///< index: read everything again
    bool retryFailed = false;           ///< index: also what failed and has not changed
    bool verify = false;                ///< index: compare contents, not times
    long long limit = -1;               ///< search: at most so many; 0 for all, below for the default
    bool countOnly = false;             ///< search: how many
    std::string onlyIn;                 ///< search: a folder; empty for everywhere
};

/// One command: feeds the parser and the help.
struct tCommand {
    const char* name;
    const char* summary;  ///< one line
    const char* examples; ///< a line each
    void (*addOptions)(CLI::App& app, tOptions& options);
    /// What the parser cannot check by itself. @return empty, or what is wrong
    std::string (*check)(const tOptions& options);
    int (*run)(const tOptions& options); ///< answers an eExitCode
    /// Words such as -word are operands, where they are no option: they reach the command with a blank in front.
    bool takesDashedWords = false;
};

extern const tCommand kImportCommand;
extern const tCommand kCheckCommand;
extern const tCommand kPartsCommand;
extern const tCommand kLibraryCommand;
extern const tCommand kStockCommand;
extern const tCommand kSchemaCommand;
extern const tCommand kIndexCommand;
extern const tCommand kSearchCommand;
extern const tCommand kRenderCommand;
extern const tCommand kThumbnailCommand;
extern const tCommand kServeCommand;
extern const tCommand kDoctorCommand;

/// The version of this program.
const char* GetVersion();

/// Options of every command that starts workers.
void AddWorkerOptions(CLI::App& app, tOptions& options);

/// What such a command starts its workers with. @param failure  set when worker or plug-in is not to be found
tWorkerSettings GetWorkerSettings(const tOptions& options, std::optional<tFailure>& failure);

/// The whole program: finds the command, reads its options, runs it. @return an eExitCode
int RunCommandLine(int argc, char** argv);
