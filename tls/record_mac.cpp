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
Hash StartMac(const HmacKey<Hash>& key, std::string_view secret, const MacInput& input) {
    Hash hash = key.start();
    if (input.version < kTls10) {
        hash = Hash();
        hash.update(secret);
        hash.update(PadFor<Hash>(kPad1));
    }
    hash.update(MacHeader(input));
    return hash;
}

template <typename Hash>
void FinishMac(const HmacKey<Hash>& key, std::string_view secret, Hash& hash, uint16_t version, char* target) {
    if (version >= kTls10) return key.finish(hash, reinterpret_cast<uint8_t*>(target));
    const ByteString outer = Ssl3Digest<Hash>(secret, hash.digest());
    std::copy(outer.begin(), outer.end(), target);
}

}  // namespace

RecordMac::RecordMac(MacKind kind, ByteString macSecret) : secret(std::move(macSecret)) {
    if (kind == MacKind::kMd5) key = HmacKey<Md5State>(secret);
    if (kind == MacKind::kSha1) key = HmacKey<Sha1State>(secret);
}

RecordMac::State RecordMac::Start(const MacInput& input) const {
    if (const auto* md5Key = std::get_if<HmacKey<Md5State>>(&key)) return StartMac(*md5Key, secret, input);
    if (const auto* sha1Key = std::get_if<HmacKey<Sha1State>>(&key)) return StartMac(*sha1Key, secret, input);
    return {};
}

void RecordMac::Update(State& state, std::string_view piece) {
    if (auto* md5 = std::get_if<Md5State>(&state)) md5->update(piece);
    if (auto* sha1 = std::get_if<Sha1State>(&state)) sha1->update(piece);
}

void RecordMac::Finish(State& state, uint16_t version, char* target) const {
    if (auto* md5 = std::get_if<Md5State>(&state)) {
        FinishMac(std::get<HmacKey<Md5State>>(key), secret, *md5, version, target);
    }
    if (auto* sha1 = std::get_if<Sha1State>(&state)) {
        FinishMac(std::get<HmacKey<Sha1State>>(key), secret, *sha1, version, target);
    }
}

void RecordMac::Write(const MacInput& input, char* target) const {
    State state = Start(input);
    Update(state, input.content);
    Finish(state, input.version, target);
}

}  // namespace velmora
