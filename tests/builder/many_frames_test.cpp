// SPDX-License-Identifier: MIT
// Animations of more frames than anybody draws.
#include <gtest/gtest.h>

#include "tests/builder/build_scene.h"

namespace kfx::test {
namespace {

size_t handed, messages;

uint64_t CountFrames(uint64_t, uint32_t request, uint64_t, uint64_t pointer) {
    if (static_cast<HostRequest>(request) == HostRequest::AddImage) {
        EXPECT_EQ(reinterpret_cast<const AddImageRecord*>(pointer)->index, handed);
        ++handed;
    }
    return 1;
}

void CountMessage(void*, BuildMessage message) {
    EXPECT_EQ(message, BuildMessage::MemoryError);
    ++messages;
}

int32_t Build(size_t frames) {
    const std::vector<uint8_t> bitmap = BytesOf(FlatPicture(1, 1, 0x305070).handle);
    const MemoryOwner source(
        MakeMemory(MakeAnimationBlock(std::vector<BlockFrame>(frames, BlockFrame{bitmap}))));
    HostContext host = {};
    host.callback = CountFrames;
    handed = messages = 0;
    const EffectDescriptor none = {};
    BuildOptions options = {};
    options.supercompress = true;
    options.paletteChoice = 6;
    return RunBuild({.window = nullptr,
                     .host = &host,
                     .source = source.memory,
                     .effect = &none,
                     .showMessage = CountMessage},
                    options);
}

// Each frame and each mask is a movable block, of which Windows gives a program 65,535 and Wine 32,767.
TEST(ManyFrames, Are_handed_over_or_refused_with_the_message_where_blocks_run_out) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Build(10000), 1);
        EXPECT_EQ(handed, 10000u);
        EXPECT_EQ(messages, 0u);
        const int32_t built = Build(65536);
        EXPECT_EQ(handed, built ? 65536u : 0u);
        EXPECT_EQ(messages, built ? 0u : 1u);
    }
}

}  // namespace
}  // namespace kfx::test
