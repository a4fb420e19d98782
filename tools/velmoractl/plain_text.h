#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora::ctl {

// Text without the white space (space, tab, CR, LF) at both ends.
std::string_view Trimmed(std::string_view text);

// Text that can be shown on one line whatever it holds: each control character, NUL included, becomes a "?".
ByteString Printable(std::string_view text);

// Text filled up with spaces to a width in characters; longer text stays as it is.
ByteString Padded(std::string_view text, size_t width);

// Text with its first letter, if it is one of a to z, as a capital.
ByteString AsSentence(ByteString text);

}  // namespace velmora::ctl
