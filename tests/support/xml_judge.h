#pragma once

#include <string>

namespace velmora {

// Whether a document (in ASCII) is well-formed XML and complete, as the XML reader of Windows (MSXML) sees it.
bool IsWellFormedXml(const std::string& document);

}  // namespace velmora
