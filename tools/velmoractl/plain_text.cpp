#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr std::string_view kSpace = " \t\r\n";

}  // namespace

std::string_view Trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(kSpace);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kSpace) + 1 - start);
}

ByteString Printable(std::string_view text) {
    ByteString printable(text);
    for (char& character : printable) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x20 || code == 0x7F) character = '?';
    }
    return printable;
}

ByteString Padded(std::string_view text, size_t width) {
    ByteString padded(text);
    if (padded.size() < width) padded.append(width - padded.size(), ' ');
    return padded;
}

ByteString AsSentence(ByteString text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

}  // namespace velmora::ctl
