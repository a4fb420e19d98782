#include "benchmarks/job/job_run.h"

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "benchmarks/job/host_process.h"
#include "benchmarks/job/messages.h"
#include "benchmarks/job/precise_clock.h"

namespace velmora {
namespace {

constexpr int kCalls = 10;  // all that the provider places in the life of a process
constexpr int kFloods = 3;
constexpr int kEvents = 1000;

double Us(int64_t units) {
    return static_cast<double>(units) * kCounterUnitUs;
}

double Us(const TimedCall& call) {
    return Us(call.end - call.start);
}

std::string WindowsPath(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return "Z:" + path;
}

void StoreSettings(HostProcess& host, const JobSetup& setup, uint16_t port) {
    const std::pair<const char*, std::string> values[] = {
        {"username", "40"},
        {"password", "secret"},
        {"domain", kDomain},
        {"address", "127.0.0.1"},
        {"port", std::to_string(port)},
        {"encrypt", setup.encrypted ? "1" : "0"},
        {"autooriginate", "1"},
        {"loglevel", std::to_string(setup.logLevel)},
        {"loglength", "1000000000"},
        {"logfile", WindowsPath(setup.logFile)},
        {"guid", "3e1c1a86-5a1c-4c9e-8f43-2f6d5b9f7a10"},
    };
    for (const auto& [name, value] : values) host.Number(std::string("set ") + name + " " + value);
}

void CompareClocks(HostProcess& host) {
    const int64_t before = CounterNow();
    const int64_t there = host.Number("now");
    if (there < before || there > CounterNow()) throw std::runtime_error("Wine's performance counter is another clock");
}

// Long enough for the scheduler to forget who has used the processor most.
void Rest(const HostProcess& host) {
    constexpr useconds_t kRestUs = 20000;
    host.WaitUntilIdle();
    usleep(kRestUs);
}

// From a send of the PBX until the answer to it, which is the provider's next request.
double TimeAnswer(Pbx& pbx, const HostProcess& host, const ByteString& onWire) {
    host.WaitUntilIdle();
    const size_t before = pbx.Frames().size();
    const int64_t sent = CounterNow();
    pbx.SendWire(onWire);
    pbx.WaitForFrames(before + 1);
    return Us(pbx.Frames()[before].arrival - sent);
}

double TimeAnswer(Pbx& pbx, const HostProcess& host) {
    return TimeAnswer(pbx, host, pbx.OnWire(SessionAcceptedFrame()));
}

// A call of the host's that makes the provider send a request: both times.
void TimeRequest(Pbx& pbx, HostProcess& host, const std::string& command, std::vector<double>* call,
                 std::vector<double>& atPbx) {
    host.WaitUntilIdle();
    const size_t before = pbx.Frames().size();
    const TimedCall timed = host.Time(command);
    pbx.WaitForFrames(before + 1);
    if (call != nullptr) call->push_back(Us(timed));
    atPbx.push_back(Us(pbx.Frames()[before].arrival - timed.start));
}

void PlaceCalls(Pbx& pbx, HostProcess& host, JobFigures& figures) {
    for (int call = 0; call < kCalls; ++call) {
        TimeRequest(pbx, host, "call 0049301234567", &figures.makeCall, figures.makeCallAtPbx);
        pbx.SendWire(pbx.OnWire(CallMadeFrame(pbx.Frames().back().frame.invokeId)));
        TimeAnswer(pbx, host);  // and everything before is worked off
        figures.answer.push_back(TimeAnswer(pbx, host));
        TimeRequest(pbx, host, "close", nullptr, figures.closeCallAtPbx);
    }
}

void Flood(Pbx& pbx, const HostProcess& host, JobFigures& figures) {
    for (int flood = 0; flood < kFloods; ++flood) {
        ByteString onWire;
        for (int event = 0; event < kEvents; ++event) onWire += pbx.OnWire(EventFrame());
        onWire += pbx.OnWire(SessionAcceptedFrame());
        figures.event.push_back(TimeAnswer(pbx, host, onWire) / kEvents);
    }
}

}  // namespace

JobFigures RunJob(Pbx& pbx, const JobSetup& setup) {
    JobFigures figures;
    pbx.Expect(setup.encrypted);
    pbx.onFrame = [&](size_t number) {
        if (number == 0) pbx.SendWire(pbx.OnWire(SessionAcceptedFrame()));
    };
    HostProcess host(pbx, setup.wine, setup.program);
    StoreSettings(host, setup, pbx.Port());
    CompareClocks(host);

    const int64_t handlesBefore = host.Number("handles");
    const size_t kilobytesBefore = host.PrivateKb();
    figures.load = Us(host.Time("load " + WindowsPath(setup.dll)));
    if (!setup.script.empty()) host.Number("script " + WindowsPath(setup.script));

    Rest(host);
    const TimedCall init = host.Time("init");
    pbx.WaitForFrames(2);
    figures.init = Us(init);
    figures.login = Us(pbx.Frames()[0].arrival - init.start);
    figures.sessionUp = Us(pbx.Frames()[1].arrival - init.start);
    host.WaitUntilIdle();
    figures.handles = static_cast<double>(host.Number("handles") - handlesBefore);
    figures.privateKb = static_cast<double>(host.PrivateKb()) - static_cast<double>(kilobytesBefore);

    PlaceCalls(pbx, host, figures);
    Rest(host);
    Flood(pbx, host, figures);
    Rest(host);
    figures.shutdown = Us(host.Time("shutdown"));
    for (const ArrivedFrame& arrived : pbx.Frames()) figures.requests.push_back(arrived.frame);
    return figures;
}

void ForgetSettings(Pbx& pbx, const JobSetup& setup) {
    HostProcess(pbx, setup.wine, setup.program).Number("forget");
}

}  // namespace velmora
