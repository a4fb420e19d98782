#include <algorithm>
#include <atomic>

#include "tests/provider/encrypted_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/hex.h"
#include "tests/support/import_hook.h"
#include "tests/support/tls_identity.h"

namespace velmora {
namespace {

const WireRecord kClosure = {RecordType::kAlert, kTls10, std::string("\x01\x00", 2)};

// Alerts of either level and their log records.
struct AlertCase {
    std::string alert;
    std::string record;
};
const AlertCase kAlertCases[] = {
    {std::string("\x02\x28", 2), "CSTA: Alert(2, 40)"},
    {std::string("\x02\x00", 2), "CSTA: Alert(2, 0)"},
    {std::string("\x01\x5A", 2), "CSTA: Alert(1, 90)"},
    {std::string("\xFF\xFE", 2), "CSTA: Alert(255, 254)"},
};

// ServerHello, Certificate and ServerHelloDone: three records of handshake.
bool IsFirstFlight(const std::vector<WireRecord>& records) {
    return records.size() == 3 && std::all_of(records.begin(), records.end(), [](const WireRecord& record) {
               return record.type == RecordType::kHandshake;
           });
}

class EncryptedLinkTest : public EncryptedTest {
protected:
    std::vector<RecordType> ReceivedTypes() {
        std::vector<RecordType> types;
        for (const WireRecord& record : ReceivedRecords()) types.push_back(record.type);
        return types;
    }

    // The alerts among what the provider has sent.
    std::vector<std::string> ReceivedAlerts() {
        std::vector<std::string> alerts;
        for (const WireRecord& record : ReceivedRecords()) {
            if (record.type == RecordType::kAlert) alerts.push_back(record.fragment);
        }
        return alerts;
    }
};

TEST_F(EncryptedLinkTest, CarriesASessionFromTheLoginToTheEndOfACall) {
    LogIn();
    EXPECT_NE(pbx.WaitForFrame(0).xml.find("<StartApplicationSession "), std::string::npos);
    EXPECT_EQ(pbx.WaitForFrame(0).invokeId, 1U);
    EXPECT_EQ(ElementText(pbx.WaitForFrame(0).xml, "tns:password"), kPassword);
    EXPECT_EQ(ElementText(pbx.WaitForFrame(1).xml, "deviceObject"), kDevice);
    ExpectWorkingSession();
    EXPECT_EQ(log.TextsOfLevel(1), LogTexts());
    const std::string bytes = pbx.Bytes();
    for (const char* clear : {"<?xml", "StartApplicationSession", kPassword, "MakeCall", "4711"}) {
        EXPECT_EQ(bytes.find(clear), std::string::npos) << clear << " goes out in the clear";
    }
}

TEST_F(EncryptedLinkTest, RenewsTheSession) {
    Init();
    pbx.WaitForFrame(0);
    EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S-1", "1")));
    EXPECT_EQ(ElementText(pbx.WaitForFrame(2).xml, "sessionID"), "S-1");
    EXPECT_TRUE(pbx.SendFrame(3, SessionTimerReset("1")));
    EXPECT_NE(pbx.WaitForFrame(3).xml.find("<ResetApplicationSessionTimer "), std::string::npos);
}

TEST_F(EncryptedLinkTest, TakesCertificatesOfAnySizeForAnyName) {
    for (const char* identity : {"rsa1024", "rsa2048", "rsa4096"}) {
        SCOPED_TRACE(identity);
        UseTlsIdentity(identity);
        LogIn();
        ExpectWorkingSession();
        Stop();
        pbx.Forget();
    }
    const LogTexts texts = log.Texts();
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "CSTA: Don't verify certificates"), 3);
}

// What the log held when the provider sent for the first time, and what it sent.
LogReader* logAtSend = nullptr;
LogTexts textsAtFirstSend;
std::atomic<int> sends = 0;
std::string firstSent;

int WSAAPI NotingSend(SOCKET socket, const char* bytes, int count, int flags) {
    if (++sends == 1) {
        textsAtFirstSend = logAtSend->Texts();
        firstSent.assign(bytes, static_cast<size_t>(count));
    }
    return send(socket, bytes, count, flags);
}

