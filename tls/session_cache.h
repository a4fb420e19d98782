#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

#include "config/byte_string.h"

namespace velmora {

// What a server keeps of a session, to resume it without the RSA operation.
struct CachedSession {
    int64_t time = 0;          // seconds since 1970
    uint16_t cipherSuite = 0;  // its number
    ByteString masterSecret;   // 48 bytes
    uint64_t ordinal = 0;      // of the sessions stored so far, when this one was stored first
};

// The sessions of all servers in the process. No lock: all handshakes that use it run on one thread.
//
// A session's time lies 5 + 12000 / (sessions + 10) seconds ahead of when it was stored or resumed last, the session
// itself counted: 1,095 seconds for the first one, 305 when there are 30.
class SessionCache {
public:
    // The limit. The one stored first makes room for a new one.
    static constexpr size_t kMaxSessions = 1024;

    // Stores a session, or its new secret and suite when there is one of this id.
    void Store(const ByteString& id, uint16_t cipherSuite, const ByteString& masterSecret);

    // The session of this id, to be resumed, with its time set anew. It can be resumed once its time has come, and not
    // before: one that is asked for too early is forgotten, and none is given. Keep.
    std::optional<CachedSession> Resume(const ByteString& id);

    size_t Count() const { return sessions.size(); }
    void Clear() { sessions.clear(); }

private:
    void SetTime(CachedSession& session) const;
    void MakeRoom();

    std::map<ByteString, CachedSession> sessions;  // ordered bytewise
    uint64_t storedSoFar = 0;
};

extern SessionCache sessionCache;

}  // namespace velmora
