// SPDX-License-Identifier: MIT
// The host's answers to each request, asked as the plug-in asks.
#include "commands/host_session.h"

#include <gtest/gtest.h>

#include <cstring>

#include "framework/memory_guards.h"
#include "framework/working_image.h"
#include "host/animation_block.h"
#include "host/host_requests.h"
#ifndef _WIN32
#include "framework/movable_memory_native.h"
#endif

namespace kfx::commands {
namespace {

constexpr int kWidth = 3;
constexpr int kHeight = 2;

struct Session : ::testing::Test {
    Animation source;
    HostSession session;

    void SetUp() override {
        source.width = kWidth;
        source.height = kHeight;
        Frame frame;
        frame.pixels.assign(4 * kWidth * kHeight, 200);
        frame.delay = 9;
        source.frames = {frame, frame};
        session.source = &source;
        session.sourcePath = "in.gif";
        BeginSession(&session, kHostTakesTrueColor);
    }
    void TearDown() override { EndSession(); }

    const HostContext* Host() const { return &session.context; }

    MemoryHandle Open(const char* path = "") const {
        OpenAnimationRequest request = MakeOpenAnimationRequest(nullptr, path);
        return reinterpret_cast<MemoryHandle>(static_cast<uintptr_t>(RequestOpenAnimation(Host(), &request)));
    }

    static FileObjectRecord Task() {
        FileObjectRecord task = {};
        task.size = sizeof task;
        task.bitsPerPixel = 8;
        task.width = kWidth;
        task.height = kHeight;
        return task;
    }

    bool Add(ImageHandle image, uint32_t index) const {
        AddImageRecord record = {};
        record.size = sizeof record;
        record.image = reinterpret_cast<uintptr_t>(image);
        record.index = index;
        record.transparentIndex = -1;
        return RequestAddImage(Host(), Task(), record) != 0;
    }
};

TEST_F(Session, Hands_the_source_over_once_and_keeps_what_the_block_does_not_carry) {
    const MemoryOwner block(Open());
    ASSERT_NE(block.memory, nullptr);
    const MemoryLock lock(block.memory);
    EXPECT_TRUE(IsAnimation(lock.address, MemorySize(block.memory)));
    ASSERT_EQ(session.record.frames.size(), 2u);
    EXPECT_EQ(session.record.frames[1].delay, 9);
    EXPECT_TRUE(source.frames.empty()) << "its pixels are in the block now";
    EXPECT_EQ(session.animationsOpened, 1);
}

TEST_F(Session, The_plugins_buttons_are_the_systems_own) { EXPECT_EQ(session.context.buttonStyle, 0u); }

TEST_F(Session, Keeps_the_source_where_it_is_still_wanted) {
    session.keepSource = true;
    const MemoryOwner first(Open()), second(Open());
    EXPECT_NE(second.memory, nullptr);
    EXPECT_EQ(source.frames.size(), 2u);
}

TEST_F(Session, Answers_a_file_that_cannot_be_read_with_none_and_keeps_the_source) {
    session.offerSource = false;
    EXPECT_EQ(Open("there is no such file.gif"), nullptr);
    EXPECT_EQ(Open(), nullptr) << "nobody is there to choose one";
    EXPECT_EQ(source.frames.size(), 2u);
    EXPECT_EQ(session.animationsOpened, 0);
}

TEST_F(Session, Collects_what_is_built) {
    ASSERT_NE(RequestNewTask(Host(), false, Task()), 0u);
    const MemoryOwner image(CreateDib(kWidth, kHeight, nullptr, 24));
    EXPECT_TRUE(Add(image.memory, 0));
    EXPECT_TRUE(Add(image.memory, 1));
    RequestAddComment(Host(), Task(), "made");
    EXPECT_EQ(session.tasksClosed, 0);
    RequestCloseTask(Host(), Task(), true);
    EXPECT_EQ(session.tasksClosed, 1);
    EXPECT_TRUE(session.built.complete);
    EXPECT_EQ(session.built.frames.size(), 2u);
    EXPECT_EQ(session.built.frames[1].sourceIndex, 1u);
    EXPECT_EQ(session.built.comment, "made");
}

TEST_F(Session, Refuses_frames_without_a_task_of_another_size_or_without_a_picture) {
    const MemoryOwner image(CreateDib(kWidth, kHeight, nullptr, 24));
    EXPECT_FALSE(Add(image.memory, 0)) << "no task is open";
    ASSERT_NE(RequestNewTask(Host(), true, Task()), 0u);
    const MemoryOwner other(CreateDib(kWidth + 1, kHeight, nullptr, 24));
    EXPECT_FALSE(Add(other.memory, 0));
    EXPECT_FALSE(Add(nullptr, 0));
    FileObjectRecord empty = Task();
    empty.width = 0;
    EXPECT_EQ(RequestNewTask(Host(), false, empty), 0u);
}

TEST_F(Session, Drops_the_frames_of_a_build_that_failed) {
    ASSERT_NE(RequestNewTask(Host(), false, Task()), 0u);
    const MemoryOwner image(CreateDib(kWidth, kHeight, nullptr, 24));
    EXPECT_TRUE(Add(image.memory, 0));
    RequestCloseTask(Host(), Task(), false);
    EXPECT_FALSE(session.built.complete);
    EXPECT_TRUE(session.built.frames.empty());
}

TEST_F(Session, Notes_progress_and_tells_whoever_watches) {
    static int shown;
    shown = 0;
    session.actions.showProgress = [](HostSession*) { ++shown; };
    RequestSetStatusText(Host(), "Building");
    RequestProgress(Host(), 3, 8);
    EXPECT_EQ(session.status, "Building");
    EXPECT_EQ(session.progressCurrent, 3);
    EXPECT_EQ(session.progressTotal, 8);
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(session.requestsAnswered, 2u);
}

TEST_F(Session, Declines_what_needs_a_user_when_there_is_none) {
    const uint8_t palette[768] = {};
    uint32_t color = 5;
    EXPECT_EQ(RequestChooseColor(Host(), nullptr, palette, &color), 0u);
    EXPECT_EQ(color, 5u);
    EXPECT_EQ(RequestShowHelp(Host(), "help.html"), 0u);
}

TEST_F(Session, Answers_nothing_once_it_has_ended) {
    EndSession();
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(RequestNewTask(Host(), false, Task()), 0u);
}

#ifndef _WIN32
TEST_F(Session, Refused_memory_loses_no_block_and_keeps_the_source) {
    const size_t blocks = CountMemory().liveBlocks;
    ResetMemoryCounts();
    RefuseAllocation(1);
    EXPECT_EQ(Open(), nullptr);
    ResetMemoryCounts();
    RefuseLock(1);
    EXPECT_EQ(Open(), nullptr);
    ResetMemoryCounts();
    EXPECT_EQ(CountMemory().liveBlocks, blocks);
    EXPECT_EQ(source.frames.size(), 2u);
    const MemoryOwner block(Open());
    EXPECT_NE(block.memory, nullptr) << "the next request gets it";
}
#endif

}  // namespace
}  // namespace kfx::commands
