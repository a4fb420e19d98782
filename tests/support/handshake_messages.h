#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// Records and handshake messages as RFC 2246 lays them out (sections 6.2.1 and 7.4), built and taken apart field by
// field. Nothing of tls/ is used, so that this can judge it.

// Bytes written as numbers: Octets({0x16, 0x03}).
ByteString Octets(std::initializer_list<unsigned> values);

// A number in count bytes, the high one first; and bytes behind their own length of count bytes.
ByteString BigEndian(size_t number, size_t count);
ByteString Counted(size_t count, std::string_view bytes);

// A record around a fragment, and a message of the handshake around its body.
ByteString RecordOf(unsigned type, std::string_view fragment, unsigned version = 0x0301);
ByteString MessageOf(unsigned type, std::string_view body);

// A record with these messages.
inline ByteString HandshakeRecord(std::string_view messages) {
    return RecordOf(22, messages);
}

// The bodies of the two hellos; each field can be chosen.
struct ClientHelloFields {
    unsigned version = 0x0301;
    ByteString random = ByteString(32, 'c');
    ByteString sessionId = {};
    ByteString suites = Octets({0x00, 0x05});
    ByteString compressions = ByteString(1, '\0');
    ByteString rest = {};  // extensions

    ByteString Body() const;
};

struct ServerHelloFields {
    unsigned version = 0x0301;
    ByteString random = ByteString(32, 's');
    ByteString sessionId = {};
    unsigned suite = 0x0005;
    unsigned compression = 0;
    ByteString rest = {};  // extensions

    ByteString Body() const;
};

// The body of a Certificate message; and that of a CertificateRequest, whose authorities are Names, each a whole
// SEQUENCE.
ByteString CertificateBody(const std::vector<ByteString>& certificates);
ByteString CertificateRequestBody(std::string_view types, const std::vector<ByteString>& authorities);

struct SeenRecord {
    unsigned type;
    unsigned version;
    ByteString fragment;

    bool operator==(const SeenRecord&) const = default;
};

// The records in a stream. What is no whole record at its end fails the test.
std::vector<SeenRecord> RecordsIn(std::string_view stream);

struct SeenMessage {
    unsigned type;
    ByteString body;

    bool operator==(const SeenMessage&) const = default;
};

// The handshake messages in bytes that hold nothing else. A cut one at the end fails the test.
std::vector<SeenMessage> MessagesIn(std::string_view bytes);

// What one end has sent as a text to compare: a word a record, such as "22:2,11,14 20 21:2,70 23", with the types of
// the messages in a record of the clear handshake, and an alert's level and description.
ByteString Outline(std::string_view stream);

}  // namespace velmora
