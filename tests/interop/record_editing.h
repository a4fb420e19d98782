#pragma once

#include <cstddef>

#include "config/byte_string.h"
#include "tls/protocol.h"

namespace velmora::interop {

// Records on their way from one end to the other.

// Handshake messages that follow each other, in one record as far as they fit.
ByteString WithHandshakeInOneRecord(const ByteString& bytes);

// Handshake messages cut into records of so many bytes. Only for what is not protected yet: nothing behind a
// ChangeCipherSpec is touched.
ByteString WithHandshakeInPieces(const ByteString& bytes, size_t pieceBytes);

// The last byte of the first record of a type changed; nothing is when there is no such record.
ByteString WithLastByteChanged(const ByteString& bytes, RecordType type);

}  // namespace velmora::interop
