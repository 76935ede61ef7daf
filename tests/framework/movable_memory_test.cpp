// SPDX-License-Identifier: MIT
#include "framework/movable_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

constexpr size_t kLarge = size_t{1} << 20;

bool IsZero(MemoryHandle memory, size_t bytes) {
    const MemoryLock lock(memory);
    const auto* first = static_cast<const unsigned char*>(lock.address);
    return first && std::all_of(first, first + bytes, [](unsigned char byte) { return byte == 0; });
}

// Frees a block after all of its bytes were written.
void FreeUsed(MemoryHandle memory, size_t bytes) {
    {
        const MemoryLock lock(memory);
        ASSERT_TRUE(lock);
        std::memset(lock.address, 0xA5, bytes);
    }
    FreeMemory(memory);
}

TEST(KeptMemory, Is_zeroed_and_has_the_size_that_was_asked_for) {
    const FreedMemoryKept kept;
    for (const size_t bytes : {kLarge, kLarge, kLarge + 1, kLarge / 2, size_t{100}, kLarge}) {
        const MemoryHandle memory = AllocateMemory(bytes);
        ASSERT_NE(memory, nullptr);
        EXPECT_TRUE(IsZero(memory, bytes)) << bytes;
        EXPECT_GE(MemorySize(memory), bytes);
        FreeUsed(memory, bytes);
    }
}

TEST(KeptMemory, Two_blocks_of_one_size_are_two_blocks) {
    const FreedMemoryKept kept;
    FreeUsed(AllocateMemory(kLarge), kLarge);
    const MemoryOwner first(AllocateMemory(kLarge)), second(AllocateMemory(kLarge));
    const MemoryLock one(first.memory), other(second.memory);
    ASSERT_TRUE(one && other);
    EXPECT_NE(one.address, other.address);
}

// Pages of a very large block go one by one, and only its own.
TEST(MovableMemory, A_very_large_block_leaves_its_neighbours_alone_when_it_is_freed) {
    constexpr size_t kVeryLarge = (size_t{64} << 20) + 12345;
    const auto fill = [](const MemoryOwner& owner, size_t bytes) {
        const MemoryLock lock(owner.memory);
        ASSERT_TRUE(lock);
        std::memset(lock.address, 0x5A, bytes);
    };
    const MemoryOwner before(AllocateMemory(kLarge));
    const MemoryHandle freed = AllocateMemory(kVeryLarge);
    const MemoryOwner same(AllocateMemory(kVeryLarge)), behind(AllocateMemory(kLarge));
    ASSERT_TRUE(before.memory && freed && same.memory && behind.memory);
    fill(before, kLarge);
    fill(same, kVeryLarge);
    fill(behind, kLarge);
    FreeUsed(freed, kVeryLarge);
    const auto isFilled = [](const MemoryOwner& owner, size_t bytes) {
        const MemoryLock lock(owner.memory);
        const auto* first = static_cast<const unsigned char*>(lock.address);
        return std::all_of(first, first + bytes, [](unsigned char byte) { return byte == 0x5A; });
    };
    EXPECT_TRUE(isFilled(before, kLarge));
    EXPECT_TRUE(isFilled(same, kVeryLarge));
    EXPECT_TRUE(isFilled(behind, kLarge));
}

#ifdef _WIN32

TEST(KeptMemory, A_large_block_is_handed_out_again_within_the_scope_only) {
    MemoryHandle first;
    {
        const FreedMemoryKept kept;
        first = AllocateMemory(kLarge);
        {
            const FreedMemoryKept inner;
            FreeMemory(first);
        }
        const MemoryHandle second = AllocateMemory(kLarge);
        EXPECT_EQ(second, first) << "the outer scope keeps it";
        FreeMemory(second);
    }
    EXPECT_EQ(MemorySize(first), 0u) << "freed at the end";
}

#endif

}  // namespace
}  // namespace kfx::test
