// A tree from each message of a bundle, two look-ups in it, and its end: our XML reader beside others'. Each takes a
// document as its usual user hands it over, from bytes that it may not change, and finds elements by local names.

#include <expat.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <tinyxml2.h>

#include <algorithm>
#include <list>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "benchmarks/csta_messages.h"
#include "benchmarks/ratio_table.h"
#include "benchmarks/same_result.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

std::string_view LocalName(std::string_view name) {
    return name.substr(name.find(':') + 1);  // from the start when there is none
}

// Follows path down from element. A node is anything that is false when it is none; findChild(node, local name) gives
// the first child of that name.
template <typename Node, typename FindChild>
Node Follow(Node element, std::string_view path, const FindChild& findChild) {
    while (element && !path.empty()) {
        const std::string_view step = path.substr(0, path.find('/'));
        element = findChild(element, step);
        path.remove_prefix(std::min(step.size() + 1, path.size()));
    }
    return element;
}

class OurTree {
public:
    explicit OurTree(const ByteString& xml) : root(xml, true) {}

    std::string_view TextAt(std::string_view path) const { return root.textAt(path); }

private:
    XmlNode root;
};

class PugiTree {
public:
    explicit PugiTree(const ByteString& xml) { document.load_buffer(xml.data(), xml.size()); }

    std::string_view TextAt(std::string_view path) const {
        return Follow(document.document_element(), path, FindChild).text().get();
    }

private:
    static pugi::xml_node FindChild(const pugi::xml_node& element, std::string_view name) {
        for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
            if (LocalName(child.name()) == name) return child;
        }
        return {};
    }

    pugi::xml_document document;
};

class TinyTree {
public:
    explicit TinyTree(const ByteString& xml) { document.Parse(xml.data(), xml.size()); }

    std::string_view TextAt(std::string_view path) const {
        const tinyxml2::XMLElement* const found = Follow(document.RootElement(), path, FindChild);
        const char* const text = found != nullptr ? found->GetText() : nullptr;
        return text != nullptr ? text : "";
    }

private:
    static const tinyxml2::XMLElement* FindChild(const tinyxml2::XMLElement* element, std::string_view name) {
        const tinyxml2::XMLElement* child = element->FirstChildElement();
        while (child != nullptr && LocalName(child->Name()) != name) child = child->NextSiblingElement();
        return child;
    }

    tinyxml2::XMLDocument document;
};

class LibxmlTree {
public:
    explicit LibxmlTree(const ByteString& xml)
        : document(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", nullptr, kOptions), xmlFreeDoc) {}

    std::string_view TextAt(std::string_view path) const {
        const xmlNode* const found = Follow<const xmlNode*>(xmlDocGetRootElement(document.get()), path, FindChild);
        if (found == nullptr || found->children == nullptr) return {};
        return Characters(found->children->content);
    }

private:
    static constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOBLANKS;

    static std::string_view Characters(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

    static const xmlNode* FindChild(const xmlNode* element, std::string_view name) {
        const xmlNode* child = element->children;
        while (child != nullptr && Characters(child->name) != name) child = child->next;  // without its prefix
        return child;
    }

    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document;
};

// Expat makes no tree. This is the least that holds what the others hold.
class ExpatTree {
public:
    explicit ExpatTree(const ByteString& xml) {
        const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                                  XML_ParserFree);
        XML_SetUserData(parser.get(), this);
        XML_SetElementHandler(parser.get(), Start, End);
        XML_SetCharacterDataHandler(parser.get(), Text);
        XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1);
    }

    std::string_view TextAt(std::string_view path) const {
        const Element* const found = Follow<const Element*>(&document.children.front(), path, FindChild);
        return found != nullptr ? found->text : std::string_view();
    }

private:
    struct Element {
        std::string name;
        std::string text;
        std::vector<std::pair<std::string, std::string>> attributes;
        std::list<Element> children;
    };

    static void XMLCALL Start(void* tree, const XML_Char* name, const XML_Char** attributes) {
        std::vector<Element*>& open = static_cast<ExpatTree*>(tree)->open;
        Element& element = open.back()->children.emplace_back();
        element.name = name;
        for (; *attributes != nullptr; attributes += 2) element.attributes.emplace_back(attributes[0], attributes[1]);
        open.push_back(&element);
    }

    static void XMLCALL End(void* tree, const XML_Char* /*name*/) { static_cast<ExpatTree*>(tree)->open.pop_back(); }

    static void XMLCALL Text(void* tree, const XML_Char* text, int length) {
        static_cast<ExpatTree*>(tree)->open.back()->text.append(text, static_cast<size_t>(length));
    }

    static const Element* FindChild(const Element* element, std::string_view name) {
        for (const Element& child : element->children) {
            if (LocalName(child.name) == name) return &child;
        }
        return nullptr;
    }

    Element document;
    std::vector<Element*> open = {&document};
};

// All that the look-ups of a bundle find.
template <typename Tree>
std::string TextsOf(const CstaBundle& bundle) {
    std::string texts;
    for (const CstaMessage& message : bundle.messages) {
        const Tree tree(message.xml);
        for (const ByteString& path : message.paths) texts.append(tree.TextAt(path)).append("\n");
    }
    return texts;
}

template <typename Tree>
void AddTree(const CstaBundle& bundle, const std::string& contender) {
    RequireTheSame("xml", bundle.name, contender, TextsOf<Tree>(bundle));
    AddContender("xml", bundle.name, contender, [messages = bundle.messages] {
        for (const CstaMessage& message : messages) {
            const Tree tree(message.xml);
            for (const ByteString& path : message.paths) benchmark::DoNotOptimize(tree.TextAt(path).data());
        }
    });
}

void AddAll() {
    for (const CstaBundle& bundle : CstaBundles()) {
        AddTree<OurTree>(bundle, kOurs);
        AddTree<PugiTree>(bundle, "pugixml");
        AddTree<TinyTree>(bundle, "tinyxml2");
        AddTree<LibxmlTree>(bundle, "libxml2");
        AddTree<ExpatTree>(bundle, "Expat");
    }
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    velmora::AddAll();
    return velmora::RunRatioTable(argc, argv);
}
