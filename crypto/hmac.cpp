#include "crypto/hmac.h"

#include "crypto/hmac_key.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace velmora {

ByteString hmacMd5(const ByteString& key, const ByteString& data) {
    return HmacKey<Md5State>(key).digest({data});
}

ByteString hmacSha1(const ByteString& key, const ByteString& data) {
    return HmacKey<Sha1State>(key).digest({data});
}

}  // namespace velmora
