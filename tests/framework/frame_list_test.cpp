// SPDX-License-Identifier: MIT
#include "framework/frame_list.h"

#include <gtest/gtest.h>

#include "framework/kernel_cache.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

TEST(FrameList, grows_by_56_bytes_an_entry_and_keeps_what_it_holds) {
    FrameList list = {};
    for (int32_t i = 0; i < 20; ++i) {
        FrameEntry entry = {};
        entry.field3 = 100 + i;
        ASSERT_TRUE(AppendFrame(&list, entry));
        EXPECT_EQ(list.count, i + 1);
        EXPECT_EQ(MemorySize(list.entries), 56u * static_cast<size_t>(i + 1));
    }
    for (int32_t i = 0; i < 20; ++i) {
        FrameEntry entry;
        ASSERT_TRUE(GetFrame(list, i, &entry));
        EXPECT_EQ(entry.field3, 100 + i);
    }
    FreeFrames(&list);
    EXPECT_EQ(list.entries, nullptr);
    EXPECT_EQ(list.count, 0);
}

TEST(FrameList, an_entry_written_back_is_read_back_and_its_neighbours_stay) {
    FrameList list = {};
    for (int32_t i = 0; i < 3; ++i) ASSERT_TRUE(AppendFrame(&list, FrameEntry{}));
    FrameEntry changed = {};
    changed.transparentIndex = 9;
    ASSERT_TRUE(PutFrame(list, 1, changed));
    FrameEntry entry;
    for (int32_t i = 0; i < 3; ++i) {
        ASSERT_TRUE(GetFrame(list, i, &entry));
        EXPECT_EQ(entry.transparentIndex, i == 1 ? 9 : 0);
    }
    FreeFrames(&list);
}

TEST(FrameList, there_is_no_entry_outside) {
    FrameList list = {};
    FrameEntry entry = {};
    EXPECT_FALSE(GetFrame(list, 0, &entry));
    ASSERT_TRUE(AppendFrame(&list, entry));
    EXPECT_FALSE(GetFrame(list, -1, &entry));
    EXPECT_FALSE(GetFrame(list, 1, &entry));
    EXPECT_FALSE(PutFrame(list, 1, entry));
    FreeFrames(&list);
}

TEST(KernelCache, the_same_key_finds_the_table_as_it_was_left) {
    KernelCache cache;
    const int key = 7;
    bool fresh = false;
    auto* table = static_cast<int*>(CachedTable(&cache, &key, sizeof key, 40, &fresh));
    ASSERT_TRUE(table);
    EXPECT_TRUE(fresh);
    EXPECT_EQ(table[9], 0);
    table[9] = 123;
    KeepTable(&cache);
    EXPECT_EQ(CachedTable(&cache, &key, sizeof key, 40, &fresh), table);
    EXPECT_FALSE(fresh);
    EXPECT_EQ(table[9], 123);
}

TEST(KernelCache, another_key_or_another_size_starts_afresh_with_zeros) {
    KernelCache cache;
    int key = 7;
    bool fresh = false;
    static_cast<int*>(CachedTable(&cache, &key, sizeof key, 40, &fresh))[0] = 123;
    KeepTable(&cache);
    key = 8;
    EXPECT_EQ(static_cast<int*>(CachedTable(&cache, &key, sizeof key, 40, &fresh))[0], 0);
    EXPECT_TRUE(fresh);
    KeepTable(&cache);
    fresh = false;
    ASSERT_TRUE(CachedTable(&cache, &key, sizeof key, 44, &fresh));
    EXPECT_TRUE(fresh);
    KeepTable(&cache);
    fresh = false;
    ASSERT_TRUE(CachedTable(&cache, &key, 2, 44, &fresh));
    EXPECT_TRUE(fresh) << "a shorter key is another key";
}

TEST(KernelCache, a_table_that_nobody_finished_is_made_anew) {
    KernelCache cache;
    const int key = 7;
    bool fresh = false;
    static_cast<int*>(CachedTable(&cache, &key, sizeof key, 40, &fresh))[9] = 123;
    fresh = false;
    auto* table = static_cast<int*>(CachedTable(&cache, &key, sizeof key, 40, &fresh));
    ASSERT_TRUE(table);
    EXPECT_TRUE(fresh);
    EXPECT_EQ(table[9], 0);
}

TEST(KernelCache, keeping_a_table_that_could_not_be_made_keeps_nothing) {
    KernelCache cache;
    bool fresh = false;
    ASSERT_EQ(CachedTable(&cache, "", kMostCacheKeyBytes + 1, 8, &fresh), nullptr);
    KeepTable(&cache);
    ASSERT_TRUE(CachedTable(&cache, "", 0, 0, &fresh));
    EXPECT_TRUE(fresh);
}

TEST(KernelCache, a_key_that_is_too_long_gives_none_and_empties_the_cache) {
    KernelCache cache;
    const char key[kMostCacheKeyBytes + 1] = {};
    bool fresh = false;
    EXPECT_EQ(CachedTable(&cache, key, sizeof key, 8, &fresh), nullptr);
    EXPECT_TRUE(CachedTable(&cache, key, kMostCacheKeyBytes, 8, &fresh));
    EXPECT_TRUE(fresh);
}

}  // namespace
}  // namespace kfx::test
