#include <gtest/gtest.h>

// Winsock's header comes before windows.h.
#include "tests/csta/answering_pbx.h"
// and what builds on windows.h behind it
#include "csta/connection.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "csta/requests.h"
#include "csta/session.h"
#include "tests/support/csta_answers.h"
#include "tests/support/hand_clock.h"
#include "tests/support/log_file_fake.h"
#include "tests/support/log_records.h"
#include "tests/support/memory_registry.h"
#include "tests/support/process_use.h"
#include "tests/support/seeded_bytes.h"
#include "tests/support/tls_identity.h"
#include "tests/support/worker_thread.h"

namespace velmora {
namespace {

// The link and the session with all their threads, against a PBX on the loopback. A data race that one of these tests
// brings about is the thread sanitizer's to report; each test is also one without it.

constexpr size_t kDiallingThreads = 4;
constexpr char kDevice[] = "40@pbx.example";

// The receive thread may first have to wake from the second that it sleeps after a failed read; the rest is for a busy
// machine and a sanitizer.
constexpr uint32_t kStopMs = 4000;

// A granted second is over after this.
constexpr uint64_t kRenewalMs = 900;

// Written as the provider writes its call table: under the connection's lock, and by nothing else.
std::map<uint32_t, std::string> placedCalls;               // the numbers, by their invoke IDs
std::vector<std::pair<uint32_t, std::string>> boundCalls;  // invoke ID and call ID, in order
void Bind(uint32_t invokeId, const ByteString& callId, const ByteString& /*deviceId*/) {
    boundCalls.emplace_back(invokeId, callId);
}

// As a TAPI thread places a call.
void Dial(const std::string& number) {
    const CriticalSectionGuard guard(connection.lock);
    placedCalls[MakeCall(kDevice, number, {})] = number;
}

size_t BoundCalls() {
    const CriticalSectionGuard guard(connection.lock);
    return boundCalls.size();
}

// Expects that what is started in its time ends in its time.
class NothingLeftBehind {
public:
    NothingLeftBehind() = default;
    ~NothingLeftBehind() {
        EXPECT_TRUE(WaitUntil([&] { return Threads() == threads; })) << "a thread is left";
        // The semaphore of the latest session stays until the next one's.
        EXPECT_LE(OpenHandles(), handles + 1);
    }
    NothingLeftBehind(const NothingLeftBehind&) = delete;
    NothingLeftBehind& operator=(const NothingLeftBehind&) = delete;

private:
    static size_t Threads() {
        return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
    }

    const size_t handles = OpenHandles();
    const size_t threads = Threads();
};

// Threads that place and end calls from their making until their end, each so many at most.
class Dialling {
public:
    explicit Dialling(size_t mostCalls = std::numeric_limits<size_t>::max()) {
        for (size_t thread = 0; thread < kDiallingThreads; ++thread) {
            threads.push_back(std::make_unique<WorkerThread>([this, thread, mostCalls] { Run(thread, mostCalls); }));
        }
    }
    ~Dialling() { ending = true; }
    Dialling(const Dialling&) = delete;
    Dialling& operator=(const Dialling&) = delete;

    // How many calls have been placed.
    size_t Calls() const { return calls; }

private:
    void Run(size_t thread, size_t mostCalls) {
        for (size_t call = 0; !ending && call < mostCalls; ++call) {
            Dial(std::to_string(thread) + "*" + std::to_string(call));
            ClearConnection(std::to_string(call), "D");
            ++calls;
        }
    }

    std::atomic<bool> ending = false;
    std::atomic<size_t> calls = 0;
    std::vector<std::unique_ptr<WorkerThread>> threads;
};

// Each test in the clear and encrypted.
class LinkThreadsTest : public testing::TestWithParam<bool> {
protected:
    LinkThreadsTest() {
        UseTlsIdentity("rsa1024");
        memoryRegistry.values = {
            {"username", StoredText("40")},
            {"password", StoredText("secret")},
            {"domain", StoredText("pbx.example")},
            {"address", StoredText("127.0.0.1")},
            {"encrypt", StoredText(GetParam() ? "1" : "0")},
            {"loglevel", StoredText("0")},
            {"loglength", StoredText("1000000000")},
            {"logfile", StoredText("trace.log")},
            {"guid", StoredText("00000000-0000-4000-8000-000000000000")},
        };
        placedCalls.clear();
        boundCalls.clear();
    }

