#pragma once

#include <cstddef>
#include <utility>

namespace velmora {

// The memory that a tree lives in: blocks that are given back together, by the tree's root. Whatever was made in them
// has to be destroyed before.
class XmlMemory {
public:
    XmlMemory() = default;
    XmlMemory(XmlMemory&& other) noexcept : newest(std::exchange(other.newest, nullptr)) {}
    XmlMemory(const XmlMemory&) = delete;
    XmlMemory& operator=(const XmlMemory&) = delete;
    ~XmlMemory();

    // Another block of so many bytes, aligned for any object.
    std::byte* addBlock(size_t bytes);

private:
    struct Block;

    Block* newest = nullptr;
};

}  // namespace velmora
