#include "tests/tools/velmoractl/velmoractl_test.h"

#include <algorithm>

namespace velmora::ctl {

bool Ended::Printed(const ByteString& text) const {
    return std::ranges::any_of(lines, [&](const ByteString& line) { return line.find(text) != ByteString::npos; });
}

Ended ToEnd(ChildProcess& program) {
    Ended ended;
    while (const std::optional<ByteString> line = program.ReadLine()) ended.lines.push_back(*line);
    ended.exitCode = program.ExitCode();
    return ended;
}

Ended RunCtl(const ByteString& arguments, const ByteString& input) {
    ChildProcess program("velmoractl.exe", arguments, input);
    return ToEnd(program);
}

RunningPbx::RunningPbx(const ByteString& arguments) : program("pbxsim.exe", "--port 0 --once " + arguments) {
    const ByteString start = "pbxsim: listening on 127.0.0.1:";
    const ByteString announcement = program.ReadLineWith(start);
    if (announcement.size() > start.size()) port = announcement.substr(start.size());
}

void VelmoractlTest::StoreSettings(const ByteString& port) {
    registry.Set("username", "40");
    registry.Set("password", kUserPassword);
    registry.Set("domain", "example.com");
    registry.Set("address", "127.0.0.1");
    registry.Set("port", port);
    registry.Set("encrypt", encrypt);
    registry.Set("guid", "00000000-0000-4000-8000-000000000000");
}

Ended VelmoractlTest::RunOver(const ByteString& pbxArguments, const ByteString& arguments) {
    RunningPbx pbx("--user 40 --domain example.com --password " + ByteString(kUserPassword) + " " + pbxArguments);
    StoreSettings(pbx.port);
    Ended ended = RunCtl(arguments);
    pbxLines = ToEnd(pbx.program).lines;
    return ended;
}

}  // namespace velmora::ctl
