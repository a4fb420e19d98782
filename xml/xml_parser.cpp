#include "xml/xml_parser.h"

#include <algorithm>
#include <cstddef>
#include <new>
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

constexpr size_t kUsualDepth = 4;              // elements; deeper documents are read as well
constexpr size_t kBytesPerBlockElement = 256;  // of the document
constexpr size_t kFewestBlockElements = 4;
constexpr size_t kMostBlockElements = 120;  // some 16 KB

// Makes the elements and attributes of a tree, one behind the other, in the memory that its root owns. A CSTA message
// has an element in some 50 bytes: it takes about five blocks, and the last leaves little over.
class Maker {
public:
    Maker(XmlMemory& treeMemory, size_t documentBytes)
        : memory(treeMemory),
          blockBytes(sizeof(XmlNode) *
                     std::clamp(documentBytes / kBytesPerBlockElement, kFewestBlockElements, kMostBlockElements)) {}

    template <typename Item, typename... Parts>
    Item& make(const Parts&... parts) {
        static_assert(sizeof(Item) <= sizeof(XmlNode));
        static_assert(alignof(Item) == alignof(void*), "where an item ends, the next can start");
        if (bytesLeft < sizeof(Item)) {
            unused = memory.addBlock(blockBytes);
            bytesLeft = blockBytes;
        }
        Item& item = *new (unused) Item(parts...);
        unused += sizeof(Item);
        bytesLeft -= sizeof(Item);
        return item;
    }

private:
    XmlMemory& memory;
    size_t blockBytes;
    std::byte* unused = nullptr;  // in the newest block
    size_t bytesLeft = 0;         // from there to its end
};

// An element whose content is being read.
struct OpenElement {
    XmlNode* node = nullptr;
    std::string_view name;  // as its start tag gives it
};

// Its functions are defined in place: the compiler makes one of them all and keeps the scanner in registers.
class Parser {
public:
    Parser(std::string_view document, XmlNode& rootNode)
        : scanner(document), root(rootNode), maker(rootNode.memory, document.size()) {
        open.reserve(kUsualDepth);
    }

    void readDocument() {
        for (;;) {
            scanner.takeUpTo(kTagStart);
            if (scanner.atEnd() || scanner.at(kEndTagStart)) return;
            if (skipCommentOrInstruction()) continue;
            readRootTag();
            readContent();
        }
    }

private:
    void readRootTag() {
        scanner.take(kTagStart);
        const std::string_view name = scanner.takeName();
        const QualifiedName parts = split(name);
        root.prefix = parts.prefix;
        root.localName = parts.localName;
        readStartTag(root, name);
    }

    void readChildTag(XmlNode& parent) {
        scanner.take(kTagStart);
        const std::string_view name = scanner.takeName();
        XmlNode& child = maker.make<XmlNode>(split(name), root.caseSensitive);
        parent.children.append(child);
        readStartTag(child, name);
    }

    // Reads the start tag of element from behind its name. The element is open from then on, unless the tag ends with
    // "/>".
    void readStartTag(XmlNode& element, std::string_view name) {
        if (!readTag(&element)) return;
        OpenElement& opened = open.emplace_back();
        opened.node = &element;
        opened.name = name;
    }

    // Reads on until no element is open any more.
    void readContent() {
        while (!open.empty()) {
            XmlNode& element = *open.back().node;
            const bool keepsText = open.size() > 1;  // the root does not

            if (!scanner.at(kTagStart)) {
                const std::string_view run = scanner.takeUpTo(kTagStart);
                if (keepsText) appendDecoded(element.text, run);
            }
            if (scanner.atEnd()) {
                closeUnfinished();
            } else if (scanner.take(kEndTagStart)) {
                readEndTag();
            } else if (scanner.take(kCdataStart)) {
                const std::string_view cdata = scanner.takeThrough(kCdataEnd);
                if (keepsText) element.text += cdata;
            } else if (!skipCommentOrInstruction()) {
                readChildTag(element);
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
        readTag(nullptr);
        open.pop_back();
    }

    // Reads a tag from behind its name to its end, its attributes into element; without an element they are dropped.
    // False when the end is "/>"; true when it is ">", as of most tags at once, or the document's.
    bool readTag(XmlNode* element) { return scanner.take(kTagEnd) || readAttributes(element); }

    bool readAttributes(XmlNode* element) {
        for (;;) {
            scanner.skipWhitespace();
            if (scanner.atEnd() || scanner.take(kTagEnd)) return true;
            if (scanner.take(kEmptyTagEnd)) return false;
            // There is no telling where a malformed tag was meant to end, and no attempt at it. Keep.
            if (!readAttribute(element)) scanner.skipRest();
        }
    }

    // Reads one attribute: a name, "=" with no space on either side, and a value. False when something else comes.
    bool readAttribute(XmlNode* element) {
        const std::string_view name = scanner.takeName();
        if (name.empty() || !scanner.take(kEquals)) return false;
        const std::optional<std::string_view> value = scanner.takeValue();
        if (!value) return false;
        if (element == nullptr) return true;

        XmlAttribute& attribute = maker.make<XmlAttribute>(split(name));
        element->attributes.append(attribute);
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

    // The parts are as they are in the tree, and hold until the next call.
    QualifiedName split(std::string_view name) {
        if (!root.caseSensitive) {
            lowered = LowerCase(name);
            name = lowered;
        }
        const size_t colon = name.find(':');
        if (colon == std::string_view::npos) return {{}, name};
        return {name.substr(0, colon), name.substr(colon + 1)};
    }

    Scanner scanner;
    XmlNode& root;
    Maker maker;
    std::vector<OpenElement> open;  // outermost first
    ByteString lowered;             // the name that was split last
};

}  // namespace

void parseDocument(std::string_view document, XmlNode& root) {
    Parser(document, root).readDocument();
}

}  // namespace velmora
