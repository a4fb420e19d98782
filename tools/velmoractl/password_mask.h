#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora::ctl {

// The text with the content of its password element replaced by "***", so that a log record can be shown.
//
// The provider sends a password as it stands, unescaped, so it may look like XML itself: everything between the first
// opening "password" tag (with any prefix) and the last closing one goes, or up to the end when none closes.
ByteString MaskPassword(std::string_view text);

}  // namespace velmora::ctl
