#pragma once

#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// XML as lines for people: one element a line, indented by two spaces a level, an element without children with its
// text and end tag on its line. Tags and texts stay as they are but for the white space around them, and nothing is
// checked: text that is not well-formed comes out in some layout, whole.
std::vector<ByteString> LayOutXml(std::string_view xml);

}  // namespace velmora::ctl
