#pragma once

#include "config/byte_string.h"
#include "xml/xml_node.h"

namespace velmora::pbxsim {

// A message in a few words for people, of either direction: its parts that matter ("user 40, domain example.com"),
// without its name. Empty for a message that needs no words or is not known. A password is never among them.
ByteString Summary(const XmlNode& message);

// The name of a message; "(no XML)" when it has none.
ByteString MessageName(const XmlNode& message);

// Text fit for one line: control characters become "?", and a text of more than 60 bytes is cut short with "...".
ByteString OneLine(const ByteString& text);

}  // namespace velmora::pbxsim
