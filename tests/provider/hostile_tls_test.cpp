#include <algorithm>
#include <atomic>
#include <functional>
#include <utility>

#include "tests/provider/encrypted_test.h"
#include "tests/support/csta_answers.h"
#include "tests/support/process_use.h"
#include "tests/support/seeded_bytes.h"

namespace velmora {
namespace {

constexpr uint32_t kAtOnceMs = 500;
constexpr char kBadMac[] = "CSTA: Bad Record Mac";
const std::string kBadRecordMacAlert = {2, 20};

// Somebody on the way who changes what the PBX sends behind the handshake.
class TamperedLinkTest : public EncryptedTest {
protected:
    // Logs in, and from then on what the PBX sends passes through here.
    void LogInAndTamper(std::function<std::string(std::string)> change) {
        tls.sendRecords = nullptr;
        LogIn();
        tls.sendRecords = [this, change = std::move(change)](const std::string& records) {
            return pbx.Send(change(records));
        };
    }

    // Has the PBX send a frame that must not be dispatched, whole though it may be once it is decrypted.
    void ExpectBrokenBy(const std::function<std::string(std::string)>& change) {
        pbx.Forget();
        LogInAndTamper(change);
        const size_t before = log.Records().size();
        EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S2", "1800")));
        EXPECT_TRUE(tls.WaitForAlert());
        const std::vector<LogRecord> records = log.Records();
        ASSERT_GT(records.size(), before);
        EXPECT_EQ(records[before].text, kBadMac);
        EXPECT_EQ(records[before].level, 3);
        EXPECT_EQ(ReceivedRecords().back().type, RecordType::kAlert);
        EXPECT_EQ(ReceivedRecords().back().fragment, kBadRecordMacAlert);
        EXPECT_EQ(MonitorStarts(), 1U);
        Stop();
        EXPECT_TRUE(pbx.WaitForEnd());
        EXPECT_FALSE(AnyStartsWith(log.Texts(before), "CSTA Rx: "));
    }
};

std::string WithByteFlipped(std::string bytes, size_t position) {
    bytes[position] = static_cast<char>(bytes[position] ^ 0x20);
    return bytes;
}

TEST_F(TamperedLinkTest, BreaksWithTheAlertForABadMacAtAChangedByte) {
    ExpectBrokenBy([](std::string records) { return WithByteFlipped(std::move(records), kRecordHeaderBytes); });
}

TEST_F(TamperedLinkTest, BreaksAtAChangedRecordType) {
    ExpectBrokenBy([](std::string records) {
        records[0] = static_cast<char>(RecordType::kHandshake);
        return records;
    });
}

TEST_F(TamperedLinkTest, BreaksAtARecordWithoutItsEnd) {
    ExpectBrokenBy([](const std::string& records) {
        WireRecord record = WholeRecords(records).front();
        record.fragment.resize(record.fragment.size() - 16);
        return RecordBytes(record);
    });
}

TEST_F(TamperedLinkTest, BreaksAtARecordInTheClear) {
    ExpectBrokenBy([](const std::string& /*records*/) {
        return RecordBytes({RecordType::kApplicationData, kTls10,
                            FrameBytes(1, SessionAccepted("S2", "1800")) + std::string(32, ' ')});
    });
}

TEST_F(TamperedLinkTest, BreaksAtAnEmptyRecord) {
    ExpectBrokenBy([](const std::string& /*records*/) {
        return RecordBytes({RecordType::kApplicationData, kTls10, ""});
    });
}

TEST_F(TamperedLinkTest, BreaksAtARecordThatComesAgain) {
    LogIn();
    tls.sendRecords = [this](const std::string& records) { return pbx.Send(records + records); };
    EXPECT_TRUE(pbx.SendFrame(7, "<once/>"));
    EXPECT_TRUE(tls.WaitForAlert());
    Stop();
    const LogTexts texts = log.Texts();
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "CSTA Rx: <once/>"), 1);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), kBadMac), 1);
}

TEST_F(TamperedLinkTest, BreaksAtARecordThatIsMissing) {
    LogIn();
    tls.sendRecords = [](const std::string& /*records*/) { return true; };
    EXPECT_TRUE(pbx.SendFrame(7, "<lost/>"));
    tls.sendRecords = nullptr;
    EXPECT_TRUE(pbx.SendFrame(8, "<next/>"));
    EXPECT_TRUE(tls.WaitForAlert());
    Stop();
    EXPECT_FALSE(AnyStartsWith(log.Texts(), "CSTA Rx: <lost/>"));
    EXPECT_FALSE(AnyStartsWith(log.Texts(), "CSTA Rx: <next/>"));
    EXPECT_TRUE(log.WaitForText(kBadMac));
}

