#pragma once

#include "config/byte_string.h"
#include "xml/xml_node.h"

namespace velmora::ctl {

// A CSTA message in one line, without its name: "from 40@example.com to 49301234". The messages of a session and of a
// call are put into words, an event gives its call, device and cause, any other message its fields. Empty for a message
// without fields.
ByteString SummariseMessage(const XmlNode& message);

// All fields of a message as "name text, name text", whatever the message is; cut at some 100 characters.
ByteString SummariseFields(const XmlNode& message);

}  // namespace velmora::ctl
