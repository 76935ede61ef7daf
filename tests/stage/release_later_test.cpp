// SPDX-License-Identifier: MIT
#include "stage/release_later.h"

#include <atomic>

#include <gtest/gtest.h>
#include <windows.h>

#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using namespace stage;

std::atomic<DWORD> endedOn = 0;  // the thread on which the last one has gone

struct NotesItsEnd {
    NotesItsEnd() = default;
    NotesItsEnd(NotesItsEnd&& other) noexcept { other.isMoved = true; }
    ~NotesItsEnd() {
        if (!isMoved) endedOn = GetCurrentThreadId();
    }

    bool isMoved = false;
};

TEST(ReleaseLater, A_value_goes_on_another_thread) {
    endedOn = 0;
    ReleaseLater(NotesItsEnd());
    ASSERT_TRUE(WaitFor([] { return endedOn != 0; }));
    EXPECT_NE(endedOn, GetCurrentThreadId());
}

TEST(ReleaseLater, What_others_share_stays) {
    endedOn = 0;
    auto kept = std::make_shared<NotesItsEnd>();
    const std::weak_ptr<NotesItsEnd> seen = kept;
    ReleaseShareLater(kept);
    ASSERT_TRUE(WaitFor([&seen] { return seen.use_count() == 1; }));
    EXPECT_EQ(endedOn, 0u);
    kept.reset();
    EXPECT_EQ(endedOn, GetCurrentThreadId());
}

TEST(ReleaseLater, Nothing_is_allowed) { ReleaseShareLater(nullptr); }

}  // namespace
}  // namespace kfx::test
