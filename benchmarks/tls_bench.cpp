// Handshakes and records of TLS 1.0 beside other libraries', the two ends apart: whoever is measured, the other end is
// the same library's, and its time does not count.

#include <ctime>

#include <exception>
#include <string>
#include <vector>

#include "benchmarks/ratio_table.h"
#include "benchmarks/tls_end.h"
#include "config/big_endian.h"
#include "tests/support/tls_identity.h"
#include "tls/protocol.h"

namespace velmora {
namespace {

// How many connections go on in step, or records behind one another, so that reading the clock costs next to nothing.
constexpr int kConnections = 8;
constexpr int kRecords = 16;

struct Contestant {
    const char* name;
    std::unique_ptr<TlsMaker> (*makerFor)(const TlsSetup&);
};

const Contestant kContestants[] = {
    {kOurs.c_str(), OurMaker},  {"OpenSSL", OpenSslMaker}, {"GnuTLS", GnuTlsMaker},
    {"Mbed TLS", MbedTlsMaker}, {"Botan", BotanMaker},     {"BearSSL", BearSslMaker},
};

// The processor time of this thread, added up over several stretches.
class Stopwatch {
public:
    template <typename Work>
    void Time(Work work) {
        const double start = Now();
        work();
        seconds += Now() - start;
    }

    double Seconds() const { return seconds; }

private:
    static double Now() {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    }

    double seconds = 0;
};

// A connection: the end that is measured, and the other.
struct Pair {
    std::unique_ptr<TlsEnd> measured;
    std::unique_ptr<TlsEnd> other;
    ByteString toMeasured;
    ByteString toOther;
    ByteString fromServer;  // all that the server has written in this handshake
};

// The connections of one contestant in one case. Its other ends are GnuTLS's, which knows all the suites.
class Match {
public:
    Match(const TlsSetup& chosenSetup, std::unique_ptr<TlsMaker> chosenMaker)
        : setup(chosenSetup), maker(std::move(chosenMaker)), certificate(LoadTlsIdentity(setup.identity).certificate) {
        TlsSetup otherSetup = setup;
        otherSetup.role = setup.role == Endpoint::kClient ? Endpoint::kServer : Endpoint::kClient;
        otherMaker = GnuTlsMaker(otherSetup);
    }

    bool SendsOneRecord() const { return maker->SendsOneRecord(); }

    // Full handshakes on new connections, from the making of the objects to their end.
    double FullHandshakes() {
        maker->Prepare();
        Stopwatch watch;
        pairs = std::vector<Pair>(kConnections);
        watch.Time([&] {
            for (Pair& pair : pairs) pair.measured = maker->NewEnd();
        });
        for (Pair& pair : pairs) pair.other = otherMaker->NewEnd();
        ShakeHands(watch);
        for (const Pair& pair : pairs) Require(ShowsCertificate(pair), "not a full handshake");
        watch.Time([&] {
            for (Pair& pair : pairs) pair.measured.reset();
        });
        return watch.Seconds();
    }

    // Handshakes that resume the sessions of the ones before.
    double ResumedHandshakes() {
        if (pairs.empty()) Connect();
        maker->Prepare();
        Stopwatch watch;
        watch.Time([&] {
            for (Pair& pair : pairs) pair.measured->StartOver();
        });
        for (Pair& pair : pairs) pair.other->StartOver();
        ShakeHands(watch);
        for (const Pair& pair : pairs) Require(!ShowsCertificate(pair), "not a resumed handshake");
        return watch.Seconds();
    }

    double ProtectRecords(const ByteString& data) {
        if (pairs.empty()) Connect();
        Pair& pair = pairs[0];
        Stopwatch watch;
        watch.Time([&] {
            for (int record = 0; record < kRecords; ++record) pair.measured->Send(data);
        });
        const ByteString sent = std::exchange(pair.measured->wire.written, {});
        for (const std::string_view record : Records(sent)) {
            pair.other->wire.incoming = record;
            Require(pair.other->Receive() == data, "the other end has read something else");
        }
        pair.measured->wire.written.reserve(sent.size());
        return watch.Seconds();
    }

    double UnprotectRecords(const ByteString& data) {
        if (pairs.empty()) Connect();
        Pair& pair = pairs[0];
        for (int record = 0; record < kRecords; ++record) pair.other->Send(data);
        const ByteString sent = std::exchange(pair.other->wire.written, {});
        const std::vector<std::string_view> records = Records(sent);
        std::string_view received;
        Stopwatch watch;
        watch.Time([&] {
            for (const std::string_view record : records) {
                pair.measured->wire.incoming = record;
                received = pair.measured->Receive();
                Require(received.size() == data.size(), "a record has another length");
            }
        });
        Require(received == data, "the measured end has read something else");
        return watch.Seconds();
    }

private:
    void Connect() {
        maker->Prepare();
        pairs.resize(kConnections);
        for (Pair& pair : pairs) {
            pair.measured = maker->NewEnd();
            pair.other = otherMaker->NewEnd();
        }
        Stopwatch watch;
        ShakeHands(watch);
    }

