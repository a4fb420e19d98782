#include "tls/session_cache.h"

#include <algorithm>

#include "config/clock.h"

namespace velmora {

SessionCache sessionCache;

void SessionCache::Store(const ByteString& id, uint16_t cipherSuite, const ByteString& masterSecret) {
    if (!sessions.contains(id)) {
        MakeRoom();
        sessions[id].ordinal = storedSoFar++;
    }
    CachedSession& session = sessions[id];
    session.cipherSuite = cipherSuite;
    session.masterSecret = masterSecret;
    SetTime(session);
}

std::optional<CachedSession> SessionCache::Resume(const ByteString& id) {
    const auto found = sessions.find(id);
    if (found == sessions.end()) return {};
    CachedSession& session = found->second;
    if (session.time > UnixSeconds()) {
        sessions.erase(found);
        return {};
    }
    SetTime(session);
    return session;
}

void SessionCache::SetTime(CachedSession& session) const {
    session.time = UnixSeconds() + 5 + 12000 / (static_cast<int64_t>(sessions.size()) + 10);
}

void SessionCache::MakeRoom() {
    if (sessions.size() < kMaxSessions) return;
    sessions.erase(std::min_element(sessions.begin(), sessions.end(), [](const auto& left, const auto& right) {
        return left.second.ordinal < right.second.ordinal;
    }));
}

}  // namespace velmora
