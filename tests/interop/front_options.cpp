#include "tests/interop/front_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace velmora::interop {
namespace {

constexpr std::string_view kLoopback = "127.0.0.1:";

template <typename Integer>
bool ReadNumber(std::string_view text, Integer& number) {
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

bool ReadAddress(std::string_view text, uint16_t& port) {
    return text.starts_with(kLoopback) && ReadNumber(text.substr(kLoopback.size()), port) && port != 0;
}

bool ReadLibrary(std::string_view text, TlsLibrary& library) {
    if (text != "openssl" && text != "gnutls") return false;
    library = text == "openssl" ? TlsLibrary::kOpenSsl : TlsLibrary::kGnuTls;
    return true;
}

// Whether the option has been taken; value is what follows it.
bool TakeValue(FrontOptions& options, ByteString& identity, std::string_view name, std::string_view value) {
    if (name == "--library") return ReadLibrary(value, options.implementation);
    if (name == "--listen") return ReadNumber(value, options.listenPort);
    if (name == "--forward" || name == "--connect") return ReadAddress(value, options.farPort);
    if (name == "--split") return ReadNumber(value, options.splitBytes);
    if (name == "--tamper") return ReadNumber(value, options.tamperRecord);
    if (name == "--suite") options.peer.suite = value;
    if (name == "--identity") identity = value;
    if (name == "--server-name") options.peer.serverName = value;
    return name == "--suite" || name == "--identity" || name == "--server-name";
}

bool TakeSwitch(FrontOptions& options, std::string_view name) {
    if (name == "--client") options.peer.role = PeerRole::kClient;
    if (name == "--no-resumption") options.peer.resumption = false;
    if (name == "--request-certificate") options.peer.trusted = ClientAuthorityCertificate();
    return name == "--client" || name == "--no-resumption" || name == "--request-certificate";
}

// A combination that nobody has, or that is not complete.
ByteString Fault(const FrontOptions& options, const ByteString& identity) {
    constexpr std::array<std::string_view, 4> kSuites = {"AES128-SHA", "AES256-SHA", "RC4-SHA", "RC4-MD5"};
    constexpr std::array<std::string_view, 4> kIdentities = {"rsa1024", "rsa2048", "rsa4096", "client"};
    if (std::ranges::find(kSuites, options.peer.suite) == kSuites.end()) return "no suite " + options.peer.suite;
    if (options.implementation == TlsLibrary::kOpenSsl && options.peer.suite.starts_with("RC4"))
        return "OpenSSL has no RC4";
    if (!identity.empty() && std::ranges::find(kIdentities, identity) == kIdentities.end()) {
        return "no identity " + identity;
    }
    if (identity.empty() && options.peer.role == PeerRole::kServer) return "a server needs --identity";
    if (options.farPort == 0) return "--forward or --connect is missing";
    return {};
}

}  // namespace

FrontCommandLine ParseFrontCommandLine(const std::vector<ByteString>& arguments) {
    FrontCommandLine commandLine;
    ByteString identity;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (TakeSwitch(commandLine.options, *argument)) continue;
        const ByteString& name = *argument;
        const bool taken = ++argument != arguments.end() && TakeValue(commandLine.options, identity, name, *argument);
        if (taken) continue;
        commandLine.fault = "there is no option " + name + ", or no such value for it";
        return commandLine;
    }
    commandLine.fault = Fault(commandLine.options, identity);
    if (commandLine.fault.empty() && !identity.empty()) commandLine.options.peer.identity = LoadTlsIdentity(identity);
    return commandLine;
}

const std::string_view kFrontHelp =
    R"(usage: tls_front --identity NAME --forward 127.0.0.1:PORT [OPTION]...
       tls_front --client --connect 127.0.0.1:PORT [OPTION]...

Another's TLS 1.0 in front of a PBX: takes TLS connections and passes what they
carry on in the clear; or, with --client, the other way round. Loopback only, one
connection at a time.

  --library openssl|gnutls  whose TLS (default: openssl)
  --suite AES128-SHA|AES256-SHA|RC4-SHA|RC4-MD5
                            the only one it has (default: AES128-SHA); RC4 is
                            GnuTLS's
  --identity rsa1024|rsa2048|rsa4096|client
                            its certificate and key; a client may have none
  --listen PORT             0 for any free one (default: 0)
  --request-certificate     ask the client for a certificate of the tests'
                            authority
  --server-name NAME        the server that a client asks for
  --split N                 send N bytes at a time to the TLS end
  --tamper N                change a byte of the Nth record of application data
                            that is sent to the TLS end
  --no-resumption           resume no sessions

Prints "listening on 127.0.0.1:PORT", then lines about each connection.
)";

}  // namespace velmora::interop
