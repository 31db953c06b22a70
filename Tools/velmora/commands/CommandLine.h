// The command table and what reads it.
#pragma once

#include "Bounds.h"
#include "commands/CParser.h"
#include "pool/CWorker.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What every command takes that starts workers.
struct tWorkerOptions {
    std::string plugIn;                                  ///< empty for the one that belongs to the executable
    std::string sandbox = "auto";                        ///< auto, require or off
    std::string sandboxUser;                             ///< whom workers become; empty for nobody else
    bool freshWorkers = false;                           ///< a worker for each document
    double timeoutSeconds = Bounds::kDocumentSeconds;    ///< for one document
    unsigned memoryMegabytes = Bounds::kWorkerMegabytes; ///< what a worker may use beyond what it needs at rest
};

/// A command that was called: owns the options of that command.
class CCommandCall {
public:
    virtual ~CCommandCall() = default;
    virtual void AddOptions(CParser& parser) = 0;
    /// What the parser cannot check by itself. @return empty, or what is wrong
    virtual std::string Check() const = 0;
    virtual int Run() const = 0; ///< answers an eExitCode
};

/// One command: feeds the parser and the help.
struct tCommand {
    const char* name;
    const char* summary;                     ///< one line
    const char* examples;                    ///< a line each
    std::unique_ptr<CCommandCall> (*call)(); ///< with all options at their defaults
    /// Words such as -word are operands, where they are no option: they reach the command with a blank in front.
    bool takesDashedWords = false;
};

/// Makes a command's call of a structure for its options and the functions that work with it.
template <typename tOptions, void (*kAddOptions)(CParser&, tOptions&), int (*kRun)(const tOptions&),
          std::string (*kCheck)(const tOptions&) = nullptr>
std::unique_ptr<CCommandCall> CallCommand()
{
    class CCall : public CCommandCall {
        void AddOptions(CParser& parser) override { kAddOptions(parser, mOptions); }
        std::string Check() const override
        {
            if constexpr (kCheck != nullptr) {
                return kCheck(mOptions);
            }
            return {};
        }
        int Run() const override { return kRun(mOptions); }
        tOptions mOptions;
    };
    return std::make_unique<CCall>();
}

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

void AddWorkerOptions(CParser& parser, tWorkerOptions& options);

/// Adds --format. @param format  holds the usual one
void AddFormatOption(CParser& parser, std::string& format, const std::vector<std::string>& formats, const char* help);

/// Adds --wide, for text that is fitted to a terminal.
void AddWideOption(CParser& parser, bool& isWide);

/// Adds --jobs. @param jobs  0 for one worker process a core
void AddJobsOption(CParser& parser, unsigned& jobs, const char* help);

/// What a command starts its workers with. @param failure  set when worker or plug-in is not to be found
tWorkerSettings GetWorkerSettings(const tWorkerOptions& options, std::optional<tFailure>& failure);

/// How many worker processes there are to be. @param jobs  what --jobs says
size_t CountWorkers(unsigned jobs);

/// The whole program: finds the command, reads its options, runs it. @return an eExitCode
int RunCommandLine(int argc, char** argv);
