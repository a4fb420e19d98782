// Any bytes as a chain of certificates, verified or not, and read by the rules written down once more.
#include <vector>

#include "crypto/certificate.h"
#include "crypto/certificate_chain.h"
#include "crypto/trust_store.h"
#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/quiet_log.h"
#include "tests/crypto/certificate_files.h"
#include "tests/crypto/plain_certificate.h"

namespace {

bool Trust() {
    velmora::RenderLogRecords();
    for (const char* name : {"root", "other_root", "loud_root"}) {
        velmora::trustCertificate(velmora::certificateFile(name));
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    static const bool trusted = Trust();
    Expect(trusted && trustStore.size() == 3, "three roots are trusted");

    // How many certificates, then each behind its length.
    FuzzInput input(data, bytes);
    std::vector<ByteString> certificates;
    for (unsigned count = input.U8() % 4; count > 0; --count) certificates.push_back(input.Bytes(input.U16()));
    certificates.push_back(input.Rest());
    for (const ByteString& certificate : certificates) {
        Expect(parseCertificate(certificate) == PlainCertificate(certificate), "it is read by the plain rules");
    }

    const CertificateChain skipped(certificates, kSkipVerification);
    const CertificateChain verified(certificates, "");
    Expect(skipped.certificates == certificates, "a chain keeps its certificates");
    Expect(verified.modulus.empty() || verified.modulus == skipped.modulus, "verification changes no key");
    Expect(verified.modulus.empty() || verified.commonName == skipped.commonName, "verification changes no name");
    return 0;
}
