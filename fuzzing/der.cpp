// Any bytes as DER: elements are taken until nothing is left, by the tags that the input asks for or whatever they are.
#include "crypto/der.h"

#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"

namespace {

bool IsPart(std::string_view content, std::string_view whole) {
    return content.empty() ||
           (content.data() >= whole.data() && content.data() + content.size() <= whole.data() + whole.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput fuzz(data, bytes);
    const ByteString tags = fuzz.Piece();
    const ByteString whole = fuzz.Rest();
    std::string_view input = whole;
    for (const char tag : tags) {
        const size_t before = input.size();
        const auto expected = static_cast<uint8_t>(tag);
        const std::string_view content = expected != 0 ? takeElement(expected, input) : readStringValue(input).content;
        Expect(IsPart(content, whole), "a content lies within the bytes");
        Expect(input.size() + content.size() <= before, "an element is shorter than what it was taken from");
        if (content.size() > 1 && expected % 2 == 0) input = content;  // go down
    }
    return 0;
}
