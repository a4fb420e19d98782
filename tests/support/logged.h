#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// The log records that action writes while loglevel is so, each as "LEVEL TEXT". Needs log_file_fake.cpp. The settings
// are afterwards as they were.
std::vector<ByteString> Logged(int32_t loglevel, const std::function<void()>& action);

}  // namespace velmora
