// SPDX-License-Identifier: MIT
// What a build asks of the host and hands over, rule by rule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "builder/fixed_palettes.h"
#include "framework/source_animation.h"
#include "tests/builder/build_scene.h"

namespace kfx::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(Build, True_colour_hands_the_frames_over_as_they_are_and_switches_supercompression_off) {
    BuildOptions options = BuiltInOptions();
    options.trueColor = options.supercompress = options.customPalette = options.dither = true;
    options.paletteChoice = 2;
    BuildRun run;
    const std::vector<Picture> pictures = MovingBar(3);
    EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
    EXPECT_FALSE(HasStatus(run, "Quantizing"));
    EXPECT_FALSE(HasStatus(run, "Supercompressing"));
    EXPECT_TRUE(HasStatus(run, "Remapping"));
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(run.frames[i].bitmap, BytesOf(pictures[i].handle));
    EXPECT_EQ(run.task.bitsPerPixel, 5u);
    uint8_t palette[kPaletteBytes];
    BuildFixedPalette(palette, 2, nullptr);
    EXPECT_EQ(std::memcmp(run.task.palette, palette, kPaletteBytes), 0);
}

TEST(Build, An_effect_without_a_build_entry_builds_the_source_frames_unchanged) {
    BuildOptions options = BuiltInOptions();
    options.trueColor = true;
    const std::vector<Picture> pictures = MovingBar(3);
    const EffectDescriptor empty = EffectWith(nullptr, nullptr);
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options, &empty), 1);
    ASSERT_EQ(run.frames.size(), 3u);
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(run.frames[i].bitmap, BytesOf(pictures[i].handle));
    const auto building = std::count_if(run.lines.begin(), run.lines.end(), [](const std::string& line) {
        return line.find("\"Building\"") != std::string::npos;
    });
    EXPECT_EQ(building, 1);
}

TEST(Build, An_effect_that_fails_is_a_memory_error_and_nothing_reaches_the_host) {
    const EffectDescriptor failing = EffectWith(
        [](EffectBuildContext* context) {
            DecodeAllFrames(context->source, context->frames);
            return 0;
        },
        nullptr);
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(3)), BuiltInOptions(), &failing), 0);
    EXPECT_EQ(run.messages, std::vector<BuildMessage>{BuildMessage::MemoryError});
    EXPECT_EQ(run.lines.size(), 5u);  // clear, twice the status, message, result
}

// The source was sound when it was taken.
TEST(Build, A_source_that_has_lost_its_second_frame_is_a_memory_error_and_nothing_reaches_the_host) {
    const std::vector<Picture> pictures = MovingBar(2);
    std::vector<uint8_t> block = BlockOf(pictures);
    block[808 + 40 + BytesOf(pictures[0].handle).size()] = '?';  // the second frame's tag
    const EffectDescriptor none = EffectWith(nullptr, nullptr);
    for (const EffectDescriptor* effect : {&none, static_cast<const EffectDescriptor*>(nullptr)}) {
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, block, BuiltInOptions(), effect), 0);
        EXPECT_EQ(run.messages, std::vector<BuildMessage>{BuildMessage::MemoryError});
        EXPECT_EQ(run.task.size, 0u) << "no task is opened";
    }
}

TEST(Build, No_frames_are_a_memory_error) {
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf({}), BuiltInOptions()), 0);
    EXPECT_EQ(run.messages, std::vector<BuildMessage>{BuildMessage::MemoryError});
}

TEST(Build, A_test_build_opens_its_task_with_request_5) {
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(2)), OptionsForMode(BuiltInOptions(), BuildMode::Test)), 1);
    EXPECT_THAT(run.lines, Contains(HasSubstr("code=5 target=0 value=0 size=1080")));
    EXPECT_THAT(run.lines, Not(Contains(HasSubstr("code=1 "))));
}

