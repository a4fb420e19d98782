// Any text of 16-bit units as a dialable address.
#include "provider/dialled_digits.h"

#include <string>

#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    std::u16string address;
    ByteString expected;
    for (FuzzInput input(data, bytes); !input.AtEnd();) {
        const char16_t unit = input.U16();
        address += unit;
        if ((unit >= u'0' && unit <= u'9') || unit == u'*' || unit == u'#') expected += static_cast<char>(unit);
    }
    Expect(DialledDigits(address) == expected, "digits, star and hash are dialled");
    return 0;
}
