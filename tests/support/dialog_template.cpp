#include "tests/support/dialog_template.h"

#include <gtest/gtest.h>

#include <cctype>
#include <map>

namespace velmora {
namespace {

constexpr size_t kItemAlignment = 4;

// The classes that a template names by a number behind the mark.
constexpr uint16_t kNumberMark = 0xFFFF;
const std::map<uint16_t, std::string> kClassOfNumber = {{0x0080, "button"},    {0x0081, "edit"},
                                                        {0x0082, "static"},    {0x0083, "listbox"},
                                                        {0x0084, "scrollbar"}, {0x0085, "combobox"}};

// Takes little-endian numbers and texts off the front of some bytes; zeros, and a failed test, beyond their end.
class Reader {
public:
    explicit Reader(const std::string& source) : bytes(source) {}

    uint8_t U8() {
        if (position >= bytes.size()) {
            ADD_FAILURE() << "the template ends too early";
            return 0;
        }
        return static_cast<uint8_t>(bytes[position++]);
    }
    uint16_t U16() {
        const uint16_t low = U8();
        return static_cast<uint16_t>(low | U8() << 8);
    }
    uint32_t U32() {
        const uint32_t low = U16();
        return low | uint32_t{U16()} << 16;
    }
    int S16() { return static_cast<int16_t>(U16()); }

    // UTF-16, up to its terminating zero.
    std::string Text() {
        std::string text;
        for (uint16_t unit = U16(); unit != 0; unit = U16()) {
            EXPECT_LT(unit, 0x80) << "not ASCII";
            text += static_cast<char>(unit);
        }
        return text;
    }

    // A text, or a number behind the mark, which comes as "#" and the number.
    std::string TextOrNumber() {
        const size_t start = position;
        if (U16() == kNumberMark) return "#" + std::to_string(U16());
        position = start;
        return Text();
    }

    void Align(size_t alignment) {
        while (position % alignment != 0) U8();
    }
    void Skip(size_t count) {
        for (size_t index = 0; index < count; ++index) U8();
    }
    size_t Left() const { return bytes.size() - position; }

private:
    const std::string& bytes;
    size_t position = 0;
};

// The name of a window class that a template gives as text or as number.
std::string ClassName(std::string text) {
    for (const auto& [number, name] : kClassOfNumber) {
        if (text == "#" + std::to_string(number)) return name;
    }
    for (char& character : text) character = static_cast<char>(std::tolower(character));
    return text;
}

TemplateItem TakeItem(Reader& reader) {
    reader.Align(kItemAlignment);
    TemplateItem item;
    item.helpId = reader.U32();
    item.extendedStyle = reader.U32();
    item.style = reader.U32();
    item.x = reader.S16();
    item.y = reader.S16();
    item.width = reader.S16();
    item.height = reader.S16();
    item.id = static_cast<int32_t>(reader.U32());
    item.windowClass = ClassName(reader.TextOrNumber());
    item.text = reader.TextOrNumber();
    item.creationBytes = reader.U16();
    reader.Skip(item.creationBytes);
    return item;
}

}  // namespace

DialogTemplate ParseDialogTemplate(const std::string& bytes) {
    Reader reader(bytes);
    DialogTemplate dialog;
    dialog.version = reader.U16();
    dialog.signature = reader.U16();
    dialog.helpId = reader.U32();
    dialog.extendedStyle = reader.U32();
    dialog.style = reader.U32();
    const size_t itemCount = reader.U16();
    dialog.x = reader.S16();
    dialog.y = reader.S16();
    dialog.width = reader.S16();
    dialog.height = reader.S16();
    dialog.menu = reader.TextOrNumber();
    dialog.windowClass = reader.TextOrNumber();
    dialog.caption = reader.Text();
    dialog.fontPoints = reader.S16();
    dialog.fontWeight = reader.S16();
    dialog.fontItalic = reader.U8() != 0;
    dialog.fontCharset = reader.U8();
    dialog.fontName = reader.Text();
    for (size_t index = 0; index < itemCount; ++index) dialog.items.push_back(TakeItem(reader));
    EXPECT_LT(reader.Left(), kItemAlignment) << "something lies behind the last item";
    return dialog;
}

}  // namespace velmora
