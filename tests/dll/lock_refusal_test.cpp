// SPDX-License-Identifier: MIT
// Builds of the DLL with locks of movable memory refused, once and from then on: what the native sweep of
// all effects and outputs shows, here with the system's own memory and through the window.
#include <gtest/gtest.h>

#include <mutex>

#include "resources/resource_ids.h"
#include "tests/dll/support/import_patch.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

std::mutex lockMutex;
decltype(&GlobalLock) grantLock = nullptr;  // the ledger's, which counts what is granted
size_t attempts;                            // since the last RefuseLocks
size_t firstRefused, lastRefused;

bool IsRefused() {
    const std::lock_guard<std::mutex> guard(lockMutex);
    ++attempts;
    return attempts >= firstRefused && attempts <= lastRefused;
}

LPVOID WINAPI LockOrRefuse(HGLOBAL memory) { return IsRefused() ? nullptr : grantLock(memory); }

// Refuses the DLL's locks from one number, counted from 1 after now, to another.
void RefuseLocks(size_t first, size_t last) {
    const std::lock_guard<std::mutex> guard(lockMutex);
    attempts = 0;
    firstRefused = first;
    lastRefused = last;
}

void RefuseNoLocks() { RefuseLocks(1, 0); }

size_t LockAttempts() {
    const std::lock_guard<std::mutex> guard(lockMutex);
    return attempts;
}

// While it lives, the loaded DLL's locks can be refused.
struct LockPatch {
    LockPatch()
        : patch(GetModuleHandleA(PluginPath().c_str()), "GlobalLock", AddressOfFunction(LockOrRefuse)) {
        grantLock = reinterpret_cast<decltype(&GlobalLock)>(reinterpret_cast<uintptr_t>(patch.original));
    }
    ImportPatch patch;
};

std::vector<std::vector<uint8_t>> SourceFrames() {
    std::vector<std::vector<uint8_t>> frames;
    for (uint32_t i = 0; i < 2; ++i) frames.push_back(BytesOf(ShadedPicture(24, 20, i).handle));
    return frames;
}

struct Setting {
    const char* name;
    const char* configuration;
    bool customPalette;
    bool andAllAfter;
    size_t step;  // from one refused lock to the next: because each message box takes time
};

class LockRefusals : public testing::TestWithParam<Setting> {};

// A build that reports success has handed over every frame, each transformed or, in full colour, as it came;
// any other has said why.
void ExpectSound(FakeHost& host, const PluginSession& session, size_t messagesBefore, bool trueColor,
                 const std::vector<std::vector<uint8_t>>& whole, const std::string& name) {
    const std::vector<std::string> closes = host.Requests(HostRequest::CloseTask);
    const std::vector<std::string> messages = session.Messages();
    if (closes.empty() || closes[0].find("value=1") == std::string::npos) {
        ASSERT_EQ(messages.size(), messagesBefore + 1) << name;
        EXPECT_EQ(messages.back(), "Memory error") << name;
        EXPECT_EQ(closes.empty(), host.Requests(HostRequest::NewTestTask).empty()) << name;
        return;
    }
    ASSERT_EQ(messages.size(), messagesBefore) << name;
    const std::vector<std::vector<uint8_t>> frames = host.Frames();
    ASSERT_EQ(frames.size(), whole.size()) << name;
    if (!trueColor) return;
    const std::vector<std::vector<uint8_t>> source = SourceFrames();
    for (size_t i = 0; i < frames.size(); ++i)
        EXPECT_TRUE(frames[i] == whole[i] || frames[i] == source[i]) << name << ", frame " << i;
}

// Refuses a few locks in one window, from the given number on. Answers the number of the next lock, or 0 when
// the last one came before it.
size_t RefuseSome(const Setting& setting, size_t number) {
    constexpr int kBuilds = 8;  // in one session, whose length is limited
    const std::vector<std::vector<uint8_t>> source = SourceFrames();
    FakeHost host;
    host.Serve(MakeAnimationBlock({{source[0], {}}, {source[1], {}}}));
    SessionOptions options;
    options.configuration = setting.configuration;
    const bool trueColor = options.configuration.find("Truecolour = 1") != std::string::npos;
    PluginSession session(host, options);
    const LockPatch patch;
    RefuseNoLocks();
    session.Click(IDC_SELECT);
    if (setting.customPalette) session.Click(IDC_CUSTOM_PALETTE);
    host.ClearTranscript();
    session.Click(IDC_TEST);
    const std::vector<std::vector<uint8_t>> whole = host.Frames();
    EXPECT_EQ(whole.size(), 2u);
    for (int i = 0; i < kBuilds; ++i, number += setting.step) {
        const std::string name = "lock " + std::to_string(number);
        const size_t messages = session.Messages().size();
        host.ClearTranscript();
        RefuseLocks(number, setting.andAllAfter ? SIZE_MAX : number);
        session.Command(IDC_TEST);
        const bool refused = LockAttempts() >= number;
        RefuseNoLocks();
        ExpectSound(host, session, messages, trueColor, whole, name);
        EXPECT_EQ(CountLedger().liveBlocks, 1u) << name << ": the source";
        EXPECT_EQ(CountLedger().lockedBlocks, 0u) << name;
        EXPECT_EQ(CountLedger().strangeFrees, 0u) << name;
        if (!refused || testing::Test::HasFailure()) return 0;
    }
    return number;
}

TEST_P(LockRefusals, A_build_fails_with_a_message_or_gives_whole_frames) {
    size_t number = 1;
    while (const size_t next = RefuseSome(GetParam(), number)) {
        number = next;
        ASSERT_LT(number, 400u);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Builds, LockRefusals,
    testing::Values(Setting{"Normalize", "MainEffect = 10\nTruecolour = 1\n", false, false, 1},
                    Setting{"EmbossSupercompressDither",
                            "MainEffect = 1\nTruecolour = 0\nMainSupercompress = 1\nMainDither = 1\n", true,
                            false, 4},
                    Setting{"ZoomBlurAllAfter", "MainEffect = 19\nTruecolour = 1\n", false, true, 5}),
    [](const auto& setting) { return setting.param.name; });

}  // namespace
}  // namespace kfx::test
