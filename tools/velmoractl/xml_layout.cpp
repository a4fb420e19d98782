#include "tools/velmoractl/xml_layout.h"

#include <algorithm>

#include "tools/velmoractl/plain_text.h"

namespace velmora::ctl {
namespace {

constexpr size_t kIndentSpaces = 2;
constexpr size_t kMaxDepth = 20;  // deeper elements are indented no further

// The tag, comment, declaration or CDATA section at the start of xml, which begins with "<"; all of it when it is open.
std::string_view TakeTag(std::string_view xml) {
    std::string_view end = ">";
    if (xml.starts_with("<!--")) end = "-->";
    if (xml.starts_with("<![CDATA[")) end = "]]>";
    const size_t found = xml.find(end);
    return found == std::string_view::npos ? xml : xml.substr(0, found + end.size());
}

class Layout {
public:
    void Tag(std::string_view tag) {
        if (tag.starts_with("</")) {
            if (depth > 0) --depth;
            if (!elementOpen) NewLine();
            line += tag;
            elementOpen = false;
            return;
        }
        NewLine();
        line += tag;
        const bool opens = !tag.starts_with("<?") && !tag.starts_with("<!") && !tag.ends_with("/>");
        if (opens) ++depth;
        elementOpen = opens;
    }

    void Text(std::string_view text) {
        if (text.empty()) return;
        if (!elementOpen) NewLine();
        line += text;
    }

    std::vector<ByteString> Lines() {
        NewLine();
        return lines;
    }

private:
    void NewLine() {
        if (!Trimmed(line).empty()) lines.push_back(line);
        line.assign(kIndentSpaces * std::min(depth, kMaxDepth), ' ');
    }

    std::vector<ByteString> lines;
    ByteString line;
    size_t depth = 0;
    bool elementOpen = false;  // the line holds a start tag, and perhaps text, and nothing else yet
};

}  // namespace

std::vector<ByteString> LayOutXml(std::string_view xml) {
    Layout layout;
    while (!xml.empty()) {
        const std::string_view text = xml.substr(0, xml.find('<'));
        layout.Text(Trimmed(text));
        xml.remove_prefix(text.size());
        if (xml.empty()) break;
        const std::string_view tag = TakeTag(xml);
        layout.Tag(tag);
        xml.remove_prefix(tag.size());
    }
    return layout.Lines();
}

}  // namespace velmora::ctl
