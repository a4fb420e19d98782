#include "tools/velmoractl/csta_record.h"

#include "tools/velmoractl/password_mask.h"
#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr std::string_view kSent = "CSTA Tx: ";
constexpr std::string_view kReceived = "CSTA Rx: ";

// Where the root element's "<" stands, behind the declaration and comments; npos when there is none.
size_t FindRoot(std::string_view xml) {
    size_t position = xml.find('<');
    while (position != std::string_view::npos) {
        const std::string_view rest = xml.substr(position);
        std::string_view end;
        if (rest.starts_with("<?")) end = "?>";
        if (rest.starts_with("<!")) end = ">";
        if (rest.starts_with("<!--")) end = "-->";
        if (end.empty()) return position;
        position = xml.find(end, position);
        if (position != std::string_view::npos) position = xml.find('<', position);
    }
    return position;
}

// The length of the tag at the start of text, its ">" included; a ">" in quotes does not end it. npos when it is open.
size_t TagLength(std::string_view text) {
    char quote = '\0';
    for (size_t index = 0; index < text.size(); ++index) {
        const char character = text[index];
        if (quote != '\0') {
            if (character == quote) quote = '\0';
        } else if (character == '"' || character == '\'') {
            quote = character;
        } else if (character == '>') {
            return index + 1;
        }
    }
    return std::string_view::npos;
}

}  // namespace

std::optional<CstaRecord> CstaRecordIn(std::string_view recordText) {
    if (recordText.starts_with(kSent)) return CstaRecord{true, MaskPassword(recordText.substr(kSent.size()))};
    if (recordText.starts_with(kReceived)) return CstaRecord{false, MaskPassword(recordText.substr(kReceived.size()))};
    return {};
}

bool IsWholeMessage(std::string_view xml) {
    if (xml.find('<') == std::string_view::npos) return true;
    const size_t root = FindRoot(xml);
    if (root == std::string_view::npos) return false;
    const std::string_view element = Trimmed(xml.substr(root));
    const size_t tagLength = TagLength(element);
    if (tagLength == std::string_view::npos) return false;
    if (element.substr(0, tagLength).ends_with("/>")) return true;

    if (!element.ends_with('>')) return false;
    const size_t lastTag = element.rfind("</");
    if (lastTag == std::string_view::npos) return false;
    const std::string_view name = element.substr(1, element.find_first_of(" \t\r\n/>") - 1);
    const std::string_view lastName = Trimmed(element.substr(lastTag + 2, element.size() - lastTag - 3));
    return name == lastName;
}

}  // namespace velmora::ctl
