#include "tools/alert_watch.h"

#include "config/big_endian.h"
#include "tls/protocol.h"

namespace velmora {

std::vector<SeenAlert> AlertWatch::Follow(const ByteString& bytes) {
    std::vector<SeenAlert> alerts;
    for (const char byte : bytes) {
        if (header.size() < kRecordHeaderBytes) {
            header += byte;
            if (header.size() < kRecordHeaderBytes) continue;
            fragmentBytes = ReadBigEndian(header.substr(3));
            alert.clear();
        } else {
            --fragmentBytes;
            if (alert.size() < kAlertBytes) alert += byte;
        }
        if (fragmentBytes > 0) continue;

        // A record has ended.
        const auto type = static_cast<RecordType>(header[0]);
        header.clear();
        if (type == RecordType::kChangeCipherSpec) cipherChanged = true;
        if (type != RecordType::kAlert || alert.size() < kAlertBytes) continue;
        if (cipherChanged) {
            alerts.push_back({});
        } else {
            alerts.push_back({true, static_cast<uint8_t>(alert[0]), static_cast<uint8_t>(alert[1])});
        }
    }
    return alerts;
}

}  // namespace velmora
