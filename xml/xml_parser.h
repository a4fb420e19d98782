#pragma once

#include <string_view>

namespace velmora {

struct XmlNode;

void parseDocument(std::string_view document, XmlNode& root);

}  // namespace velmora
