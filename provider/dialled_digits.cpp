#include "provider/dialled_digits.h"

namespace velmora {

ByteString DialledDigits(std::u16string_view address) {
    ByteString digits;
    for (const char16_t character : address) {
        const bool dialled = (character >= u'0' && character <= u'9') || character == u'*' || character == u'#';
        if (dialled) digits += static_cast<char>(character);
    }
    return digits;
}

}  // namespace velmora