TEST_F(EncryptedLinkTest, GreetsThePbxWithTheLoginAndNotBefore) {
    tls.sendRecords = [](const std::string& /*records*/) { return true; };
    logAtSend = &log;
    HookImport(provider.module, "ws2_32.dll", "send", NotingSend);
    Init();
    EXPECT_EQ(sends, 1);
    ASSERT_EQ(textsAtFirstSend.size(), 2U);
    EXPECT_TRUE(textsAtFirstSend[0].starts_with("CSTA: SendClientHello(0301")) << textsAtFirstSend[0];
    EXPECT_TRUE(textsAtFirstSend[1].starts_with("CSTA Tx: <?xml version=\"1.0\"?>\r\n<StartApplicationSession "));
    const std::vector<WireRecord> records = WholeRecords(firstSent);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(RecordBytes(records[0]), firstSent);
    EXPECT_EQ(ReadClientHello(firstSent).suites, fromHex("002f 0035 0004 0005"));
}

// RFC 6066, section 3: the lengths of the block, of the extension, of its list and of the name.
TEST_F(EncryptedLinkTest, AsksForTheServerOfItsDomain) {
    LogIn();
    const ClientHello hello = ReadClientHello(pbx.Bytes());
    EXPECT_EQ(hello.sessionId, "");
    EXPECT_EQ(toHex(hello.extensions), toHex(fromHex("0014 0000 0010 000e 00 000b") + kDomain));
}

TEST_F(EncryptedLinkTest, AsksForNoServerWithoutADomain) {
    registry.Set("domain", "");
    LogIn();
    const ClientHello hello = ReadClientHello(pbx.Bytes());
    EXPECT_EQ(hello.suites, fromHex("002f 0035 0004 0005"));
    EXPECT_EQ(hello.extensions, "");
}

TEST_F(EncryptedLinkTest, HoldsTheLoginBackUntilTheHandshakeIsComplete) {
    // Of the PBX's flights the first goes out at once, the second when the test says so.
    std::atomic<int> flights = 0;
    std::atomic<bool> withheld = false;
    std::string secondFlight;
    tls.sendRecords = [&](const std::string& records) {
        if (++flights != 2) return pbx.Send(records);
        secondFlight = records;
        withheld = true;
        return true;
    };
    Init();
    const double deadline = PreciseMs() + kPatienceMs;
    while (!withheld && PreciseMs() < deadline) Sleep(1);
    ASSERT_TRUE(withheld);
    MakeCall(L"0815");
    // ClientHello, ClientKeyExchange, ChangeCipherSpec, Finished.
    const std::vector<RecordType> handshake = {RecordType::kHandshake, RecordType::kHandshake,
                                               RecordType::kChangeCipherSpec, RecordType::kHandshake};
    EXPECT_EQ(ReceivedTypes(), handshake);
    EXPECT_EQ(pbx.Frames().size(), 0U);

    EXPECT_TRUE(pbx.Send(secondFlight));
    EXPECT_NE(pbx.WaitForFrame(0).xml.find("<StartApplicationSession "), std::string::npos);
    EXPECT_NE(pbx.WaitForFrame(1).xml.find("<MakeCall "), std::string::npos);
    std::vector<RecordType> all = handshake;
    all.push_back(RecordType::kApplicationData);
    EXPECT_EQ(ReceivedTypes(), all) << "what was held back leaves together";
}

TEST_F(EncryptedLinkTest, TakesTheServersFlightInOneRecord) {
    std::atomic<int> flights = 0;
    tls.sendRecords = [&](const std::string& bytes) {
        const std::vector<WireRecord> records = WholeRecords(bytes);
        if (!IsFirstFlight(records)) return pbx.Send(bytes);
        ++flights;
        WireRecord joined = records[0];
        joined.fragment += records[1].fragment + records[2].fragment;
        return pbx.Send(RecordBytes(joined));
    };
    LogIn();
    ExpectWorkingSession();
    EXPECT_EQ(flights, 1);
}

TEST_F(EncryptedLinkTest, TakesTheServersFlightInARecordForEachByte) {
    std::atomic<int> flights = 0;
    tls.sendRecords = [&](const std::string& bytes) {
        const std::vector<WireRecord> records = WholeRecords(bytes);
        if (!IsFirstFlight(records)) return pbx.Send(bytes);
        ++flights;
        std::string split;
        for (const WireRecord& record : records) {
            for (const char byte : record.fragment) split += RecordBytes({record.type, kTls10, {byte}});
        }
        return pbx.Send(split);
    };
    LogIn();
    ExpectWorkingSession();
    EXPECT_EQ(flights, 1);
}

