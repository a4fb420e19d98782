#include "tests/interop/nss_peer.h"

#include <cert.h>
#include <nss.h>
#include <prerror.h>
#include <ssl.h>
#include <sslproto.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace velmora::interop {
namespace {

constexpr uint8_t kCloseNotify = 0;

struct NssSuite {
    const char* name;
    uint16_t number;
};

constexpr NssSuite kSuites[] = {
    {"AES128-SHA", TLS_RSA_WITH_AES_128_CBC_SHA},
    {"AES256-SHA", TLS_RSA_WITH_AES_256_CBC_SHA},
    {"RC4-SHA", TLS_RSA_WITH_RC4_128_SHA},
    {"RC4-MD5", TLS_RSA_WITH_RC4_128_MD5},
};

// What must not fail in setting a peer up.
void Must(bool succeeded) {
    if (succeeded) return;
    std::fprintf(stderr, "NSS: %s\n", PR_ErrorToString(PR_GetError(), PR_LANGUAGE_I_DEFAULT));
    std::abort();
}

// NSS, for as long as the process runs.
class Library {
public:
    Library() { Must(NSS_NoDB_Init(nullptr) == SECSuccess && NSS_SetDomesticPolicy() == SECSuccess); }
    ~Library() {
        SSL_ClearSessionCache();
        NSS_Shutdown();
        PR_Cleanup();
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

}  // namespace

// What NSS calls: a socket made of two byte strings, and what it tells and asks.
struct NssCallbacks {
    static NssPeer& Peer(PRFileDesc* socket) { return *reinterpret_cast<NssPeer*>(socket->secret); }

    static PRInt32 PR_CALLBACK Receive(PRFileDesc* socket, void* target, PRInt32 most, PRIntn, PRIntervalTime) {
        ByteString& incoming = Peer(socket).incoming;
        const size_t count = std::min(static_cast<size_t>(most), incoming.size());
        if (count == 0) {
            PR_SetError(PR_WOULD_BLOCK_ERROR, 0);
            return -1;
        }
        std::memcpy(target, incoming.data(), count);
        incoming.erase(0, count);
        return static_cast<PRInt32>(count);
    }

    static PRInt32 PR_CALLBACK Send(PRFileDesc* socket, const void* bytes, PRInt32 count, PRIntn, PRIntervalTime) {
        Peer(socket).outgoing.append(static_cast<const char*>(bytes), static_cast<size_t>(count));
        return count;
    }

    static PRStatus PR_CALLBACK Shutdown(PRFileDesc*, PRIntn) { return PR_SUCCESS; }

    static PRStatus PR_CALLBACK PeerName(PRFileDesc*, PRNetAddr* address) {
        return PR_InitializeNetAddr(PR_IpAddrLoopback, 443, address);
    }

    static PRStatus PR_CALLBACK GetOption(PRFileDesc*, PRSocketOptionData* option) {
        if (option->option == PR_SockOpt_Nonblocking) option->value.non_blocking = PR_TRUE;
        return PR_SUCCESS;
    }

    static PRStatus PR_CALLBACK SetOption(PRFileDesc*, const PRSocketOptionData*) { return PR_SUCCESS; }

    static PRStatus PR_CALLBACK Close(PRFileDesc* socket) {
        socket->dtor(socket);
        return PR_SUCCESS;
    }

    static PRFileDesc* NewSocket(NssPeer* peer) {
        static const PRDescIdentity identity = PR_GetUniqueIdentity("velmora");
        static const PRIOMethods methods = [] {
            PRIOMethods own = *PR_GetDefaultIOMethods();
            own.recv = Receive;
            own.send = Send;
            own.shutdown = Shutdown;
            own.getpeername = PeerName;
            own.getsocketoption = GetOption;
            own.setsocketoption = SetOption;
            own.close = Close;
            return own;
        }();
        PRFileDesc* socket = PR_CreateIOLayerStub(identity, &methods);
        socket->secret = reinterpret_cast<PRFilePrivate*>(peer);
        return socket;
    }

    static SECStatus TakeAnyCertificate(void*, PRFileDesc*, PRBool, PRBool) { return SECSuccess; }

    static void NoteHandshake(PRFileDesc*, void* peer) { static_cast<NssPeer*>(peer)->state.handshakeComplete = true; }

