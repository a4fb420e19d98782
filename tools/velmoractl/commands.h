#pragma once

#include <span>
#include <string_view>

#include "tools/velmoractl/command_line.h"
#include "tools/velmoractl/exit_codes.h"

namespace velmora::ctl {

// One command of velmoractl. Each lives in a file of its own; main.cpp lists them.
struct Command {
    std::string_view name;
    std::string_view summary;  // one line for the list of commands
    std::string_view help;     // the whole help text
    std::span<const OptionRule> options;
    ExitCode (*run)(const Arguments& arguments);
    bool needsSettings = true;  // it does not run where the settings may not be read
};

extern const Command kDialCommand;
extern const Command kCheckCommand;
extern const Command kCapsCommand;
extern const Command kConfigCommand;
extern const Command kConfigureCommand;
extern const Command kInstallCommand;
extern const Command kRemoveCommand;
extern const Command kStatusCommand;
extern const Command kLogCommand;

// Says what is wrong with the command line, and where help is to be found.
ExitCode UsageError(std::string_view command, std::string_view problem);

}  // namespace velmora::ctl