TEST_F(EncryptedLinkTest, TakesOneByteInEachSegment) {
    tls.sendRecords = [&](const std::string& records) {
        return std::all_of(records.begin(), records.end(), [&](char byte) { return pbx.Send({byte}); });
    };
    LogIn();
    ExpectWorkingSession();
}

TEST_F(EncryptedLinkTest, CarriesFramesOf64KilobytesBothWays) {
    constexpr size_t kFrameBytes = 65535;
    LogIn();
    const size_t shortFrameBytes = [&] {
        MakeCall(L"7");
        WaitForMakeCall("7");
        return pbx.Frames().back().bytes.size();
    }();
    // As many digits as fill the frame.
    const std::string number(kFrameBytes - shortFrameBytes + 1, '7');
    const HDRVCALL call = MakeCall(Wide(number));
    const uint32_t invokeId = WaitForMakeCall(number);
    EXPECT_EQ(pbx.Frames().back().bytes.size(), kFrameBytes);

    std::string answer = CallMade("C-1", "D-1");
    answer.resize(kFrameBytes - 8, ' ');
    SendAndWait(invokeId, answer);
    EXPECT_TRUE(log.WaitForText("CSTA Rx: " + answer));
    EXPECT_EQ(ElementText(CloseCall(call), "callID"), "C-1");
}

TEST_F(EncryptedLinkTest, LosesNoneOfManyEventsInManyRecords) {
    constexpr size_t kEvents = 3000;
    registry.Set("loglevel", "5");
    LogIn();
    LogTexts expected;
    std::string stream;
    for (size_t index = 0; index < kEvents; ++index) {
        const std::string event = CallDelivered(std::to_string(index));
        stream += FrameBytes(0, event);
        expected.push_back("CSTA Rx: " + event);
    }
    const size_t before = log.Records().size();
    EXPECT_TRUE(pbx.SendStream(stream));
    EXPECT_TRUE(
        log.WaitUntil([&](const std::vector<LogRecord>& records) { return records.size() >= before + kEvents; }));
    EXPECT_TRUE(log.Texts(before) == expected) << "lost, cut or out of order";
    ExpectWorkingSession();
}

// As the frames are encrypted one behind the other, a record out of its turn would not decrypt at the PBX.
TEST_F(EncryptedLinkTest, KeepsRecordsWholeWhileThreadsDialAndEventsPourIn) {
    constexpr size_t kThreads = 10;
    constexpr size_t kLogins = 400;
    registry.Set("loglevel", "5");
    registry.Set("username", std::string(5000, 'u'));  // a request takes several records
    registry.Set("domain", std::string(15000, 'd'));
    LogIn();
    std::string logins;
    for (size_t count = 0; count < kLogins; ++count) {
        logins += FrameBytes(1, SessionAccepted("S1", "1800")) + FrameBytes(0, CallDelivered("C"));
    }
    WorkerThread answers([&] { EXPECT_TRUE(pbx.SendStream(logins)); });
    EXPECT_TRUE(pbx.WaitForFrames(10));
    RunAtOnce(kThreads, [&](size_t thread) {
        const HDRVCALL call = MakeCall(std::to_wstring(thread));
        Sleep(static_cast<DWORD>(thread));
        EXPECT_EQ(provider.lineCloseCall(call), 0);
    });
    EXPECT_TRUE(pbx.WaitForFrames(2 + kLogins + 2 * kThreads));
    EXPECT_FALSE(pbx.SawMalformedFrame());
    EXPECT_EQ(MonitorStarts(), 1 + kLogins);
    std::vector<uint32_t> invokeIds;
    for (const ReceivedFrame& frame : pbx.Frames()) invokeIds.push_back(frame.invokeId);
    std::sort(invokeIds.begin(), invokeIds.end());
    EXPECT_EQ(std::adjacent_find(invokeIds.begin(), invokeIds.end()), invokeIds.end());
    EXPECT_FALSE(AnyStartsWith(log.Texts(), "CSTA: "));
}

TEST_F(EncryptedLinkTest, AnswersAClosureOfThePbxOnceAndGoesOn) {
    LogIn();
    SendProtected(kClosure);
    EXPECT_TRUE(log.WaitForText("CSTA: Received closure alert"));
    SendProtected(kClosure);
    EXPECT_TRUE(log.WaitForText("CSTA: Received closure alert", 2));
    // Behind both closures on the wire.
    MakeCall(L"123");
    WaitForMakeCall("123");
    EXPECT_EQ(ReceivedAlerts(), (std::vector<std::string>{kClosure.fragment}));
    EXPECT_EQ(ReceivedRecords().back().type, RecordType::kApplicationData);
    SendProtected({RecordType::kApplicationData, kTls10, FrameBytes(7, "<late/>")});
    EXPECT_TRUE(log.WaitForText("CSTA Rx: <late/>"));
}

