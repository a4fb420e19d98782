#include "tests/support/file_bytes.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace velmora {

ByteString FileBytes(const ByteString& path) {
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) {
        std::perror(path.c_str());
        std::abort();
    }
    ByteString bytes;
    for (int byte = std::fgetc(file.get()); byte != EOF; byte = std::fgetc(file.get())) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

}  // namespace velmora
