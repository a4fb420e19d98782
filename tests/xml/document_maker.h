#pragma once

#include <cstddef>
#include <functional>
#include <utility>

#include "config/byte_string.h"

namespace velmora {

// Makes well-formed documents out of all that we and Expat read alike: elements, attributes, namespaces, references,
// CDATA sections, comments, processing instructions and white space. Left out is what we read otherwise on purpose:
// letters outside ASCII in names, spaces around "=", document types, and the line ends and tabs that XML normalizes.
//
// Whoever makes the choices decides what a document holds. Nothing but zeros gives a short one.
class DocumentMaker {
public:
    // choices gives any number each time; what counts is its remainder, never by more than 256.
    explicit DocumentMaker(std::function<size_t()> choices) : next(std::move(choices)) {}

    ByteString Document();

private:
    using Part = ByteString (DocumentMaker::*)();

    size_t Choose(size_t count) { return next() % count; }
    template <size_t count>
    ByteString OneOf(const char* const (&texts)[count]) {
        return texts[Choose(count)];
    }
    ByteString Maybe(const ByteString& text) { return Choose(2) == 0 ? text : ""; }
    ByteString Several(Part make, size_t atMost);

    ByteString Misc() { return Several(&DocumentMaker::OneMisc, 2); }
    ByteString OneMisc();
    ByteString Aside();
    ByteString Comment();
    ByteString Instruction();

    ByteString Name();
    ByteString NameCharacter();
    unsigned CodePoint();
    ByteString AnyCharacter();
    ByteString TextCharacter();
    ByteString Reference();
    ByteString NumericReference();
    ByteString Characters();
    ByteString TextPiece();
    ByteString Cdata();

    ByteString ValuePiece() { return Choose(3) == 0 ? Reference() : Characters(); }
    ByteString Attribute(size_t number);
    ByteString Attributes();
    ByteString Element(size_t depth);
    ByteString Content(size_t depth);

    std::function<size_t()> next;
};

}  // namespace velmora
