#include "tools/velmoractl/call_options.h"

#include <optional>

#include "provider/dialled_digits.h"
#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr uint32_t kMaxSeconds = 86400;

}  // namespace

ByteString ReadDigits(const ByteString& number, ByteString& digits) {
    digits = DialledDigits(std::u16string(number.begin(), number.end()));
    if (!digits.empty()) return {};
    return "\"" + Printable(number) + "\" holds nothing that can be dialled: digits, \"*\" and \"#\" can.";
}

ByteString ReadSeconds(const Arguments& arguments, const ByteString& option, uint32_t& seconds) {
    if (!arguments.Has(option)) return {};
    const std::optional<uint32_t> number = ParseWholeNumber(arguments.options.at(option), kMaxSeconds);
    seconds = number.value_or(seconds);
    return number ? ByteString() : option + " takes whole seconds, at most 86400.";
}

}  // namespace velmora::ctl
