#pragma once

#include <cstdint>
#include <string_view>

#include "tools/velmoractl/command_line.h"

namespace velmora::ctl {

// What the commands that call a number have in common. Each gives what is wrong as a sentence, else nothing.

// The digits to dial of a number as people write it.
ByteString ReadDigits(const ByteString& number, ByteString& digits);

// An option's time in whole seconds; seconds stays as it is without the option.
ByteString ReadSeconds(const Arguments& arguments, const ByteString& option, uint32_t& seconds);

}  // namespace velmora::ctl
