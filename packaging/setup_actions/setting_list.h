#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora::setup {

// Settings on their way from the part of the installer that knows its properties to the part that may write to the
// registry. All that the two share is one text.

struct SettingChange {
    ByteString name;
    std::optional<ByteString> value;  // what the setting is to hold; none: it is to be deleted

    friend bool operator==(const SettingChange&, const SettingChange&) = default;
};

// One line a change: "port=343433", or "port" to delete it. Values are hexadecimal, so that any byte gets through
// Windows Installer, whose text is UTF-16.
ByteString EncodeChanges(const std::vector<SettingChange>& changes);

// The changes in such a text. A line whose value is not hexadecimal is left out.
std::vector<SettingChange> DecodeChanges(std::string_view text);

}  // namespace velmora::setup