TEST_F(TamperedLinkTest, TakesInNothingMoreOnceItIsBroken) {
    bool tampers = true;
    LogInAndTamper([&](std::string records) {
        return tampers ? WithByteFlipped(std::move(records), kRecordHeaderBytes) : records;
    });
    EXPECT_TRUE(pbx.SendFrame(1, "<changed/>"));
    EXPECT_TRUE(tls.WaitForAlert());
    tampers = false;
    const size_t before = log.Records().size();
    for (int count = 0; count < 50; ++count) EXPECT_TRUE(pbx.SendFrame(1, SessionAccepted("S2", "1800")));
    // TAPI notices nothing, and a call still leaves the provider.
    const HDRVCALL call = MakeCall(L"123");
    WaitForMakeCall("123");
    EXPECT_EQ(provider.lineCloseCall(call), 0);
    Stop();
    const LogTexts texts = log.Texts(before);
    EXPECT_FALSE(AnyStartsWith(texts, "CSTA Rx: "));
    EXPECT_FALSE(AnyStartsWith(texts, kBadMac)) << "one alert is enough";
    EXPECT_EQ(MonitorStarts(), 1U);
}

TEST_F(TamperedLinkTest, DoesNotHoardWhatComesOnceItIsBroken) {
    constexpr size_t kPoured = 16 * 1024 * 1024;
    constexpr size_t kNoiseBytes = 4 * 1024 * 1024;
    LogInAndTamper([](std::string records) { return WithByteFlipped(std::move(records), kRecordHeaderBytes); });
    EXPECT_TRUE(pbx.SendFrame(1, "<changed/>"));
    EXPECT_TRUE(tls.WaitForAlert());
    const std::string pouring = RecordBytes({RecordType::kApplicationData, kTls10, std::string(65535, 'x')});
    const size_t before = CommittedBytes();
    for (size_t sent = 0; sent < kPoured; sent += pouring.size()) ASSERT_TRUE(pbx.Send(pouring));
    EXPECT_LE(CommittedBytes(), before + kNoiseBytes);
}

// A PBX that does not speak TLS, or not for long: bytes from the test as they are.
class HostileTlsTest : public ProviderTest {
protected:
    HostileTlsTest() {
        registry.Set("encrypt", "1");
        registry.Set("loglevel", "9");
    }

    // A session in which the PBX answers with these bytes and no others, and which nothing comes of. Not a call, of
    // which a process has ten.
    void ExpectHarmless(const std::string& bytes) {
        pbx.Forget();
        Init();
        EXPECT_TRUE(pbx.WaitForBytes(1));
        EXPECT_TRUE(pbx.Send(bytes));
        Stop();
        EXPECT_TRUE(pbx.WaitForEnd());
        ExpectNothingInTheClear();
    }

    void ExpectCallsWithoutEffect() {
        const HDRVCALL call = MakeCall(L"0815");
        EXPECT_EQ(provider.lineCloseCall(call), 0);
    }

    void ExpectNothingInTheClear() {
        const std::string bytes = pbx.Bytes();
        for (const char* clear : {"<?xml", "StartApplicationSession", "MakeCall", kPassword}) {
            EXPECT_EQ(bytes.find(clear), std::string::npos) << clear << " goes out in the clear";
        }
        EXPECT_FALSE(AnyStartsWith(log.Texts(), "CSTA Rx: "));
    }

    std::vector<WireRecord> Received() { return WholeRecords(pbx.Bytes()); }
};

TEST_F(HostileTlsTest, GarbageIsHarmless) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        ExpectHarmless(SeededBytes(seed).take(3000));
    }
}

TEST_F(HostileTlsTest, GarbageInHandshakeRecordsIsHarmless) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        std::string fragment = SeededBytes(seed).take(300);
        // Messages of every type that there is, and of some that there are not, with bodies of some bytes.
        for (size_t position = 0; position + 4 <= fragment.size(); position += 40) {
            fragment[position] = static_cast<char>((seed + position / 40) % 22);
            fragment.replace(position + 1, 3, std::string("\0\0\x24", 3));
        }
        ExpectHarmless(RecordBytes({RecordType::kHandshake, kTls10, fragment}));
    }
}

TEST_F(HostileTlsTest, PlainCstaIsHarmless) {
    ExpectHarmless(FrameBytes(1, SessionAccepted("S1", "1800")) + FrameBytes(2, SessionAccepted("S1", "1800")));
}

