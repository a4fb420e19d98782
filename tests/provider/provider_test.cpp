#include "tests/provider/provider_test.h"

#include <algorithm>

#include "tests/support/csta_answers.h"

namespace velmora {
namespace {

bool callbackCalled = false;

void CALLBACK OnCompletion(DRV_REQUESTID /*request*/, LONG /*result*/) {
    callbackCalled = true;
}

}  // namespace

void StoreSettings(RegistryScope& registry, const LogReader& log, uint16_t port) {
    registry.Set("username", kUsername);
    registry.Set("password", kPassword);
    registry.Set("domain", kDomain);
    registry.Set("address", "127.0.0.1");
    registry.Set("port", std::to_string(port));
    registry.Set("encrypt", "0");
    registry.Set("autooriginate", "0");
    registry.Set("loglevel", "5");
    registry.Set("loglength", "1000000");
    registry.Set("logfile", log.Path());
    registry.Set("guid", "00000000-0000-4000-8000-000000000000");
}

ProviderTest::ProviderTest() : log(PathBesideProgram("provider_test.log")) {
    StoreSettings(registry, log, pbx.Port());
}

ProviderTest::~ProviderTest() {
    if (running) Stop();
    EXPECT_FALSE(callbackCalled);
}

void ProviderTest::Init(DWORD providerId, DWORD lineDeviceIdBase) {
    DWORD options = 0;
    running = true;
    EXPECT_EQ(provider.providerInit(kTspiVersion, providerId, lineDeviceIdBase, kPhoneDeviceIdBase, 1, 1, OnCompletion,
                                    &options),
              0);
}

void ProviderTest::Stop(uint32_t withinMs) {
    running = false;
    LONG result = -1;
    WorkerThread shutdown([&] { result = provider.providerShutdown(kTspiVersion, kProviderId); });
    EXPECT_TRUE(shutdown.EndsWithin(withinMs)) << "the shutdown takes too long";
    EXPECT_TRUE(shutdown.EndsWithin(kPatienceMs));
    EXPECT_EQ(result, 0);
}

void ProviderTest::LogIn() {
    const size_t connections = pbx.Connections();
    Init();
    EXPECT_TRUE(pbx.WaitForConnections(connections + 1));
    WaitUntilDispatched();
}

void ProviderTest::SendAndWait(uint32_t invokeId, const std::string& xml) {
    EXPECT_TRUE(pbx.SendFrame(invokeId, xml));
    WaitUntilDispatched();
}

void ProviderTest::WaitUntilDispatched() {
    const size_t before = MonitorStarts();
    EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S1", "1800")));
    size_t count = pbx.Frames().size();
    while (MonitorStarts() == before && pbx.WaitForFrames(count + 1)) count = pbx.Frames().size();
    EXPECT_GT(MonitorStarts(), before) << "the provider does not react any more";
}

size_t ProviderTest::MonitorStarts() {
    const std::vector<ReceivedFrame> frames = pbx.Frames();
    const auto isMonitorStart = [](const ReceivedFrame& frame) {
        return frame.xml.find("<MonitorStart ") != std::string::npos;
    };
    return static_cast<size_t>(std::count_if(frames.begin(), frames.end(), isMonitorStart));
}

HDRVCALL ProviderTest::MakeCall(const std::wstring& number, DWORD countryCode) const {
    HDRVCALL call = nullptr;
    EXPECT_EQ(provider.lineMakeCall(kRequestId, nullptr, nullptr, &call, number.c_str(), countryCode, nullptr),
              static_cast<LONG>(kRequestId));
    EXPECT_NE(call, nullptr);
    return call;
}

uint32_t ProviderTest::WaitForMakeCall(const std::string& number) {
    for (size_t index = 0; pbx.WaitForFrames(index + 1); ++index) {
        const ReceivedFrame frame = pbx.WaitForFrame(index);
        if (frame.xml.find("<MakeCall ") == std::string::npos) continue;
        if (ElementText(frame.xml, "calledDirectoryNumber") == number) return frame.invokeId;
    }
    ADD_FAILURE() << "no MakeCall to " << number;
    return 0;
}

std::string ProviderTest::CloseCall(HDRVCALL call) {
    const size_t before = pbx.Frames().size();
    EXPECT_EQ(provider.lineCloseCall(call), 0);
    for (size_t index = before; pbx.WaitForFrames(index + 1); ++index) {
        const ReceivedFrame frame = pbx.WaitForFrame(index);
        if (frame.xml.find("<ClearConnection ") != std::string::npos) return frame.xml;
    }
    ADD_FAILURE() << "no ClearConnection";
    return {};
}

void ProviderTest::FillTheLink() {
    registry.Set("username", std::string(15000, 'u'));
    registry.Set("domain", std::string(15000, 'd'));
    LogIn();
    pbx.StopReading();
    const size_t before = log.Records().size();
    constexpr size_t kLogins = 400;
    std::string logins;
    for (size_t count = 0; count < kLogins; ++count) logins += FrameBytes(1, SessionAccepted("S1", "1800"));
    EXPECT_TRUE(pbx.SendStream(logins));
    // Stuck when no record has come for a while, long before all of them are answered.
    size_t records = 0;
    double sinceMs = PreciseMs();
    EXPECT_TRUE(log.WaitUntil([&](const std::vector<LogRecord>& found) {
        if (found.size() != records) sinceMs = PreciseMs();
        records = found.size();
        return PreciseMs() - sinceMs > 300;
    }));
    EXPECT_LT(records, before + 2 * kLogins) << "the provider has sent everything";
}

void ProviderTest::RunSessionAt(PbxPeer& next) {
    registry.Set("username", kUsername);
    registry.Set("domain", kDomain);
    registry.Set("port", std::to_string(next.Port()));
    Init();
    EXPECT_EQ(ElementText(next.WaitForFrame(0).xml, "tns:userName"), kUsername);
    EXPECT_TRUE(next.SendFrame(1, SessionAccepted("S1", "1800")));
    EXPECT_EQ(ElementText(next.WaitForFrame(1).xml, "deviceObject"), kDevice);
    Stop();
}

LogTexts ProviderTest::Recorded(const std::function<void()>& action) {
    const size_t before = log.Records().size();
    action();
    return log.Texts(before);
}

std::wstring Wide(const std::string& text) {
    return {text.begin(), text.end()};
}

}  // namespace velmora
