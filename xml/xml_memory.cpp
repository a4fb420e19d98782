#include "xml/xml_memory.h"

#include <new>

namespace velmora {

// What stands at the start of a block; the bytes that were asked for follow.
struct alignas(std::max_align_t) XmlMemory::Block {
    Block* older;
};

XmlMemory::~XmlMemory() {
    while (newest != nullptr) ::operator delete(std::exchange(newest, newest->older));
}

std::byte* XmlMemory::addBlock(size_t bytes) {
    newest = new (::operator new(sizeof(Block) + bytes)) Block{newest};
    return reinterpret_cast<std::byte*>(newest + 1);
}

}  // namespace velmora
