#include "xml/xml_parser.h"

#include <cstddef>
#include <optional>
#include <vector>

#include "config/ascii_case.h"
#include "xml/entities.h"
#include "xml/scanner.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

constexpr std::string_view kCdataStart = "<![CDATA[";
constexpr std::string_view kCdataEnd = "]]>";
constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCommentEnd = "-->";
constexpr std::string_view kInstructionStart = "<?";
constexpr std::string_view kInstructionEnd = "?>";
constexpr std::string_view kEndTagStart = "</";
constexpr std::string_view kTagStart = "<";
constexpr std::string_view kTagEnd = ">";
constexpr std::string_view kEmptyTagEnd = "/>";
constexpr std::string_view kEquals = "=";

constexpr size_t kUsualDepth = 8;  // elements; deeper documents are read as well

// An element whose content is being read.
struct OpenElement {
    XmlNode* node;
    std::string_view name;  // as its start tag gives it
};

// Its functions are defined in place: the compiler makes one of them all and keeps the scanner in registers.
class Parser {
public:
    Parser(std::string_view document, XmlNode& rootNode) : scanner(document), root(rootNode) {
        open.reserve(kUsualDepth);
    }

    void readDocument() {
        for (;;) {
            scanner.takeUpTo(kTagStart);
            if (scanner.atEnd() || scanner.at(kEndTagStart)) return;
            if (skipCommentOrInstruction()) continue;
            readStartTag(root);
            readContent();
        }
    }

private:
    // Reads a start tag into element, which is open from then on unless the tag ends with "/>".
    void readStartTag(XmlNode& element) {
        scanner.take(kTagStart);
        const std::string_view name = scanner.takeName();
        setName(name, element.prefix, element.localName);
        if (readAttributes(element.attributes)) open.push_back({&element, name});
    }

    // Reads on until no element is open any more.
    void readContent() {
        while (!open.empty()) {
            XmlNode& element = *open.back().node;
            const bool keepsText = open.size() > 1;  // the root does not

            const std::string_view run = scanner.takeUpTo(kTagStart);
            if (keepsText) appendDecoded(element.text, run);
            if (scanner.atEnd()) {
                closeUnfinished();
            } else if (scanner.take(kEndTagStart)) {
                readEndTag();
            } else if (scanner.take(kCdataStart)) {
                const std::string_view cdata = scanner.takeThrough(kCdataEnd);
                if (keepsText) element.text += cdata;
            } else if (!skipCommentOrInstruction()) {
                XmlNode& child = element.children.emplace_back();
                child.caseSensitive = root.caseSensitive;
                readStartTag(child);
            }
        }
    }

    // At the end of the document: only an element whose end tag has come has text. Keep.
    void closeUnfinished() {
        for (const OpenElement& unfinished : open) unfinished.node->text.clear();
        open.clear();
    }

    // Closes the innermost open element, whatever the tag's name. The tag is read like a start tag, so one that is
    // malformed takes the rest of the document with it; the element keeps its text then. Keep.
    void readEndTag() {
        scanner.skipName(open.back().name);
        std::vector<XmlAttribute> ignored;
        readAttributes(ignored);
        open.pop_back();
    }

    // Reads a tag from behind its name to its end. False when that is "/>"; true when it is ">" or the document's end.
    bool readAttributes(std::vector<XmlAttribute>& attributes) {
        for (;;) {
            scanner.skipWhitespace();
            if (scanner.atEnd() || scanner.take(kTagEnd)) return true;
            if (scanner.take(kEmptyTagEnd)) return false;
            // There is no telling where a malformed tag was meant to end, and no attempt at it. Keep.
            if (!readAttribute(attributes)) scanner.skipRest();
        }
    }

    // Reads one attribute: a name, "=" with no space on either side, and a value. False when something else comes.
    bool readAttribute(std::vector<XmlAttribute>& attributes) {
        const std::string_view name = scanner.takeName();
        if (name.empty() || !scanner.take(kEquals)) return false;
        const std::optional<std::string_view> value = scanner.takeValue();
        if (!value) return false;

        XmlAttribute& attribute = attributes.emplace_back();
        setName(name, attribute.prefix, attribute.localName);
        appendDecoded(attribute.value, *value);
        return true;
    }

    bool skipCommentOrInstruction() {
        if (scanner.take(kCommentStart)) {
            scanner.takeThrough(kCommentEnd);
            return true;
        }
        if (scanner.take(kInstructionStart)) {
            scanner.takeThrough(kInstructionEnd);
            return true;
        }
        return false;
    }

    // Splits name at its first ":".
    void setName(std::string_view name, ByteString& prefix, ByteString& localName) const {
        const size_t colon = name.find(':');
        if (colon == std::string_view::npos) {
            prefix.clear();
            localName = name;
        } else {
            prefix = name.substr(0, colon);
            localName = name.substr(colon + 1);
        }
        if (!root.caseSensitive) {
            prefix = LowerCase(prefix);
            localName = LowerCase(localName);
        }
    }

    Scanner scanner;
    XmlNode& root;
    std::vector<OpenElement> open;  // outermost first
};

}  // namespace

void parseDocument(std::string_view document, XmlNode& root) {
    Parser(document, root).readDocument();
}

}  // namespace velmora
