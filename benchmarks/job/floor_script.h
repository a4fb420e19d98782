#pragma once

#include <cstdint>

namespace velmora {

// What the floor plays: the bytes of one job, as the provider and the PBX exchange them, ready to be sent and logged.
// The file holds this structure and behind it the bytes that its pieces name. Driver and floor are built from the same
// sources for the same processor, so it stands in the file as it stands in memory.

struct FloorPiece {
    uint32_t position;  // in the file
    uint32_t bytes;     // 0: nothing
};

// One send of the provider.
struct FloorRequest {
    FloorPiece wire;
    FloorPiece records[2];  // of the trace log, each written by one call; only at level 5
    uint64_t spinTicks;     // of the processor's time stamp counter: what TLS costs the best client
};

// One message of the PBX. Those of a job are told apart by their lengths.
struct FloorMessage {
    uint32_t wireBytes;
    uint32_t isAnswered;  // 1 when the provider answers it with its next request
    FloorPiece record;
    uint64_t spinTicks;
};

struct FloorScript {
    // How a message on the wire starts: with a header, and in that its length in two bytes, big-endian. The length
    // counts the header in or does not.
    uint32_t headerBytes;
    uint32_t lengthPosition;
    uint32_t lengthCountsHeader;

    // The handshake: what the client sends at the start and when the first flight of the server is there. With the
    // second flight the requests begin. No bytes in the clear.
    FloorRequest clientFlights[2];
    uint32_t serverFlightBytes[2];

    uint32_t requestCount;
    uint32_t messageCount;
    FloorRequest requests[64];
    FloorMessage messages[4];
};

}  // namespace velmora
