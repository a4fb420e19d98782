#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// Entity references in XML text, "&" up to the next ";":
//
//   &apos; &quot; &amp; &lt; &gt;   the character of that name, in exactly this spelling
//   &#65;  &#x41;                   the character of that decimal or hexadecimal number, as UTF-8
//
// Any other name, and a "&" with no ";" behind it, stays as it stands.

// Appends raw to text, its references replaced. What replaced one is not decoded again: "&amp;lt;" gives "&lt;".
void appendDecoded(ByteString& text, std::string_view raw);

}  // namespace velmora
