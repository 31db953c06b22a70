#include "commands/CommandLine.h"

#include "ExitCodes.h"
#include "Interrupt.h"
#include "Places.h"
#include "output/COutput.h"
#include "output/Escapes.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <pwd.h>
#include <string_view>
#include <thread>
#include <unistd.h>

static const tCommand* const kCommands[] = {&kImportCommand,    &kIndexCommand, &kSearchCommand,  &kRenderCommand,
                                            &kCheckCommand,     &kPartsCommand, &kLibraryCommand, &kStockCommand,
                                            &kThumbnailCommand, &kServeCommand, &kSchemaCommand,  &kDoctorCommand};

/// A word that differs from a command by more edits than this is no typing error.
static constexpr size_t kMostEdits = 2;

static const tCommand* FindCommand(std::string_view name)
{
    for (const tCommand* command : kCommands) {
        if (command->name == name) {
            return command;
        }
    }
    return nullptr;
}

/// Insertions, removals, replacements and exchanges of neighbours that turn one word into the other.
static size_t CountEdits(std::string_view from, std::string_view to)
{
    std::vector<std::vector<size_t>> edits(from.size() + 1, std::vector<size_t>(to.size() + 1));
    std::iota(edits[0].begin(), edits[0].end(), size_t{0});
    for (size_t i = 1; i <= from.size(); ++i) {
        edits[i][0] = i;
        for (size_t j = 1; j <= to.size(); ++j) {
            const size_t replaced = edits[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            edits[i][j] = std::min({replaced, edits[i - 1][j] + 1, edits[i][j - 1] + 1});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
            }
        }
    }
    return edits.back().back();
}

static std::string SuggestCommand(std::string_view word)
{
    std::string best;
    size_t fewest = kMostEdits + 1;
    if (word.size() > 32) { // no command is that long, and the table of edits would be
        return best;
    }
    for (const tCommand* command : kCommands) {
        const size_t edits = CountEdits(word, command->name);
        if (edits < fewest) {
            fewest = edits;
            best = command->name;
        }
    }
    return best;
}

static std::string GeneralHelp()
{
    std::string text = "velmora " VELMORA_VERSION ": search attributes of model-railway layouts\n\nExamples:\n"
                       "  velmora import plan.velmora\n"
                       "  velmora import --format json ~/Layouts\n"
                       "  velmora index ~/Layouts\n"
                       "  velmora search turntable author:meier\n"
                       "  velmora render -o plan.svg plan.velmora\n\n"
                       "Usage: velmora COMMAND [OPTIONS] ...\n\nCommands:\n";
    for (const tCommand* command : kCommands) {
        text += "  " + std::string(command->name) + std::string(11 - std::string_view(command->name).size(), ' ') +
                command->summary + "\n";
    }
    return text + "  help       Show this, or the help of a command\n\n"
                  "Options:\n  -h, --help     Show this\n  -V, --version  Show the version\n";
}

static std::unique_ptr<CLI::App> MakeParser(const tCommand& command, CCommandCall& call)
{
    auto app = std::make_unique<CLI::App>(std::string(command.summary) + "\n\nExamples:\n" + command.examples,
                                          std::string("velmora ") + command.name);
    app->set_help_flag("-h,--help", "Show this");
    app->set_version_flag("-V,--version", "velmora " VELMORA_VERSION, "Show the version");
    call.AddOptions(*app);
    return app;
}

static int PrintOut(const std::string& text)
{
    COutput output(STDOUT_FILENO);
    output.Write(text);
    return output.Flush() || output.IsReaderGone() ? kExitOK : kExitFailed;
}

static int RefuseUsage(const std::string& message, const std::string& helpCommand)
{
    COutput::PrintMessage(message + "\nTry '" + helpCommand + "'.");
    return kExitUsage;
}

