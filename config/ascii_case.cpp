#include "config/ascii_case.h"

namespace velmora {

ByteString LowerCase(std::string_view text) {
    ByteString lowered(text);
    for (char& character : lowered) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return lowered;
}

}  // namespace velmora
