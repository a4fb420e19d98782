#include "tls/record_mac.h"

#include <algorithm>
#include <utility>

#include "config/big_endian.h"
#include "tls/ssl3_digest.h"

namespace velmora {
namespace {

// What stands in front of the content: sequence number, type, in TLS the version, and the content's length.
ByteString MacHeader(const MacInput& input) {
    ByteString header;
    AppendBigEndian(header, input.sequence, 8);
    AppendBigEndian(header, static_cast<uint8_t>(input.type), 1);
    if (input.version >= kTls10) AppendBigEndian(header, input.version, 2);
    AppendBigEndian(header, input.content.size(), 2);
    return header;
}

template <typename Hash>
void WriteMac(const HmacKey<Hash>& key, std::string_view secret, const MacInput& input, char* target) {
    const ByteString header = MacHeader(input);
    if (input.version >= kTls10) {
        key.digest({header, input.content}, reinterpret_cast<uint8_t*>(target));
        return;
    }
    const ByteString inner = DigestBehind(Hash(), {secret, PadFor<Hash>(kPad1), header, input.content});
    const ByteString outer = Ssl3Digest<Hash>(secret, inner);
    std::copy(outer.begin(), outer.end(), target);
}

}  // namespace

RecordMac::RecordMac(MacKind kind, ByteString macSecret) : secret(std::move(macSecret)) {
    if (kind == MacKind::kMd5) key = HmacKey<Md5State>(secret);
    if (kind == MacKind::kSha1) key = HmacKey<Sha1State>(secret);
}

void RecordMac::Write(const MacInput& input, char* target) const {
    if (const auto* md5Key = std::get_if<HmacKey<Md5State>>(&key)) WriteMac(*md5Key, secret, input, target);
    if (const auto* sha1Key = std::get_if<HmacKey<Sha1State>>(&key)) WriteMac(*sha1Key, secret, input, target);
}

}  // namespace velmora