TEST_F(HostileTlsTest, GarbageLeavesCallsWorkingWithoutEffect) {
    Init();
    EXPECT_TRUE(pbx.WaitForBytes(1));
    EXPECT_TRUE(pbx.Send(SeededBytes(1).take(3000)));
    ExpectCallsWithoutEffect();
    Stop();
    ExpectNothingInTheClear();
}

// The alert for a version below TLS 1.0, 70, and nothing else.
TEST_F(HostileTlsTest, AServerOfSsl30IsRefused) {
    Init();
    EXPECT_TRUE(pbx.WaitForBytes(1));
    const std::string hello = std::string("\x03\x00", 2) + std::string(32, 'r') + std::string("\0\0\x2F\0", 4);
    EXPECT_TRUE(pbx.Send(RecordBytes(
        {RecordType::kHandshake, kTls10, std::string("\2\0\0", 3) + static_cast<char>(hello.size()) + hello})));
    const size_t helloBytes = RecordBytes(Received().front()).size();
    EXPECT_TRUE(pbx.WaitForBytes(helloBytes + 7));
    Stop();
    EXPECT_TRUE(pbx.WaitForEnd());
    const std::vector<WireRecord> records = Received();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1], (WireRecord{RecordType::kAlert, kTls10, "\x02\x46"}));
    ExpectNothingInTheClear();
}

TEST_F(HostileTlsTest, AClosureBeforeTheHandshakeIsAnswered) {
    Init();
    EXPECT_TRUE(pbx.WaitForBytes(1));
    const WireRecord closure = {RecordType::kAlert, kTls10, std::string("\x01\x00", 2)};
    EXPECT_TRUE(pbx.Send(RecordBytes(closure)));
    EXPECT_TRUE(log.WaitForText("CSTA: Received closure alert"));
    const size_t helloBytes = RecordBytes(Received().front()).size();
    EXPECT_TRUE(pbx.WaitForBytes(helloBytes + 7));
    EXPECT_EQ(Received().back(), closure);
    ExpectCallsWithoutEffect();
    Stop();
    ExpectNothingInTheClear();
}

TEST_F(HostileTlsTest, AFatalAlertInTheHandshakeIsRecorded) {
    Init();
    EXPECT_TRUE(pbx.WaitForBytes(1));
    EXPECT_TRUE(pbx.Send(RecordBytes({RecordType::kAlert, kTls10, "\x02\x28"})));
    EXPECT_TRUE(log.WaitForText("CSTA: Alert(2, 40)"));
    pbx.Close();
    ExpectCallsWithoutEffect();
    Stop();
    ExpectNothingInTheClear();
}

TEST_F(HostileTlsTest, ASilentPbxDelaysNothing) {
    const double startMs = PreciseMs();
    Init();
    ExpectCallsWithoutEffect();
    EXPECT_LT(PreciseMs() - startMs, kAtOnceMs);
    EXPECT_TRUE(pbx.WaitForConnections(1));
    Stop(kAtOnceMs);
    EXPECT_TRUE(pbx.WaitForEnd());
    EXPECT_EQ(Received().size(), 1U);
    ExpectNothingInTheClear();
}

// A PBX that goes away, in order or with a reset, when it has sent so many bytes of its first flight.
class CutOffHandshakeTest : public EncryptedTest {
protected:
    void ExpectHarmless(size_t sentBytes, bool reset) {
        SCOPED_TRACE(sentBytes);
        std::atomic<bool> sent = false;
        tls.sendRecords = [&](const std::string& records) {
            const bool done = pbx.Send(records.substr(0, sentBytes));
            sent = true;
            return done;
        };
        Init();
        const double deadline = PreciseMs() + kPatienceMs;
        while (!sent && PreciseMs() < deadline) Sleep(1);
        if (reset) {
            pbx.Reset();
        } else {
            pbx.Close();
            const HDRVCALL call = MakeCall(L"0815");
            EXPECT_EQ(provider.lineCloseCall(call), 0);
        }
        Stop();
        tls.sendRecords = nullptr;
        EXPECT_EQ(pbx.Frames().size(), 0U);
    }
};

TEST_F(CutOffHandshakeTest, IsHarmless) {
    // With a call for each size, of which a process has ten.
    for (const size_t sentBytes : std::initializer_list<size_t>{0, 5, 47, 60, 500}) {
        ExpectHarmless(sentBytes, false);
        ExpectHarmless(sentBytes, true);
    }
    LogIn();
    ExpectWorkingSession();
}

}  // namespace
}  // namespace velmora
