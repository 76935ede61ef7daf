// SPDX-License-Identifier: MIT
#include "host/floating_point_state.h"

#include <gtest/gtest.h>

#include <cstring>

#if defined(__GNUC__) && defined(__x86_64__)

#include <xmmintrin.h>

namespace kfx {
namespace {

constexpr uint32_t kStatusWord = 1;  // index in the x87 environment
constexpr uint32_t kMxcsrFlags = 0x3F;
constexpr uint32_t kX87Flags = 0x3F;
constexpr uint32_t kDividedByZero = 4;  // in both units' flags
constexpr uint32_t kErrorSummary = 0x80;

FloatingPointState StateOf(uint32_t control, uint32_t mxcsr) {
    FloatingPointState state = ReadFloatingPointState();
    state.x87[0] = (state.x87[0] & 0xFFFF0000u) | control;
    state.mxcsr = mxcsr;
    return state;
}

uint32_t ControlOf(const FloatingPointState& state) { return state.x87[0] & 0xFFFF; }

bool Same(const FloatingPointState& a, const FloatingPointState& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void ExpectCore(const FloatingPointState& state) {
    EXPECT_EQ(ControlOf(state), kCoreX87Control);
    EXPECT_EQ(state.mxcsr, kCoreMxcsr);
    EXPECT_EQ(state.x87[kStatusWord] & (kX87Flags | kErrorSummary), 0u);
}

// As threads of Windows, of programs with fewer bits, of other compilers, of other ways of rounding, and of
// programs that flush small numbers to zero have them.
const uint32_t kHosts[][2] = {{0x27F, 0x1F80}, {0x7F, 0x1900},  {0xB7F, 0x5F80},
                              {0x27F, 0x9FC0}, {0x360, 0x1F80}, {0x37F, 0x1FBF}};

// Each case looks at the state first and judges when the thread's own is back: the test's own code may
// compute.
class FloatingPoint : public testing::Test {
protected:
    void SetUp() override {
        _mm_setcsr(0x9FC0);
        const bool kept = _mm_getcsr() == 0x9FC0;
        SetFloatingPointState(before_);
        if (!kept) GTEST_SKIP() << "this emulated processor keeps the way of rounding only";
    }
    ~FloatingPoint() override { SetFloatingPointState(before_); }

    const FloatingPointState before_ = ReadFloatingPointState();
};

TEST_F(FloatingPoint, An_entry_sets_the_core_s_controls_and_gives_the_host_s_back) {
    for (const auto& host : kHosts) {
        FloatingPointState inside, outside;
        SetFloatingPointState(StateOf(host[0], host[1]));
        const FloatingPointState expected = ReadFloatingPointState();
        {
            const CoreFloatingPoint core;
            inside = ReadFloatingPointState();
        }
        outside = ReadFloatingPointState();
        SetFloatingPointState(before_);
        SCOPED_TRACE(host[0]);
        ExpectCore(inside);
        EXPECT_TRUE(Same(outside, expected));
    }
}

TEST_F(FloatingPoint, A_guard_of_its_own_does_the_same) {
    for (const auto& host : kHosts) {
        FloatingPointState inside, outside;
        SetFloatingPointState(StateOf(host[0], host[1]));
        const FloatingPointState expected = ReadFloatingPointState();
        {
            const OwnFloatingPoint own;
            inside = ReadFloatingPointState();
        }
        outside = ReadFloatingPointState();
        SetFloatingPointState(before_);
        ExpectCore(inside);
        EXPECT_TRUE(Same(outside, expected));
    }
}

TEST_F(FloatingPoint, A_call_to_the_host_runs_under_the_host_s_controls) {
    for (const auto& host : kHosts) {
        FloatingPointState inRequest, afterRequest, inMessage, afterMessage, outside;
        SetFloatingPointState(StateOf(host[0], host[1]));
        const FloatingPointState expected = ReadFloatingPointState();
        {
            const CoreFloatingPoint core;
            {
                const HostFloatingPoint request;
                inRequest = ReadFloatingPointState();
                {
                    const CoreFloatingPoint message;
                    inMessage = ReadFloatingPointState();
                }
                afterMessage = ReadFloatingPointState();
            }
            afterRequest = ReadFloatingPointState();
        }
        outside = ReadFloatingPointState();
        SetFloatingPointState(before_);
        ExpectCore(inMessage);
        ExpectCore(afterRequest);
        EXPECT_TRUE(Same(inRequest, expected));
        EXPECT_TRUE(Same(afterMessage, expected));
        EXPECT_TRUE(Same(outside, expected));
    }
}

TEST_F(FloatingPoint, An_entry_within_the_core_changes_nothing) {
    FloatingPointState inside, outside;
    SetFloatingPointState(StateOf(0x27F, 0x5F80));
    {
        const CoreFloatingPoint core;
        { const CoreFloatingPoint again; }
        inside = ReadFloatingPointState();
    }
    outside = ReadFloatingPointState();
    SetFloatingPointState(before_);
    ExpectCore(inside);
    EXPECT_EQ(outside.mxcsr, 0x5F80u);
    EXPECT_EQ(ControlOf(outside), 0x27Fu);
}

TEST_F(FloatingPoint, What_the_host_changes_in_a_request_stays_when_the_core_is_left) {
    FloatingPointState inside, outside;
    SetFloatingPointState(StateOf(0x27F, 0x1F80));
    {
        const CoreFloatingPoint core;
        {
            const HostFloatingPoint request;
            SetFloatingPointState(StateOf(0x7F, 0x9FC0));
        }
        inside = ReadFloatingPointState();
    }
    outside = ReadFloatingPointState();
    SetFloatingPointState(before_);
    ExpectCore(inside);
    EXPECT_EQ(outside.mxcsr, 0x9FC0u);
    EXPECT_EQ(ControlOf(outside), 0x7Fu);
}

TEST_F(FloatingPoint, A_call_to_the_host_without_an_entry_changes_nothing) {
    FloatingPointState inside, outside;
    SetFloatingPointState(StateOf(0x27F, 0x5F80));
    {
        const HostFloatingPoint request;
        inside = ReadFloatingPointState();
        const CoreFloatingPoint core;
    }
    outside = ReadFloatingPointState();
    SetFloatingPointState(before_);
    EXPECT_EQ(inside.mxcsr, 0x5F80u);
    EXPECT_EQ(outside.mxcsr, 0x5F80u);
    EXPECT_EQ(ControlOf(outside), 0x27Fu);
}

// A flag that is set while its exception is unmasked: in the x87 unit the next instruction that waits raises
// it. Neither the entry nor the way back may.
TEST_F(FloatingPoint, A_pending_exception_of_the_host_s_is_neither_raised_nor_lost) {
    FloatingPointState pending = StateOf(0x37F & ~kDividedByZero, 0x1F80 & ~(kDividedByZero << 7));
    pending.x87[kStatusWord] |= kDividedByZero;
    pending.mxcsr |= kDividedByZero;
    FloatingPointState entering, inside, inRequest, outside;
    SetFloatingPointState(pending);
    entering = ReadFloatingPointState();
    {
        const CoreFloatingPoint core;
        inside = ReadFloatingPointState();
        {
            const HostFloatingPoint request;
            inRequest = ReadFloatingPointState();
        }
    }
    outside = ReadFloatingPointState();
    SetFloatingPointState(before_);
    EXPECT_TRUE(entering.x87[kStatusWord] & kErrorSummary) << "the exception was pending";
    EXPECT_EQ(entering.mxcsr & kMxcsrFlags, kDividedByZero);
    ExpectCore(inside);
    EXPECT_TRUE(Same(inRequest, entering));
    EXPECT_TRUE(Same(outside, entering));
}

TEST_F(FloatingPoint, Flags_that_the_core_raises_are_not_the_host_s) {
    volatile double zero = 0, one = 1, quotient = 0;
    volatile long double wideZero = 0, wideQuotient = 0;
    SetFloatingPointState(StateOf(0x27F, 0x1F80));
    const FloatingPointState expected = ReadFloatingPointState();
    FloatingPointState inside, outside;
    {
        const CoreFloatingPoint core;
        quotient = one / zero;
        wideQuotient = 1 / wideZero;
        inside = ReadFloatingPointState();
    }
    outside = ReadFloatingPointState();
    SetFloatingPointState(before_);
    EXPECT_GT(quotient, 1.0);
    EXPECT_GT(wideQuotient, 1.0L);
    EXPECT_TRUE(inside.mxcsr & kDividedByZero);
    EXPECT_TRUE(inside.x87[kStatusWord] & kDividedByZero);
    EXPECT_TRUE(Same(outside, expected));
}

// One sum that each of the controls would change.
struct Numbers {
    double third, small;
    long double wideThird;
};

Numbers Compute() {
    volatile double one = 1, three = 3, tiny = 1e-300;
    volatile long double wideOne = 1, wideThree = 3;
    return {one / three, tiny * 1e-10, wideOne / wideThree};
}

TEST_F(FloatingPoint, Numbers_come_out_alike_whatever_the_host_has_set) {
    const Numbers expected = Compute();
    for (const auto& host : kHosts) {
        Numbers inside;
        SetFloatingPointState(StateOf(host[0], host[1] & ~kMxcsrFlags));
        {
            const CoreFloatingPoint core;
            inside = Compute();
        }
        SetFloatingPointState(before_);
        EXPECT_EQ(inside.third, expected.third);
        EXPECT_EQ(inside.small, expected.small);
        EXPECT_EQ(inside.wideThird, expected.wideThird);
    }
}

}  // namespace
}  // namespace kfx

#endif
