#include <vector>

#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/interrupt.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/settings_access.h"

namespace velmora::ctl {
namespace {

const Command* const kCommands[] = {&kDialCommand,   &kCheckCommand,     &kCapsCommand,
                                    &kConfigCommand, &kConfigureCommand, &kInstallCommand,
                                    &kRemoveCommand, &kStatusCommand,    &kLogCommand};

constexpr size_t kNameWidth = 10;

void PrintHelp() {
    Print(
        "velmoractl - works with the Velmora telephony service provider: places test calls,\n"
        "finds faults, shows what the provider offers, keeps its settings.\n"
        "\n"
        "Usage: velmoractl COMMAND ...\n"
        "\n");
    for (const Command* command : kCommands) {
        Print("  " + Padded(command->name, kNameWidth) + ByteString(command->summary) + "\n");
    }
    Print(
        "\n"
        "velmoractl COMMAND --help tells more; velmoractl --version prints the version.\n");
}

const Command* FindCommand(std::string_view name) {
    for (const Command* command : kCommands) {
        if (command->name == name) return command;
    }
    return nullptr;
}

ExitCode RunCommand(const Command& command, std::span<const ByteString> words) {
    const Arguments arguments = ParseArguments(words, command.options);
    if (!arguments.error.empty()) return UsageError(command.name, arguments.error);
    if (arguments.Has("--help")) {
        Print(command.help);
        return ExitCode::kDone;
    }
    if (command.needsSettings && !MayReadSettings()) return RefuseSettings(arguments.Has("--json"));
    CatchInterrupts();
    return command.run(arguments);
}

ExitCode Run(std::span<const ByteString> words) {
    if (words.empty()) {
        PrintHelp();
        return ExitCode::kUsage;
    }
    const ByteString& first = words.front();
    if (first == "--help" || first == "-h" || first == "/?" || first == "help") {
        PrintHelp();
        return ExitCode::kDone;
    }
    if (first == "--version") {
        Print("velmoractl " VELMORA_VERSION "\n");
        return ExitCode::kDone;
    }
    const Command* command = FindCommand(first);
    if (command == nullptr) return UsageError("", "There is no command \"" + Printable(first) + "\".");
    return RunCommand(*command, words.subspan(1));
}

}  // namespace

ExitCode UsageError(std::string_view command, std::string_view problem) {
    PrintErrorLine("velmoractl: " + ByteString(problem));
    const ByteString help = command.empty() ? "velmoractl --help" : "velmoractl " + ByteString(command) + " --help";
    PrintErrorLine("Try: " + help);
    return ExitCode::kUsage;
}

}  // namespace velmora::ctl

int main(int argumentCount, char** arguments) {
    const std::vector<velmora::ByteString> words(arguments + 1, arguments + argumentCount);
    return static_cast<int>(velmora::ctl::Run(words));
}
