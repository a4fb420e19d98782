#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "config/byte_string.h"
#include "tls/cipher_suite.h"
#include "tls/key_derivation.h"

namespace velmora {

// One end of a TLS 1.0 connection as several libraries make it, each used as its manual recommends: what a connection
// can share with others is made beforehand, and what is compared is the work on a connection.
//
// Where a library could do more than ours (extended master secrets, encrypt-then-MAC, tickets, empty records against
// chosen plaintexts, certificate chains), that is switched off: all do the same work.

// What lies between two ends in place of a socket: one copy on the way out and one on the way in, as a socket makes.
class Wire {
public:
    void Write(const void* bytes, size_t count) { written.append(static_cast<const char*>(bytes), count); }

    // At most capacity bytes; 0 when none are left.
    size_t Read(void* target, size_t capacity) {
        const size_t count = incoming.copy(static_cast<char*>(target), capacity);
        incoming.remove_prefix(count);
        return count;
    }

    ByteString written;         // by this end
    std::string_view incoming;  // for this end, not read yet; whoever sets it keeps the bytes
};

class TlsEnd {
public:
    TlsEnd() = default;
    TlsEnd(const TlsEnd&) = delete;
    TlsEnd& operator=(const TlsEnd&) = delete;
    virtual ~TlsEnd() = default;

    // Carries the handshake as far as it goes with what has come.
    virtual void Handshake() = 0;
    virtual bool IsComplete() = 0;

    // After a complete handshake: makes ready for another one on a new connection. A client offers its session again.
    virtual void StartOver() = 0;

    // Writes data, at most 16,384 bytes, to the wire in one record, but see SendsOneRecord.
    virtual void Send(std::string_view data) = 0;

    // The data of the one record that has come. It stays good until the next call.
    virtual std::string_view Receive() = 0;

    Wire wire;
};

// What the connections of a case have in common.
struct TlsSetup {
    Endpoint role = Endpoint::kClient;
    CipherSuite suite;     // the only one that a peer offers or accepts
    std::string identity;  // the server's: see tests/support/tls_identity.h
    bool resumes = false;  // whether a server keeps its sessions
};

// A library's part in a case, with what its connections share.
class TlsMaker {
public:
    TlsMaker() = default;
    TlsMaker(const TlsMaker&) = delete;
    TlsMaker& operator=(const TlsMaker&) = delete;
    virtual ~TlsMaker() = default;

    // To be called before a turn: makes what is the process's own fit this case.
    virtual void Prepare() {}

    virtual std::unique_ptr<TlsEnd> NewEnd() = 0;

    // Whether data leaves in one record. A library that puts the first byte into a record of its own, against chosen
    // plaintexts, and cannot be kept from it, does more than ours when it sends.
    virtual bool SendsOneRecord() const { return true; }
};

// None when the library cannot do the suite.
std::unique_ptr<TlsMaker> OurMaker(const TlsSetup& setup);
std::unique_ptr<TlsMaker> OpenSslMaker(const TlsSetup& setup);
std::unique_ptr<TlsMaker> GnuTlsMaker(const TlsSetup& setup);
std::unique_ptr<TlsMaker> MbedTlsMaker(const TlsSetup& setup);
std::unique_ptr<TlsMaker> BotanMaker(const TlsSetup& setup);
std::unique_ptr<TlsMaker> BearSslMaker(const TlsSetup& setup);

// A benchmark of something that has failed would be worthless.
inline void Require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

}  // namespace velmora
