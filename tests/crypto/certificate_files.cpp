#include "tests/crypto/certificate_files.h"

#include "tests/support/file_bytes.h"

namespace velmora {

ByteString certificateFile(const ByteString& name) {
    return FileBytes(ByteString(VELMORA_CERTIFICATES) + "/" + name + ".der");
}

}  // namespace velmora