    // All connections in step, a flight at a time.
    void ShakeHands(Stopwatch& watch) {
        for (Pair& pair : pairs) {
            pair.toOther.clear();
            pair.fromServer.clear();
        }
        if (setup.role == Endpoint::kServer) OthersTurn();
        do {
            watch.Time([&] {
                for (Pair& pair : pairs) pair.measured->Handshake();
            });
            for (Pair& pair : pairs) pair.toOther = std::exchange(pair.measured->wire.written, {});
            OthersTurn();
        } while (!pairs[0].toMeasured.empty());
        for (const Pair& pair : pairs) {
            Require(pair.measured->IsComplete() && pair.other->IsComplete(), "a handshake has not come to its end");
        }
    }

    void OthersTurn() {
        const bool measuredIsServer = setup.role == Endpoint::kServer;
        for (Pair& pair : pairs) {
            pair.other->wire.incoming = pair.toOther;
            if (!pair.other->IsComplete()) pair.other->Handshake();
            pair.toMeasured = std::exchange(pair.other->wire.written, {});
            pair.measured->wire.incoming = pair.toMeasured;
            pair.fromServer += measuredIsServer ? pair.toOther : pair.toMeasured;
        }
    }

    bool ShowsCertificate(const Pair& pair) const { return pair.fromServer.find(certificate) != ByteString::npos; }

    // Each record with its header. There are as many as were sent: no library adds empty ones.
    static std::vector<std::string_view> Records(std::string_view stream) {
        std::vector<std::string_view> records;
        while (!stream.empty()) {
            const size_t recordBytes = kRecordHeaderBytes + ReadBigEndian(stream.substr(3, 2));
            records.push_back(stream.substr(0, recordBytes));
            stream.remove_prefix(recordBytes);
        }
        Require(records.size() == kRecords, "not one record for each piece of data");
        return records;
    }

    TlsSetup setup;
    std::unique_ptr<TlsMaker> maker;
    std::unique_ptr<TlsMaker> otherMaker;
    ByteString certificate;
    std::vector<Pair> pairs;
};

// The match of every contestant that can do the suite, with its name.
template <typename AddCases>
void ForEachMatch(const TlsSetup& setup, AddCases addCases) {
    for (const Contestant& contestant : kContestants) {
        std::unique_ptr<TlsMaker> maker = contestant.makerFor(setup);
        if (maker) addCases(contestant.name, std::make_shared<Match>(setup, std::move(maker)));
    }
}

void AddHandshakes(Endpoint role, const std::string& identity) {
    const std::string end = role == Endpoint::kClient ? "client" : "server";
    const std::string caseName = identity + " aes128-sha";
    TlsSetup setup = {role, kRsaWithAes128Sha, identity};
    ForEachMatch(setup, [&](const char* name, const std::shared_ptr<Match>& match) {
        AddTimedContender("tls-handshake-" + end, caseName, name, kConnections,
                          [match] { return match->FullHandshakes(); });
    });
    if (identity != "rsa2048") return;
    setup.resumes = true;
    ForEachMatch(setup, [&](const char* name, const std::shared_ptr<Match>& match) {
        AddTimedContender("tls-resume-" + end, caseName, name, kConnections,
                          [match] { return match->ResumedHandshakes(); });
    });
}

// As a client reads and writes them.
void AddRecords(const CipherSuite& suite, const std::string& suiteName, size_t byteCount) {
    const std::string caseName = suiteName + " " + std::to_string(byteCount);
    const ByteString data(byteCount, 'v');
    const TlsSetup setup = {Endpoint::kClient, suite, "rsa1024"};
    ForEachMatch(setup, [&](const char* name, const std::shared_ptr<Match>& match) {
        if (match->SendsOneRecord())
            AddTimedContender("tls-protect", caseName, name, kRecords, [=] { return match->ProtectRecords(data); });
        AddTimedContender("tls-unprotect", caseName, name, kRecords, [=] { return match->UnprotectRecords(data); });
    });
}

void AddAll() {
    for (const Endpoint role : {Endpoint::kClient, Endpoint::kServer}) {
        AddHandshakes(role, "rsa1024");
        AddHandshakes(role, "rsa2048");
    }
    for (const size_t byteCount : {400U, 16384U}) {
        AddRecords(kRsaWithAes128Sha, "aes128-sha", byteCount);
        AddRecords(kRsaWithAes256Sha, "aes256-sha", byteCount);
        AddRecords(kRsaWithRc4Sha, "rc4-sha", byteCount);
        AddRecords(kRsaWithRc4Md5, "rc4-md5", byteCount);
    }
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    velmora::AddAll();
    return velmora::RunRatioTable(argc, argv);
}
