// SPDX-License-Identifier: MIT
#include "framework/frame_list.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

TEST(FrameList, Grows_by_56_bytes_an_entry_and_keeps_what_it_holds) {
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

TEST(FrameList, An_entry_written_back_is_read_back_and_its_neighbours_stay) {
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

TEST(FrameList, There_is_no_entry_outside) {
    FrameList list = {};
    FrameEntry entry = {};
    EXPECT_FALSE(GetFrame(list, 0, &entry));
    ASSERT_TRUE(AppendFrame(&list, entry));
    EXPECT_FALSE(GetFrame(list, -1, &entry));
    EXPECT_FALSE(GetFrame(list, 1, &entry));
    EXPECT_FALSE(PutFrame(list, 1, entry));
    FreeFrames(&list);
}

}  // namespace
}  // namespace kfx::test