    ~LinkThreadsTest() override {
        if (running) Stop();
    }

    void Start(const AnsweringPbx& pbx) {
        memoryRegistry.values["port"] = StoredText(std::to_string(pbx.peer.Port()));
        running = true;
        StartSession(Bind);
    }

    // Starts the session, and waits until it monitors the device.
    void LogIn(AnsweringPbx& pbx) {
        Start(pbx);
        EXPECT_TRUE(WaitUntil([&] { return !pbx.Requests("MonitorStart").empty(); }));
    }

    void Stop() {
        running = false;
        WorkerThread stopping(StopSession);
        EXPECT_TRUE(stopping.EndsWithin(kStopMs)) << "the session takes too long to stop";
    }

    // A PBX that knows nothing of what was before gets a login and a call. The one before stops first, if it still is
    // there: its end of TLS looks at the settings, which the next session loads.
    void ExpectWorksAfterAnotherStart(AnsweringPbx* before = nullptr) {
        if (before != nullptr) before->peer.StopServing();
        AnsweringPbx next(GetParam(), "1800");
        const size_t bound = BoundCalls();
        LogIn(next);
        Dial("123");
        EXPECT_TRUE(WaitUntil([&] { return BoundCalls() > bound; }));
        Stop();
        EXPECT_EQ(boundCalls.back().second, "123");
        EXPECT_EQ(next.Requests("StartApplicationSession").size(), 1U);
        EXPECT_EQ(next.Requests("MakeCall").size(), 1U);
        next.ExpectWholeFramesInOrder();
    }

    // Every call placed was answered, and every answer bound once, to its call.
    static void ExpectEachCallBoundOnce() {
        std::map<uint32_t, std::string> bound(boundCalls.begin(), boundCalls.end());
        EXPECT_EQ(boundCalls.size(), bound.size()) << "an answer was dispatched twice";
        EXPECT_TRUE(bound == placedCalls);
    }

