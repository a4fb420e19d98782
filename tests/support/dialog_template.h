#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// A dialog template in the extended format (Microsoft's page on DLGTEMPLATEEX), taken apart.

// Positions and sizes are in dialog units.
struct TemplateItem {
    int32_t id = 0;
    std::string windowClass;  // in lower case
    std::string text;
    uint32_t style = 0;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    uint32_t extendedStyle = 0;
    uint32_t helpId = 0;
    uint32_t creationBytes = 0;

    bool operator==(const TemplateItem&) const = default;
};

struct DialogTemplate {
    uint16_t version = 0;
    uint16_t signature = 0;
    uint32_t helpId = 0;
    uint32_t extendedStyle = 0;
    uint32_t style = 0;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    std::string menu;         // empty when it has none
    std::string windowClass;  // empty when it is a dialog box like any other
    std::string caption;
    int fontPoints = 0;
    int fontWeight = 0;
    bool fontItalic = false;
    int fontCharset = 0;
    std::string fontName;
    std::vector<TemplateItem> items;
};

// Takes apart the template in these bytes; its texts must be ASCII. One that ends too early, or that leaves more than
// its padding over, fails the test.
DialogTemplate ParseDialogTemplate(const std::string& bytes);

}  // namespace velmora
