#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "config/byte_string.h"
#include "tls/protocol.h"

namespace velmora::interop {

// Records on their way from one end to the other.

struct WireRecord {
    RecordType type;
    uint16_t version;
    ByteString fragment;
};

// The records that bytes consist of, each whole.
std::vector<WireRecord> CutRecords(const ByteString& bytes);
ByteString JoinRecords(const std::vector<WireRecord>& records);

// Handshake messages that follow each other, in one record as far as they fit.
ByteString WithHandshakeInOneRecord(const ByteString& bytes);

// Handshake messages cut into records of so many bytes. Only for what is not protected yet: nothing behind a
// ChangeCipherSpec is touched.
ByteString WithHandshakeInPieces(const ByteString& bytes, size_t pieceBytes);

// The last byte of the first record of a type changed; nothing is when there is no such record.
ByteString WithLastByteChanged(const ByteString& bytes, RecordType type);

}  // namespace velmora::interop
