// Runs programs for tests and keeps what they print.
#pragma once

#include "support/Files.h"

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

struct tProgramResult {
    int status = -1; ///< exit status; 128 + number when a signal ended it
    std::string out;
    std::string err;
    size_t peakMemory = 0; ///< resident, in bytes, of it or of a process that it waited for, whichever had more
};

struct tProgramRun {
    std::vector<std::string> arguments; ///< the program's path first
    std::string input;                  ///< of its standard input, a pipe
    bool emptyEnvironment = false;
    std::vector<std::string> environment; ///< NAME=VALUE, added
    unsigned short columns = 0;           ///< of a terminal that its output goes to; 0 for a pipe
    std::string folder;                   ///< where it runs; empty for here
    int signal = 0;                       ///< sent to it when it has run for that long
    std::chrono::nanoseconds signalAfter = {};
    /// Called with the process and what it has printed so far, whenever there is more. False: close the reading end.
    std::function<bool(int process, const std::string& out)> onOutput;
};

/// Runs a program to its end.
tProgramResult RunProgram(const tProgramRun& run);

/// Runs the built host with these arguments, and this added to the environment.
tProgramResult RunVelmora(std::vector<std::string> arguments, const std::string& input = {},
                          const std::vector<std::string>& environment = {});

/// The records of an output with one in each line.
std::vector<nlohmann::ordered_json> ParseLines(const std::string& text);

/// The bytes of a layout of version 5 without groups.
/// @param description  Mac OS Roman
/// @param layers       how many, named "Layer 0" and so on
/// @param elements     how many are promised; none is there
std::string MakeLayout(const std::string& description, unsigned layers = 1, unsigned elements = 0);
