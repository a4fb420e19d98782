#include <cstdio>

#include "config/log_file.h"

namespace velmora {

std::FILE* OpenLogFile(const ByteString& path) {
    std::FILE* file = nullptr;
    return fopen_s(&file, path.c_str(), "w") == 0 ? file : nullptr;
}

}  // namespace velmora