/// The arguments behind the command's name, as the parser wants them: last one first.
static std::vector<std::string> CollectArguments(const tCommand& command, const CLI::App& app, int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    for (std::string& argument : arguments) {
        const bool isDashed = argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
        if (command.takesDashedWords && isDashed && app.get_option_no_throw(argument) == nullptr) {
            argument.insert(0, 1, ' ');
        }
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

static int RunCommand(const tCommand& command, int argc, char** argv)
{
    const std::unique_ptr<CCommandCall> call = command.call();
    const std::unique_ptr<CLI::App> app = MakeParser(command, *call);
    const std::string helpCommand = std::string("velmora help ") + command.name;
    try {
        app->parse(CollectArguments(command, *app, argc, argv));
    } catch (const CLI::CallForHelp&) {
        return PrintOut(app->help());
    } catch (const CLI::CallForVersion&) {
        return PrintOut("velmora " VELMORA_VERSION "\n");
    } catch (const CLI::ParseError& error) {
        return RefuseUsage(Escapes::ForTerminal(error.what()), helpCommand);
    }
    const std::string wrong = call->Check();
    if (!wrong.empty()) {
        return RefuseUsage(wrong, helpCommand);
    }
    Places::MakeLogFolder();
    return call->Run();
}

const char* GetVersion()
{
    return VELMORA_VERSION;
}

void AddWorkerOptions(CLI::App& app, tWorkerOptions& options)
{
    app.add_option("--plugin", options.plugIn, "The importer plug-in, where it is not the one that came with velmora")
        ->envname("VELMORA_PLUGIN")
        ->type_name("BUNDLE");
    app.add_option("--timeout", options.timeoutSeconds, "Time for one document (default 5)")
        ->check(CLI::Validator(
            [](const std::string& text) {
                double seconds = 0;
                const bool good =
                    CLI::detail::lexical_cast(text, seconds) && seconds > 0 && seconds <= Bounds::kMostDocumentSeconds;
                return good ? std::string() : std::string("must be a number of seconds above 0, at most 86400");
            },
            ""))
        ->type_name("SECONDS");
    app.add_option("--memory", options.memoryMegabytes, "Memory for a worker process, in megabytes (default 1024)")
        ->check(CLI::Range(1U, Bounds::kMostWorkerMegabytes))
        ->type_name("MB");
    app.add_option("--sandbox", options.sandbox,
                   "How workers are confined: auto (as far as the system can), require (or not at all), off")
        ->check(CLI::IsMember({"auto", "require", "off"}))
        ->type_name("MODE");
    app.add_option("--sandbox-user", options.sandboxUser, "Whom workers become that root starts, nobody for example")
        ->type_name("USER");
    app.add_flag("--fresh-workers", options.freshWorkers, "A process for each document, which sees no other");
}

void AddFormatOption(CLI::App& app, std::string& format, const std::vector<std::string>& formats, const char* help)
{
    app.add_option("--format", format, help)->check(CLI::IsMember(formats))->type_name("FORMAT");
}

void AddJobsOption(CLI::App& app, unsigned& jobs, const char* help)
{
    app.add_option("-j,--jobs", jobs, help)->check(CLI::Range(1U, 1024U))->type_name("N");
}

size_t CountWorkers(unsigned jobs)
{
    return jobs > 0 ? jobs : std::max(std::thread::hardware_concurrency(), 1U);
}

/// @return empty, or why workers cannot become that user
static std::string SetUser(const tWorkerOptions& options, tWorkerSettings& settings)
{
    const passwd* const user = getpwnam(options.sandboxUser.c_str());
    if (user == nullptr || user->pw_uid == 0) {
        return "--sandbox-user: there is no such user, or it is root: " + options.sandboxUser;
    }
    if (geteuid() != 0 || options.sandbox == "off") {
        return geteuid() != 0 ? "--sandbox-user is for root: nobody else can become another user"
                              : "--sandbox-user needs a sandbox";
    }
    settings.user = user->pw_uid;
    settings.group = user->pw_gid;
    return {};
}

tWorkerSettings GetWorkerSettings(const tWorkerOptions& options, std::optional<tFailure>& failure)
{
    tWorkerSettings settings;
    settings.program = Places::FindWorker();
    settings.plugIn = Places::FindPlugIn(options.plugIn);
    settings.memoryMegabytes = options.memoryMegabytes;
    settings.sandbox = options.sandbox;
    settings.isFresh = options.freshWorkers;
    settings.processorSeconds = static_cast<unsigned>(std::ceil(options.timeoutSeconds));
    if (!options.sandboxUser.empty()) {
        const std::string problem = SetUser(options, settings);
        if (!problem.empty()) {
            failure = MakeFailure(eFailure::kSandbox, problem).failure;
        }
    }
    if (settings.plugIn.empty()) {
        const std::string message = "there is no importer plug-in: " + Places::DescribePlugInPlaces();
        failure = MakeFailure(eFailure::kPlugIn, message).failure;
    } else if (settings.program.empty()) {
        failure = MakeFailure(eFailure::kPlugIn, "the worker program is missing: the installation is damaged").failure;
    }
    return settings;
}

int RunCommandLine(int argc, char** argv)
{
    Interrupt::Install();
    if (argc < 2) {
        COutput::PrintText(GeneralHelp());
        return kExitUsage;
    }
    const std::string_view word = argv[1];
    if (word == "-h" || word == "--help" || (word == "help" && argc == 2)) {
        return PrintOut(GeneralHelp());
    }
    if (word == "-V" || word == "--version") {
        return PrintOut("velmora " VELMORA_VERSION "\n");
    }
    const bool help = word == "help";
    const std::string_view name = help ? argv[2] : word;
    if (help && (name == "-h" || name == "--help" || name == "help")) {
        return PrintOut(GeneralHelp());
    }
    if (const tCommand* command = FindCommand(name)) {
        if (help) {
            const std::unique_ptr<CCommandCall> call = command->call();
            return PrintOut(MakeParser(*command, *call)->help());
        }
        return RunCommand(*command, argc - 1, argv + 1);
    }
    const bool isOption = !name.empty() && name[0] == '-';
    std::string message =
        (isOption ? "there is no option '" : "there is no command '") + Escapes::ForTerminal(name) + "'";
    const std::string suggestion = isOption ? std::string() : SuggestCommand(name);
    if (!suggestion.empty()) {
        message += "; did you mean '" + suggestion + "'?";
    }
    return RefuseUsage(message, "velmora --help");
}
