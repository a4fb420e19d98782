#include "packaging/setup_actions/setting_list.h"

#include <algorithm>
#include <charconv>

#include "config/text_numbers.h"

namespace velmora::setup {
namespace {

std::optional<ByteString> BytesOfHex(std::string_view digits) {
    if (digits.size() % 2 != 0) return {};
    ByteString bytes;
    for (size_t at = 0; at < digits.size(); at += 2) {
        unsigned char byte = 0;
        const char* const end = digits.data() + at + 2;
        const auto [stopped, error] = std::from_chars(digits.data() + at, end, byte, 16);
        if (error != std::errc() || stopped != end) return {};
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

}  // namespace

ByteString EncodeChanges(const std::vector<SettingChange>& changes) {
    ByteString text;
    for (const SettingChange& change : changes) {
        text += change.name;
        if (change.value) text += "=" + HexText(*change.value);
        text += '\n';
    }
    return text;
}

std::vector<SettingChange> DecodeChanges(std::string_view text) {
    std::vector<SettingChange> changes;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const size_t equals = line.find('=');
        const ByteString name(line.substr(0, equals));
        if (equals == std::string_view::npos) {
            if (!name.empty()) changes.push_back({name, {}});
        } else if (const std::optional<ByteString> value = BytesOfHex(line.substr(equals + 1))) {
            changes.push_back({name, value});
        }
    }
    return changes;
}

}  // namespace velmora::setup