TEST(Build, The_plain_mode_forces_dither_true_colour_and_supercompression_off_and_nothing_else) {
    BuildOptions set = BuiltInOptions();
    set.dither = set.trueColor = set.supercompress = set.customPalette = set.fastRemap = true;
    set.paletteChoice = 3;
    const BuildOptions plain = OptionsForMode(set, BuildMode::Plain);
    EXPECT_FALSE(plain.dither || plain.trueColor || plain.supercompress || plain.test);
    EXPECT_TRUE(plain.customPalette && plain.fastRemap && plain.addComment);
    EXPECT_EQ(plain.paletteChoice, 3);
    const BuildOptions build = OptionsForMode(set, BuildMode::Build);
    EXPECT_TRUE(build.dither && build.trueColor && build.supercompress && !build.test);
}

TEST(Build, The_comment_names_the_maker_s_address_and_comes_only_when_wanted) {
    BuildRun with, without;
    BuildOptions options = BuiltInOptions();
    BuildWith(&with, BlockOf(MovingBar(1)), options);
    EXPECT_THAT(with.lines, Contains(HasSubstr("code=3 target=record value=0 text=\"CREATED BY...\\r\\n")));
    EXPECT_THAT(with.lines, Contains(HasSubstr("\\r\\n    <address>\\r\\n\\r\\nfor more information.\"")));
    options.addComment = false;
    BuildWith(&without, BlockOf(MovingBar(1)), options);
    EXPECT_THAT(without.lines, Not(Contains(HasSubstr("code=3 "))));
}

TEST(Build, The_task_carries_the_largest_width_and_height_of_its_frames) {
    std::vector<Picture> pictures;
    pictures.push_back(ShadedPicture(20, 5, 1));
    pictures.push_back(ShadedPicture(7, 31, 2));
    for (const bool trueColor : {false, true}) {
        BuildOptions options = BuiltInOptions();
        options.trueColor = trueColor;
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
        EXPECT_EQ(run.task.width, 20u);
        EXPECT_EQ(run.task.height, 31u);
    }
}

std::string CodeOf(const std::string& line) {
    return line.substr(0, 4) == "REQ " ? line.substr(9, line.find(' ', 9) - 9) : "";
}

TEST(Build, A_refusal_ends_the_build_where_the_host_may_refuse_and_changes_nothing_elsewhere) {
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.supercompress = true;
    const std::vector<uint8_t> block = BlockOf(MovingBar(3));
    BuildRun good;
    ASSERT_EQ(BuildWith(&good, block, options), 1);
    for (const uint32_t code : {1u, 2u, 3u, 4u, 10u, 13u}) {
        const std::string text = std::to_string(code);
        const auto count = std::count_if(good.lines.begin(), good.lines.end(),
                                         [&](const std::string& line) { return CodeOf(line) == text; });
        ASSERT_GT(count, 0);
        for (int occurrence = 1; occurrence <= count; ++occurrence) {
            BuildRun run;
            run.refusedRequest = code;
            run.refusedOccurrence = occurrence;
            const int32_t result = BuildWith(&run, block, options);
            if (code == 1) {
                EXPECT_EQ(result, 0);
                EXPECT_EQ(run.messages, std::vector<BuildMessage>{BuildMessage::NewTaskRefused});
                EXPECT_EQ(CodeOf(run.lines[run.lines.size() - 3]), "1") << "nothing follows but the message";
            } else if (code == 2) {
                EXPECT_EQ(result, 0);
                EXPECT_EQ(run.messages, std::vector<BuildMessage>{BuildMessage::ImageRefused});
                EXPECT_EQ(run.frames.size(), static_cast<size_t>(occurrence));
                EXPECT_EQ(run.lines[run.lines.size() - 2],
                          "REQ code=4 target=record value=0 pointer=0 answer=1");
            } else {
                EXPECT_EQ(result, 1);
                EXPECT_TRUE(run.messages.empty());
                EXPECT_EQ(run.lines.size(), good.lines.size());
            }
        }
    }
}

}  // namespace
}  // namespace kfx::test
