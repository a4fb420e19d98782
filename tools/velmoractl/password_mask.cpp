#include "tools/velmoractl/password_mask.h"

namespace velmora::ctl {
namespace {

constexpr std::string_view kMask = "***";
constexpr std::string_view kName = "password";

// Whether the tag that starts behind "<" or "</" is a password element's, with or without a prefix.
bool IsPasswordTag(std::string_view tag) {
    std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/>"));
    const size_t colon = name.find(':');
    if (colon != std::string_view::npos) name.remove_prefix(colon + 1);
    return name == kName;
}

// Behind the first opening tag; npos when there is none.
size_t FindContent(std::string_view text) {
    for (size_t position = text.find('<'); position != std::string_view::npos;
         position = text.find('<', position + 1)) {
        if (!IsPasswordTag(text.substr(position + 1))) continue;
        const size_t end = text.find('>', position);
        return end == std::string_view::npos ? text.size() : end + 1;
    }
    return std::string_view::npos;
}

// Where the last closing tag stands that is not before start; the end of the text when there is none.
size_t FindLastClosingTag(std::string_view text, size_t start) {
    for (size_t position = text.rfind("</"); position != std::string_view::npos && position >= start;
         position = text.rfind("</", position - 1)) {
        if (IsPasswordTag(text.substr(position + 2))) return position;
        if (position == 0) break;
    }
    return text.size();
}

}  // namespace

ByteString MaskPassword(std::string_view text) {
    const size_t start = FindContent(text);
    if (start == std::string_view::npos) return ByteString(text);
    ByteString masked(text.substr(0, start));
    masked += kMask;
    masked += text.substr(FindLastClosingTag(text, start));
    return masked;
}

}  // namespace velmora::ctl
