#include "xml/xml_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace velmora {
namespace {

TEST(XmlMemory, GivesBlocksOfTheirOwnThatAreAlignedForAnyObject) {
    constexpr size_t kSizes[] = {1, 16, 100, 5000};
    XmlMemory memory;
    std::vector<std::byte*> blocks;
    for (const size_t bytes : kSizes) {
        blocks.push_back(memory.addBlock(bytes));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(blocks.back()) % alignof(std::max_align_t), 0U);
        std::fill_n(blocks.back(), bytes, static_cast<std::byte>(blocks.size()));
    }
    for (size_t index = 0; index < blocks.size(); ++index) {
        const auto filling = static_cast<std::byte>(index + 1);
        EXPECT_EQ(std::count(blocks[index], blocks[index] + kSizes[index], filling),
                  static_cast<std::ptrdiff_t>(kSizes[index]));
    }
}

TEST(XmlMemory, KeepsItsBlocksWhenItMoves) {
    std::optional<XmlMemory> memory(std::in_place);
    std::byte* const block = memory->addBlock(1);
    *block = std::byte{7};
    const XmlMemory moved(std::move(*memory));
    memory.reset();
    EXPECT_EQ(*block, std::byte{7});
}

}  // namespace
}  // namespace velmora