    // Counted when the test program has had a thread: a sanitizer then has its own.
    const bool hadThread = [] { return WorkerThread([] {}).EndsWithin(kPatienceMs); }();
    const NothingLeftBehind nothingLeftBehind;
    bool running = false;
};

INSTANTIATE_TEST_SUITE_P(Link, LinkThreadsTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& link) { return link.param ? "Tls" : "Clear"; });

// The texts of those records that start with head, without it.
std::vector<std::string> TextsBehind(const std::string& head, const std::vector<LogRecord>& records) {
    std::vector<std::string> texts;
    for (const LogRecord& record : records) {
        if (record.text.starts_with(head)) texts.push_back(record.text.substr(head.size()));
    }
    return texts;
}

// What the log says of an exchange between the PBX and a session that has ended: each message once, as a record of its
// own; those sent in the order of their arrival, the events in the order of their sending.
void ExpectLogged(const std::vector<LogRecord>& records, AnsweringPbx& pbx, size_t events) {
    std::vector<std::string> sent;
    for (const ReceivedFrame& frame : pbx.peer.Frames()) sent.push_back(frame.xml);
    EXPECT_TRUE(TextsBehind("CSTA Tx: ", records) == sent);

    std::vector<std::string> loggedEvents;
    std::multiset<std::string> loggedAnswers;
    for (const std::string& xml : TextsBehind("CSTA Rx: ", records)) {
        if (xml.find("<DeliveredEvent ") != std::string::npos) loggedEvents.push_back(xml);
        if (xml.find("<MakeCallResponse ") != std::string::npos) loggedAnswers.insert(xml);
    }
    std::vector<std::string> sentEvents;
    for (size_t callId = 0; callId < events; ++callId) sentEvents.push_back(CallDelivered(std::to_string(callId)));
    EXPECT_TRUE(loggedEvents == sentEvents);
    std::multiset<std::string> sentAnswers;
    for (const auto& [invokeId, number] : placedCalls) sentAnswers.insert(CallMade(number, "D"));
    EXPECT_TRUE(loggedAnswers == sentAnswers);
}

// Pours events over the session, has it renew itself again and again among them, and returns how many events that took.
// The clock runs, or no renewal becomes due.
size_t PourEventsAndRenewals(AnsweringPbx& pbx) {
    constexpr size_t kRenewals = 8;
    constexpr size_t kEventsBetween = 50;
    const auto renewals = [&] { return pbx.Requests("ResetApplicationSessionTimer").size(); };
    size_t events = 0;
    for (size_t renewal = 0; renewal < kRenewals; ++renewal) {
        const size_t before = renewals();
        EXPECT_TRUE(pbx.SendEvents(events, kEventsBetween));
        events += kEventsBetween;
        EXPECT_TRUE(pbx.peer.SendFrame(1, SessionTimerReset("1")));
        EXPECT_TRUE(WaitUntil([&] {
            if (renewals() > before) return true;
            EXPECT_TRUE(pbx.SendEvents(events++, 1));
            return false;
        }));
    }
    return events;
}

TEST_P(LinkThreadsTest, KeepsEverythingWholeWhileThreadsSendEventsPourInAndRenewalsAreDue) {
    constexpr size_t kCalls = 30;
    memoryRegistry.values["loglevel"] = StoredText("5");
    const size_t logStart = WrittenLog().size();
    AnsweringPbx pbx(GetParam(), "1");
    size_t events = 0;
    LogIn(pbx);
    {
        std::atomic<bool> ending = false;
        WorkerThread clock([&] {
            for (; !ending; Sleep(1)) handClockMs += kRenewalMs;
        });
        WorkerThread pouring([&] {
            events = PourEventsAndRenewals(pbx);
            ending = true;
        });
        RunAtOnce(kDiallingThreads, [](size_t thread) {
            for (size_t call = 0; call < kCalls; ++call) {
                const std::string number = std::to_string(thread) + "*" + std::to_string(call);
                // Some too long for one record, or for one read.
                Dial(number + std::string(call % 10 == 0 ? 20000 : 0, '5'));
                ClearConnection(number, "D");
            }
        });
    }
    EXPECT_TRUE(WaitUntil([] { return BoundCalls() == kDiallingThreads * kCalls; }));
    EXPECT_TRUE(pbx.WaitUntilDispatched());
    Stop();
    EXPECT_TRUE(pbx.peer.WaitForEnd());

    pbx.ExpectWholeFramesInOrder();
    ExpectEachCallBoundOnce();
    EXPECT_EQ(pbx.Requests("MakeCall").size(), kDiallingThreads * kCalls);
    EXPECT_EQ(pbx.Requests("ClearConnection").size(), kDiallingThreads * kCalls);
    ExpectLogged(LogRecordsIn(WrittenLog().substr(logStart)), pbx, events);
}

// Without a log, through which threads meet that do not otherwise.
TEST_P(LinkThreadsTest, DispatchesEachAnswerOnceWhenTheyComeByteByByte) {
    constexpr size_t kCalls = 5;
    AnsweringPbx pbx(GetParam(), "1");
    pbx.DeliverBy([&](const std::string& bytes) {
        return std::all_of(bytes.begin(), bytes.end(), [&](char byte) { return pbx.peer.Send(std::string(1, byte)); });
    });
    LogIn(pbx);
    RunAtOnce(kDiallingThreads, [](size_t thread) {
        for (size_t call = 0; call < kCalls; ++call) {
            Dial(std::to_string(thread) + "*" + std::to_string(call));
            ClearConnection(std::to_string(call), "D");
            handClockMs += kRenewalMs;
        }
    });
    EXPECT_TRUE(WaitUntil([] { return BoundCalls() == kDiallingThreads * kCalls; }));
    EXPECT_TRUE(pbx.WaitUntilDispatched());
    Stop();
    pbx.ExpectWholeFramesInOrder();
    ExpectEachCallBoundOnce();
}

TEST_P(LinkThreadsTest, StopsAtAnyMoment) {
    constexpr size_t kRounds = 16;
    // Until the handshake is complete TLS holds a mebibyte back and drops what is more; a call takes less than 1 KB.
    constexpr size_t kMostCalls = 200;
    for (size_t round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(round);
        AnsweringPbx pbx(GetParam(), "1");
        Start(pbx);
        EXPECT_TRUE(pbx.peer.WaitForConnections(1));
        {
            std::atomic<bool> ending = false;
            const Dialling dialling(kMostCalls);
            WorkerThread pouring([&] {
                while (!ending && pbx.SendEvents(0, 10)) {
                }
            });
            // From the connection's making on, through handshake and login, up to a link in full use.
            EXPECT_TRUE(pbx.peer.WaitForBytes(round * round * 100));
            handClockMs += kRenewalMs;
            Stop();
            ending = true;
        }
        pbx.ExpectWholeFramesInOrder();
    }
    ExpectWorksAfterAnotherStart();
}

TEST_P(LinkThreadsTest, StopsWhileSendsAreStuckBecauseThePbxReadsNothing) {
    AnsweringPbx pbx(GetParam(), "1");
    LogIn(pbx);
    pbx.peer.StopReading();
    {
        // Stuck when no send has ended for a while.
        std::atomic<bool> ending = false;
        std::atomic<size_t> sends = 0;
        WorkerThread sending([&] {
            RunAtOnce(kDiallingThreads, [&](size_t) {
                for (; !ending; ++sends) Dial(std::string(60000, '5'));
            });
        });
        size_t seen = 0;
        double sinceMs = PreciseMs();
        EXPECT_TRUE(WaitUntil([&] {
            if (sends != seen) sinceMs = PreciseMs();
            seen = sends;
            return PreciseMs() - sinceMs > 300;
        }));
        Stop();
        ending = true;
    }
    pbx.ExpectWholeFramesInOrder();
    ExpectWorksAfterAnotherStart(&pbx);
}

TEST_P(LinkThreadsTest, StopsAfterThePbxHasEndedTheLinkUnderItsSenders) {
    for (const auto end : {&PbxPeer::Reset, &PbxPeer::Close}) {
        AnsweringPbx pbx(GetParam(), "1");
        LogIn(pbx);
        {
            const Dialling dialling;
            EXPECT_TRUE(pbx.peer.WaitForFrames(20));
            (pbx.peer.*end)();
            // Requests go on into the void; one session stops under them, the other when its receive thread can notice.
            const size_t calls = dialling.Calls();
            EXPECT_TRUE(WaitUntil([&] { return dialling.Calls() > calls + 20; }));
            if (end == &PbxPeer::Reset) Stop();
        }
        if (running) Stop();
        pbx.ExpectWholeFramesInOrder();
    }
    ExpectWorksAfterAnotherStart();
}

TEST_P(LinkThreadsTest, StopsWhileThePbxSendsGarbage) {
    AnsweringPbx pbx(GetParam(), "1");
    LogIn(pbx);
    {
        const Dialling dialling;
        EXPECT_TRUE(pbx.peer.WaitForFrames(20));
        SeededBytes garbage(1);
        for (size_t count = 0; count < 200; ++count) EXPECT_TRUE(pbx.peer.Send(garbage.take(garbage.upTo(2000))));
        const size_t calls = dialling.Calls();
        EXPECT_TRUE(WaitUntil([&] { return dialling.Calls() > calls + 20; }));
        Stop();
    }
    pbx.ExpectWholeFramesInOrder();
    ExpectWorksAfterAnotherStart(&pbx);
}

}  // namespace
}  // namespace velmora
