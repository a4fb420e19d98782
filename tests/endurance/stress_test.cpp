#include <cstdio>
#include <cstdlib>

#include "tests/endurance/stress_round.h"
#include "tests/support/process_use.h"
#include "tests/support/thread_stacks.h"
#include "tests/support/tls_identity.h"
#include "tests/support/xml_judge.h"

// The locking of the provider, where threads of TAPI, those of the CSTA session and the PBX meet at every moment.
//
// The rounds are drawn from seeds, one after the other. A failure names the environment that repeats its round alone.

namespace velmora {
namespace {

constexpr unsigned kFirstSeed = 1;
constexpr unsigned kRounds = 200;
constexpr uint32_t kRoundDeadlineMs = 60000;  // deadlocked; a round takes a fraction of a second

unsigned NumberFromEnvironment(const char* name, unsigned otherwise) {
    const char* text = std::getenv(name);
    return text == nullptr ? otherwise : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

const RoundPlan* currentPlan = nullptr;  // of the round that runs

LONG WINAPI TellRound(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    static_cast<void>(std::fprintf(stderr, "Exception 0x%lx at %p. To repeat: %s\n%s", record.ExceptionCode,
                                   record.ExceptionAddress, currentPlan->Repetition().c_str(), ThreadStacks().c_str()));
    static_cast<void>(std::fflush(nullptr));
    TerminateProcess(GetCurrentProcess(), 1);
    return EXCEPTION_CONTINUE_SEARCH;
}

[[noreturn]] void GiveUp(const StressRound& round) {
    static_cast<void>(std::fprintf(stderr, "A deadlock. To repeat: %s\n%s%s", currentPlan->Repetition().c_str(),
                                   round.Places().c_str(), ThreadStacks().c_str()));
    static_cast<void>(std::fflush(nullptr));
    TerminateProcess(GetCurrentProcess(), 1);
    std::abort();
}

class StressTest : public testing::Test {
protected:
    StressTest() {
        StoreSettings(registry, log, 0);
        registry.Set("encrypt", "1");
        registry.Set("loglevel", "0");
        registry.Set("logfile", "");
        UseTlsIdentity("rsa1024");
        SetUnhandledExceptionFilter(TellRound);
    }

    void RunRound(const RoundPlan& plan) {
        currentPlan = &plan;
        StressRound round(plan, registry, totals);
        WorkerThread running([&] { round.Run(); });
        if (!running.EndsWithin(kRoundDeadlineMs)) GiveUp(round);
    }

    RegistryScope registry;
    LogReader log{PathBesideProgram("stress_test.log")};
    StressTotals totals;
};

TEST_F(StressTest, KeepsCallsFramesAndThreadsInOrderWhileTenThreadsDialAndAnyOfThemMayMeetTheEnd) {
    constexpr unsigned kWarmUp = 3;     // for what is made once in a process
    constexpr size_t kKeptByALoad = 2;  // semaphores: the session's own, and one of the compiler's library
    const unsigned firstSeed = NumberFromEnvironment("VELMORA_STRESS_SEED", kFirstSeed);
    const unsigned rounds = NumberFromEnvironment("VELMORA_STRESS_ROUNDS", kRounds);
    const double startMs = PreciseMs();
    size_t handles = 0;
    size_t threads = 0;
    unsigned done = 0;
    while (done < rounds && !HasFailure()) {
        if (done == kWarmUp) {
            handles = OpenHandles();
            threads = RunningThreads();
        }
        const RoundPlan plan(firstSeed + done);
        RunRound(plan);
        ++done;
        EXPECT_FALSE(HasFailure()) << "To repeat: " << plan.Repetition();
    }
    if (done > kWarmUp && !HasFailure()) {
        EXPECT_EQ(OpenHandles(), handles + kKeptByALoad * (done - kWarmUp));
        // A thread whose end has been waited for may be counted a little longer.
        EXPECT_TRUE(WaitUntil([&] { return RunningThreads() == threads; })) << ThreadStacks();
    }
    std::printf("%u rounds, %zu calls (%zu closed by name), %zu frames, %zu events, %.1f seconds\n", done,
                done * kStressCalls, totals.bound.load(), totals.frames.load(), totals.events.load(),
                (PreciseMs() - startMs) / 1000);
}

// The judge of the frames itself.
TEST(XmlJudge, TellsAWholeDocumentFromOneThatIsCutOrMixedWithAnother) {
    const std::string document =
        "<?xml version=\"1.0\"?>\r\n<a xmlns=\"urn:a\" xmlns:t=\"urn:t\">\r\n<t:b>1</t:b></a>\r\n";
    EXPECT_TRUE(IsWellFormedXml(document));
    for (size_t length = 0; length < document.size() - 2; ++length) {
        EXPECT_FALSE(IsWellFormedXml(document.substr(0, length))) << length;
    }
    EXPECT_FALSE(IsWellFormedXml(document + document));
    EXPECT_FALSE(IsWellFormedXml("<a><b>1</a></b>"));
}

}  // namespace
}  // namespace velmora