    static void NoteAlert(const PRFileDesc*, void* peer, const SSLAlert* alert) {
        if (alert->description != kCloseNotify) static_cast<NssPeer*>(peer)->state.alertReceived = alert->description;
    }
};

NssPeer::NssPeer(const TlsPeerOptions& peerOptions) : options(peerOptions) {
    static const Library library;
    Restart();
}

NssPeer::~NssPeer() {
    PR_Close(connection);
}

void NssPeer::Restart() {
    if (connection != nullptr) PR_Close(connection);
    incoming.clear();
    outgoing.clear();
    state = {};
    connection = SSL_ImportFD(nullptr, NssCallbacks::NewSocket(this));
    Must(connection != nullptr);
    const SSLVersionRange ssl30 = {SSL_LIBRARY_VERSION_3_0, SSL_LIBRARY_VERSION_3_0};
    Must(SSL_VersionRangeSet(connection, &ssl30) == SECSuccess);
    Must(SSL_OptionSet(connection, SSL_NO_CACHE, options.resumption ? 0 : 1) == SECSuccess);
    for (const uint16_t* suite = SSL_GetImplementedCiphers(); *suite != 0; ++suite) {
        SSL_CipherPrefSet(connection, *suite, PR_FALSE);
    }
    for (const NssSuite& suite : kSuites) {
        if (options.suite == suite.name) Must(SSL_CipherPrefSet(connection, suite.number, PR_TRUE) == SECSuccess);
    }
    Must(SSL_SetURL(connection, "pbx.velmora.example") == SECSuccess);
    Must(SSL_AuthCertificateHook(connection, NssCallbacks::TakeAnyCertificate, this) == SECSuccess);
    Must(SSL_HandshakeCallback(connection, NssCallbacks::NoteHandshake, this) == SECSuccess);
    Must(SSL_AlertReceivedCallback(connection, NssCallbacks::NoteAlert, this) == SECSuccess);
    Must(SSL_ResetHandshake(connection, PR_FALSE) == SECSuccess);
}

ByteString NssPeer::Take(std::string_view fromNetwork) {
    incoming += fromNetwork;
    if (!state.handshakeComplete && !state.failed) Succeeded(SSL_ForceHandshake(connection) == SECSuccess ? 0 : -1);
    if (state.handshakeComplete) ReadAll();
    return std::exchange(outgoing, {});
}

void NssPeer::Write(std::string_view plaintext) {
    while (!plaintext.empty()) {
        const PRInt32 count = PR_Write(connection, plaintext.data(), static_cast<PRInt32>(plaintext.size()));
        if (!Succeeded(count)) return;
        plaintext.remove_prefix(static_cast<size_t>(count));
    }
}

void NssPeer::Close() {
    PR_Shutdown(connection, PR_SHUTDOWN_SEND);
}

TlsPeerState NssPeer::State() const {
    TlsPeerState current = state;
    SSLChannelInfo info = {};
    if (!state.handshakeComplete || SSL_GetChannelInfo(connection, &info, sizeof(info)) != SECSuccess) return current;
    current.version = info.protocolVersion;
    current.resumed = info.resumed != 0;
    for (const NssSuite& suite : kSuites) {
        if (info.cipherSuite == suite.number) current.suite = suite.name;
    }
    if (CERTCertificate* certificate = SSL_PeerCertificate(connection)) {
        const SECItem& der = certificate->derCert;
        current.peerCertificate.assign(reinterpret_cast<const char*>(der.data), der.len);
        CERT_DestroyCertificate(certificate);
    }
    return current;
}

ByteString NssPeer::Read() {
    return std::exchange(state.received, {});
}

void NssPeer::ReadAll() {
    char chunk[16384];
    while (!state.failed && !state.closeReceived) {
        const PRInt32 count = PR_Read(connection, chunk, sizeof(chunk));
        if (!Succeeded(count)) return;
        if (count == 0) state.closeReceived = true;
        state.received.append(chunk, static_cast<size_t>(count));
    }
}

// Also notes the end of the connection. That there is nothing more to read is none.
bool NssPeer::Succeeded(int32_t result) {
    if (result >= 0) return true;
    const PRErrorCode error = PR_GetError();
    if (error != PR_WOULD_BLOCK_ERROR) {
        state.failed = true;
        state.failure = PR_ErrorToString(error, PR_LANGUAGE_I_DEFAULT);
    }
    return false;
}

}  // namespace velmora::interop
