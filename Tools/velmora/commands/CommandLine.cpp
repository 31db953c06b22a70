#include "commands/CommandLine.h"

#include "ExitCodes.h"
#include "Interrupt.h"
#include "Places.h"
#include "commands/Suggestion.h"
#include "output/COutput.h"
#include "output/Escapes.h"
#include "output/Terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <pwd.h>
#include <string_view>
#include <thread>
#include <unistd.h>

static const tCommand* const kCommands[] = {&kImportCommand,    &kIndexCommand, &kSearchCommand,  &kRenderCommand,
                                            &kCheckCommand,     &kPartsCommand, &kLibraryCommand, &kStockCommand,
                                            &kThumbnailCommand, &kServeCommand, &kSchemaCommand,  &kDoctorCommand};

static const tCommand* FindCommand(std::string_view name)
{
    for (const tCommand* command : kCommands) {
        if (command->name == name) {
            return command;
        }
    }
    return nullptr;
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

/// A parser of a command's options, which sets those of the call.
static std::unique_ptr<CParser> MakeParser(const tCommand& command, CCommandCall& call)
{
    auto parser = std::make_unique<CParser>(std::string(command.summary) + "\n\nExamples:\n" + command.examples,
                                            std::string("velmora ") + command.name, "velmora " VELMORA_VERSION);
    call.AddOptions(*parser);
    return parser;
}

static int PrintOut(const std::string& text)
{
    COutput output(STDOUT_FILENO);
    output.Write(text);
    return output.Flush() || output.IsReaderGone() ? kExitOK : kExitFailed;
}

static int PrintHelp(const std::string& text)
{
    return PrintOut(Terminal::Fit(text, Terminal::GetLook(STDOUT_FILENO)));
}

static int RefuseUsage(const std::string& message, const std::string& helpCommand)
{
    COutput::PrintMessage(message + "\nTry '" + helpCommand + "'.");
    return kExitUsage;
}

/// The arguments behind the command's name.
static std::vector<std::string> CollectArguments(const tCommand& command, const CParser& parser, int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    for (std::string& argument : arguments) {
        const bool isDashed = argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
        if (command.takesDashedWords && isDashed && !parser.HasOption(argument)) {
            argument.insert(0, 1, ' ');
        }
    }
    return arguments;
}

static int RunCommand(const tCommand& command, int argc, char** argv)
{
    const std::unique_ptr<CCommandCall> call = command.call();
    const std::unique_ptr<CParser> parser = MakeParser(command, *call);
    const std::string helpCommand = std::string("velmora help ") + command.name;
    std::string problem;
    switch (parser->Parse(CollectArguments(command, *parser, argc, argv), problem)) {
    case CParser::eResult::kHelpWanted:
        return PrintHelp(parser->GetHelp());
    case CParser::eResult::kVersionWanted:
        return PrintOut("velmora " VELMORA_VERSION "\n");
    case CParser::eResult::kWrong:
        return RefuseUsage(Escapes::ForTerminal(problem), helpCommand);
    case CParser::eResult::kParsed:
        break;
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

/// @return empty, or what is wrong
static std::string CheckSeconds(const std::string& text)
{
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool isGood = end != text.c_str() && *end == '\0' && seconds > 0 && seconds <= Bounds::kMostDocumentSeconds;
    return isGood ? "" : "is no number of seconds above 0, at most 86400";
}

void AddWorkerOptions(CParser& parser, tWorkerOptions& options)
{
    parser.Add("--plugin", options.plugIn, "The importer plug-in, where it is not the one that came with velmora")
        .OrFrom("VELMORA_PLUGIN")
        .Named("BUNDLE");
    parser.Add("--timeout", options.timeoutSeconds, "Time for one document (default 5)")
        .Checked(CheckSeconds)
        .Named("SECONDS");
    parser.Add("--memory", options.memoryMegabytes, "Memory for a worker process, in megabytes (default 1024)")
        .Between(1, Bounds::kMostWorkerMegabytes)
        .Named("MB");
    parser
        .Add("--sandbox", options.sandbox,
             "How workers are confined: auto (as far as the system can), require (or not at all), off")
        .OneOf({"auto", "require", "off"})
        .Named("MODE");
    parser.Add("--sandbox-user", options.sandboxUser, "Whom workers become that root starts, nobody for example")
        .Named("USER");
    parser.AddFlag("--fresh-workers", options.freshWorkers, "A process for each document, which sees no other");
}

void AddFormatOption(CParser& parser, std::string& format, const std::vector<std::string>& formats, const char* help)
{
    parser.Add("--format", format, help).OneOf(formats).Named("FORMAT");
}

void AddWideOption(CParser& parser, bool& isWide)
{
    parser.AddFlag("--wide", isWide, "On a terminal, too, lines as long as they get, and all columns");
}

void AddJobsOption(CParser& parser, unsigned& jobs, const char* help)
{
    parser.Add("-j,--jobs", jobs, help).Between(1, 1024).Named("N");
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
        COutput::PrintText(Terminal::Fit(GeneralHelp(), Terminal::GetLook(STDERR_FILENO)));
        return kExitUsage;
    }
    const std::string_view word = argv[1];
    if (word == "-h" || word == "--help" || (word == "help" && argc == 2)) {
        return PrintHelp(GeneralHelp());
    }
    if (word == "-V" || word == "--version") {
        return PrintOut("velmora " VELMORA_VERSION "\n");
    }
    const bool help = word == "help";
    const std::string_view name = help ? argv[2] : word;
    if (help && (name == "-h" || name == "--help" || name == "help")) {
        return PrintHelp(GeneralHelp());
    }
    if (const tCommand* command = FindCommand(name)) {
        if (help) {
            const std::unique_ptr<CCommandCall> call = command->call();
            return PrintHelp(MakeParser(*command, *call)->GetHelp());
        }
        return RunCommand(*command, argc - 1, argv + 1);
    }
    const bool isOption = !name.empty() && name[0] == '-';
    std::vector<std::string> words = {"--help", "--version"};
    for (const tCommand* command : kCommands) {
        words.emplace_back(command->name);
    }
    const std::string message = (isOption ? "there is no option '" : "there is no command '") +
                                Escapes::ForTerminal(name) + "'" + Suggestion::Ask(name, words);
    return RefuseUsage(message, "velmora --help");
}
