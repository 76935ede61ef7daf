// SPDX-License-Identifier: MIT
#include "framework/kernel_cache.h"

#include <gtest/gtest.h>

namespace kfx::test {
namespace {

TEST(KernelCache, The_same_key_finds_the_table_as_it_was_left) {
    KeptTable cache;
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

TEST(KernelCache, Another_key_or_another_size_starts_afresh_with_zeros) {
    KeptTable cache;
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

TEST(KernelCache, A_table_that_nobody_finished_is_made_anew) {
    KeptTable cache;
    const int key = 7;
    bool fresh = false;
    static_cast<int*>(CachedTable(&cache, &key, sizeof key, 40, &fresh))[9] = 123;
    fresh = false;
    auto* table = static_cast<int*>(CachedTable(&cache, &key, sizeof key, 40, &fresh));
    ASSERT_TRUE(table);
    EXPECT_TRUE(fresh);
    EXPECT_EQ(table[9], 0);
}

TEST(KernelCache, Keeping_a_table_that_could_not_be_made_keeps_nothing) {
    KeptTable cache;
    bool fresh = false;
    ASSERT_EQ(CachedTable(&cache, "", kMostCacheKeyBytes + 1, 8, &fresh), nullptr);
    KeepTable(&cache);
    ASSERT_TRUE(CachedTable(&cache, "", 0, 0, &fresh));
    EXPECT_TRUE(fresh);
}

TEST(KernelCache, A_key_that_is_too_long_gives_none_and_empties_the_cache) {
    KeptTable cache;
    const char key[kMostCacheKeyBytes + 1] = {};
    bool fresh = false;
    EXPECT_EQ(CachedTable(&cache, key, sizeof key, 8, &fresh), nullptr);
    EXPECT_TRUE(CachedTable(&cache, key, kMostCacheKeyBytes, 8, &fresh));
    EXPECT_TRUE(fresh);
}

}  // namespace
}  // namespace kfx::test