TEST_F(EncryptedLinkTest, RecordsAlertsOfThePbxAndGoesOn) {
    LogIn();
    for (const AlertCase& alertCase : kAlertCases) {
        SCOPED_TRACE(alertCase.record);
        SendProtected({RecordType::kAlert, kTls10, alertCase.alert});
        EXPECT_TRUE(log.WaitForText(alertCase.record));
    }
    for (const LogRecord& record : log.Records()) {
        EXPECT_EQ(record.text.starts_with("CSTA: Alert("), record.level == 5 && record.text[4] == ':') << record.text;
    }
    SendProtected({RecordType::kApplicationData, kTls10, FrameBytes(7, "<late/>")});
    EXPECT_TRUE(log.WaitForText("CSTA Rx: <late/>"));
    MakeCall(L"123");
    WaitForMakeCall("123");
    EXPECT_EQ(ReceivedAlerts(), std::vector<std::string>());
}

TEST_F(EncryptedLinkTest, RecordsAndPassesOverRecordsOfUnknownType) {
    LogIn();
    SendProtected({static_cast<RecordType>(99), kTls10, "what is this"});
    EXPECT_TRUE(log.WaitForText("CSTA: Received unknown type 99 on record layer"));
    SendProtected({RecordType::kApplicationData, kTls10, FrameBytes(7, "<late/>")});
    EXPECT_TRUE(log.WaitForText("CSTA Rx: <late/>"));
}

TEST_F(EncryptedLinkTest, EndsWithoutAClosure) {
    LogIn();
    const std::string before = pbx.Bytes();
    Stop();
    EXPECT_TRUE(pbx.WaitForEnd());
    EXPECT_TRUE(pbx.Bytes() == before) << "a record is sent at the end";
}

TEST_F(EncryptedLinkTest, TracesTheHandshakeAtLevel9BehindItsPrefix) {
    LogIn();
    LogTexts names;
    for (const LogRecord& record : log.Records()) {
        if (!record.text.starts_with("CSTA: ")) continue;
        EXPECT_EQ(record.level, 9) << record.text;
        names.push_back(record.text.substr(6, record.text.find('(') - 6));
    }
    EXPECT_EQ(names, (LogTexts{"SendClientHello",
                               "ProcessServerHello",
                               "ProcessCertificate",
                               "Received 1 certificates",
                               "Don't verify certificates",
                               "Rsa N",
                               "Rsa E",
                               "ProcessServerHelloDone",
                               "RSA N",
                               "RSA E",
                               "Pre Master Secret",
                               "Block Padded",
                               "Encrypted Pre Master",
                               "Client Random",
                               "Server Random",
                               "Master Secret",
                               "SendClientKeyExchange",
                               "SendChangeCipherSpec",
                               "PerformChangeCipherSpec",
                               "Key Block",
                               "Client Write MAC Secret",
                               "Server Write MAC Secret",
                               "Client Write Key",
                               "Server Write Key",
                               "SendFinished",
                               "ProcessChangeCipherSpec",
                               "ProcessFinished"}));
}

TEST_F(EncryptedLinkTest, TracesNoHandshakeAtLevel8) {
    registry.Set("loglevel", "8");
    LogIn();
    ExpectWorkingSession();
    EXPECT_FALSE(AnyStartsWith(log.Texts(), "CSTA: "));
    EXPECT_TRUE(AnyStartsWith(log.Texts(), "CSTA Tx: "));
}

// Whether the link is up makes no difference to what the provider does: nothing leaves it.
TEST_F(EncryptedLinkTest, ThatCannotBeMadeIsRecordedAndLeft) {
    pbx.StopListening();
    Init();
    EXPECT_EQ(log.TextsOfLevel(1), (LogTexts{"Connection establishment to \"127.0.0.1\" failed"}));
    const LogTexts texts = log.Texts();
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_TRUE(texts[1].starts_with("CSTA: SendClientHello(")) << texts[1];
    EXPECT_TRUE(texts[2].starts_with("CSTA Tx: ")) << texts[2];
    const HDRVCALL call = MakeCall(L"123");
    EXPECT_EQ(provider.lineCloseCall(call), 0);
    Stop();
}

}  // namespace
}  // namespace velmora
