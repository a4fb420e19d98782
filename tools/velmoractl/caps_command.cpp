#include <windows.h>

#include "tools/velmoractl/capability_report.h"
#include "tools/velmoractl/commands.h"
#include "tools/velmoractl/console.h"
#include "tools/velmoractl/plain_text.h"
#include "tools/velmoractl/provider_session.h"
#include "tools/velmoractl/stored_settings.h"

namespace velmora::ctl {
namespace {

constexpr OptionRule kOptions[] = {{"--tsp", true}, {"--help", false}};

constexpr std::string_view kHelp =
    R"(velmoractl caps [--tsp PATH]

Prints what the provider tells TAPI about its line and the line's address, in TAPI's
names; fields that are not listed are zero. The provider is loaded into this process
and started for that, so it logs in to the PBX; a PBX that cannot be reached does no
harm. The line's permanent ID is shown for a provider whose permanent ID is 1.

  --tsp PATH  the provider (velmora.tsp beside velmoractl.exe, else in System32)

Exit code: 0 done, 2 wrong command line, 3 the provider cannot be loaded, 4 a setting
is wrong, 10 no right to read the settings, 1 anything else.
)";

constexpr size_t kFieldWidth = 24;
constexpr size_t kValueWidth = 12;

void PrintLine(const CapabilityLine& line) {
    ByteString text = "  " + Padded(line.field, kFieldWidth);
    if (line.names.empty()) {
        Print(text + Printable(line.value) + "\n");
        return;
    }
    text += Padded(line.value, kValueWidth);
    for (const ByteString& name : line.names) {
        Print(text + name + "\n");
        text.assign(2 + kFieldWidth + kValueWidth, ' ');
    }
}

void PrintStructure(std::string_view name, const std::vector<CapabilityLine>& lines) {
    Print(ByteString(name) + "\n");
    for (const CapabilityLine& line : lines) PrintLine(line);
}

bool ReadCapabilities(ProviderSession& session, const ByteString& path, ByteString& devCaps, ByteString& addressCaps) {
    return session.Load(path) && session.NegotiateVersion(INITIALIZE_NEGOTIATION) && session.CountDevices() &&
           session.Initialise() && session.NegotiateVersion(0) && session.ReadDevCaps(devCaps) &&
           session.ReadAddressCaps(addressCaps);
}

ExitCode Run(const Arguments& arguments) {
    if (!arguments.words.empty()) return UsageError("caps", "caps takes no \"" + Printable(arguments.words[0]) + "\".");
    const ByteString path = arguments.Has("--tsp") ? arguments.options.at("--tsp") : DefaultProviderPath();

    Transcript transcript(false);
    ProviderSession session(transcript, false);
    ByteString devCaps;
    ByteString addressCaps;
    const bool done = ReadCapabilities(session, path, devCaps, addressCaps);
    if (!session.Shutdown() || !done) {
        transcript.End(session.Failure());
        return session.Failure().code;
    }

    PrintStructure("LINEDEVCAPS", DescribeDevCaps(devCaps));
    Print("\n");
    PrintStructure("LINEADDRESSCAPS", DescribeAddressCaps(addressCaps));
    if (EffectiveText("guid").empty()) {
        PrintErrorLine("\nNo guid is stored: the provider makes one up at each start, and PermanentLineGuid with it.");
    }
    return ExitCode::kDone;
}

}  // namespace

const Command kCapsCommand = {"caps", "prints the capabilities of line and address", kHelp, kOptions, Run};

}  // namespace velmora::ctl
