// SPDX-License-Identifier: MIT
// What a build asks of the host and hands over, rule by rule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "builder/build_driver.h"
#include "builder/fixed_palettes.h"
#include "builder/palette_order.h"
#include "framework/source_animation.h"
#include "tests/builder/build_run.h"
#include "tests/reference/remap_reference.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

std::vector<uint8_t> BlockOf(const std::vector<Picture>& pictures, const BlockOptions& options = {}) {
    std::vector<BlockFrame> frames;
    frames.reserve(pictures.size());
    for (const Picture& picture : pictures) frames.push_back({BytesOf(picture.handle)});
    return MakeAnimationBlock(frames, options);
}

// A moving bar over a background of few colours, none of them white.
std::vector<Picture> MovingBar(int32_t frames, int32_t width = 48, int32_t height = 32) {
    std::vector<Picture> pictures;
    for (int32_t i = 0; i < frames; ++i) {
        Picture picture = FlatPicture(width, height, Rgb(10, 60, 90));
        const ImageLock lock(picture.handle);
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < 6; ++x)
                SetDibPixel(lock.image, (5 * i + x) % width, y, Rgb(200, static_cast<uint32_t>(y), 3));
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

std::vector<Picture> Shades(int32_t frames) {
    std::vector<Picture> pictures(static_cast<size_t>(frames));
    uint32_t number = 0;
    for (Picture& picture : pictures) picture = ShadedPicture(48, 32, number++ / 2);
    return pictures;
}

Picture ImageOf(const HandedFrame& frame) {
    const ImageHandle handle = MakeMemory(frame.bitmap);
    return Picture(handle);
}

uint32_t EntryOf(const uint8_t* palette, size_t index) {
    return Rgb(palette[3 * index], palette[3 * index + 1], palette[3 * index + 2]);
}

bool HasStatus(const BuildRun& run, const std::string& text) {
    return std::any_of(run.lines.begin(), run.lines.end(), [&](const std::string& line) {
        return line.find("code=10 ") != std::string::npos &&
               line.find("\"" + text + "\"") != std::string::npos;
    });
}

// How the handed-over frames look to a viewer: colours of each moment, transparent pixels showing what was
// there.
std::vector<std::vector<uint32_t>> Play(const BuildRun& run) {
    std::vector<std::vector<uint32_t>> moments;
    std::vector<uint32_t> screen;
    for (const HandedFrame& frame : run.frames) {
        const Picture image = ImageOf(frame);
        const ImageLock lock(image.handle);
        const auto width = static_cast<size_t>(lock.image->width);
        screen.resize(width * static_cast<size_t>(lock.image->height));
        for (int32_t y = 0; y < lock.image->height; ++y) {
            for (int32_t x = 0; x < lock.image->width; ++x) {
                const uint32_t index = GetDibPixel(lock.image, x, y);
                if (static_cast<int32_t>(index) == frame.record.transparentIndex) continue;
                const uint8_t* color = ColorTableOf(lock.image) + 4 * index;
                screen[static_cast<size_t>(y) * width + static_cast<size_t>(x)] =
                    Rgb(color[2], color[1], color[0]);
            }
        }
        moments.push_back(screen);
    }
    return moments;
}

EffectDescriptor EffectWith(int32_t (*build)(EffectBuildContext*), int32_t (*query)(void*, int32_t)) {
    EffectDescriptor effect = {};
    effect.build = build;
    effect.query = query;
    return effect;
}

int32_t Decode(EffectBuildContext* context) {
    DecodeAllFrames(context->source, context->frames);
    return 1;
}

TEST(Build, One_frame_alone_is_never_supercompressed) {
    BuildRun run;
    BuildOptions options = BuiltInOptions();
    options.supercompress = options.customPalette = true;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(1)), options), 1);
    EXPECT_FALSE(HasStatus(run, "Supercompressing"));
    ASSERT_EQ(run.frames.size(), 1u);
    EXPECT_EQ(run.frames[0].record.transparentIndex, -1);
}

TEST(Build, A_supercompressed_animation_of_few_colours_plays_like_the_plain_one) {
    BuildOptions options = BuiltInOptions();
    options.customPalette = true;
    BuildRun plain, small;
    const std::vector<uint8_t> block = BlockOf(MovingBar(9));
    EXPECT_EQ(BuildWith(&plain, block, options), 1);
    options.supercompress = true;
    EXPECT_EQ(BuildWith(&small, block, options), 1);
    EXPECT_TRUE(HasStatus(small, "Supercompressing"));
    EXPECT_EQ(Play(small), Play(plain));
    int64_t transparent = 0;
    const Picture last = ImageOf(small.frames.back());
    const ImageLock lock(last.handle);
    const auto reserved = static_cast<uint32_t>(small.frames.back().record.transparentIndex);
    for (int32_t i = 0; i < 48 * 32; ++i) transparent += GetDibPixel(lock.image, i % 48, i / 48) == reserved;
    EXPECT_GT(transparent, 48 * 32 * 3 / 4) << "most pixels do not change";
}

TEST(Build, A_supercompressed_animation_of_many_colours_plays_like_frames_remapped_whole) {
    const std::vector<Picture> pictures = Shades(8);
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.supercompress = true;
    for (const bool fast : {false, true}) {
        options.fastRemap = fast;
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
        const int32_t colors = run.frames[1].record.transparentIndex;
        ASSERT_GT(colors, 0);
        const std::vector<std::vector<uint32_t>> moments = Play(run);
        for (size_t i = 0; i < pictures.size(); ++i) {
            const auto bits = static_cast<int32_t>(run.task.bitsPerPixel);
            const Picture whole(
                ReferencePlainRemap(pictures[i].handle, {run.task.palette, bits, colors, fast, 20, 20}));
            std::vector<uint32_t> expected(48 * 32);
            int32_t p = 0;
            for (uint32_t& color : expected) {
                color = EntryOf(run.task.palette, PixelOf(whole.handle, p % 48, p / 48));
                ++p;
            }
            EXPECT_EQ(moments[i], expected) << "frame " << i << ", fast " << fast;
        }
    }
}

TEST(Build, Two_identical_frames_make_the_second_entirely_transparent) {
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.supercompress = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(Shades(2)), options), 1);
    const Picture second = ImageOf(run.frames[1]);
    const auto reserved = static_cast<uint32_t>(run.frames[1].record.transparentIndex);
    for (int32_t i = 0; i < 48 * 32; ++i) ASSERT_EQ(PixelOf(second.handle, i % 48, i / 48), reserved);
}

TEST(Build, The_first_supercompressed_frame_shows_white_through_the_reserved_entry) {
    std::vector<Picture> pictures = MovingBar(2);
    {
        const ImageLock lock(pictures[0].handle);
        SetDibPixel(lock.image, 3, 3, 0xFFFFFF);
    }
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.supercompress = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
    const Picture first = ImageOf(run.frames[0]);
    const auto reserved = static_cast<uint32_t>(run.frames[1].record.transparentIndex);
    EXPECT_EQ(PixelOf(first.handle, 3, 3), reserved);
    EXPECT_EQ(EntryOf(run.task.palette, reserved), 0xFFFFFFu);
    EXPECT_EQ(run.frames[0].record.transparentIndex, -1);
}

TEST(Build, With_a_fixed_palette_supercompressed_frames_are_handed_over_whole) {
    BuildOptions options = BuiltInOptions();
    BuildRun plain, small;
    const std::vector<uint8_t> block = BlockOf(MovingBar(4));
    BuildWith(&plain, block, options);
    options.supercompress = true;
    EXPECT_EQ(BuildWith(&small, block, options), 1);
    ASSERT_EQ(small.frames.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(small.frames[i].bitmap, plain.frames[i].bitmap);
        EXPECT_EQ(small.frames[i].record.transparentIndex, -1);
    }
}

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

TEST(Build, The_black_entries_beyond_a_small_palette_compete) {
    BlockOptions block;
    for (uint8_t i = 0; i < 20; ++i) block.globalPalette.insert(block.globalPalette.end(), {255, 200, i});
    BuildOptions options = BuiltInOptions();
    options.paletteChoice = kSourcePalette;
    std::vector<Picture> black;
    black.push_back(FlatPicture(5, 5, Rgb(1, 2, 3)));
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(black, block), options), 1);
    EXPECT_EQ(run.task.bitsPerPixel, 5u);
    EXPECT_EQ(PixelOf(ImageOf(run.frames[0]).handle, 2, 2), 20u);
}

TEST(Build, A_custom_palette_gains_the_background_colour_and_is_sorted_by_luminance) {
    std::vector<Picture> pictures;
    pictures.push_back(FlatPicture(3, 1, Rgb(200, 100, 50)));
    {
        const ImageLock lock(pictures[0].handle);
        SetDibPixel(lock.image, 1, 0, Rgb(0, 0, 9));
    }
    BuildOptions options = BuiltInOptions();
    options.customPalette = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
    EXPECT_EQ(run.task.bitsPerPixel, 2u) << "two colours and white";
    EXPECT_EQ(EntryOf(run.task.palette, 0), Rgb(0, 0, 9));
    EXPECT_EQ(EntryOf(run.task.palette, 1), Rgb(200, 100, 50));
    EXPECT_EQ(EntryOf(run.task.palette, 2), 0xFFFFFFu);
    EXPECT_EQ(EntryOf(run.task.palette, 3), 0u);
}

// A picture of that many grays and other colours, none white; the nearest to white is (250, 250, 250).
Picture PictureOfColors(uint32_t colors) {
    Picture picture = FlatPicture(16, 16, Rgb(250, 250, 250));
    const ImageLock lock(picture.handle);
    for (uint32_t i = 1; i < colors; ++i)
        SetDibPixel(lock.image, static_cast<int32_t>(i % 16), static_cast<int32_t>(i / 16),
                    Rgb(i % 200, i / 2, 100 - i % 100));
    return picture;
}

TEST(Build, Up_to_253_colours_gain_an_entry_and_more_give_up_the_one_nearest_to_the_background) {
    for (const uint32_t colors : {252u, 253u, 254u, 255u}) {
        std::vector<Picture> pictures;
        pictures.push_back(PictureOfColors(colors));
        BuildOptions options = BuiltInOptions();
        options.customPalette = true;
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
        const uint32_t used = colors < 254 ? colors + 1 : colors;
        EXPECT_EQ(EntryOf(run.task.palette, used - 1), 0xFFFFFFu) << colors;
        const bool keptNearest = EntryOf(run.task.palette, used - 2) == Rgb(250, 250, 250);
        EXPECT_EQ(keptNearest, colors < 254) << colors;
    }
}

TEST(Build, The_reserved_entry_counts_among_the_bits) {
    for (const uint32_t colors : {1u, 2u, 3u, 6u, 7u, 14u, 15u, 16u, 127u, 253u, 255u}) {
        std::vector<Picture> pictures;
        pictures.push_back(PictureOfColors(colors));
        pictures.push_back(PictureOfColors(colors));
        BuildOptions options = BuiltInOptions();
        options.customPalette = true;
        for (const bool supercompress : {false, true}) {
            options.supercompress = supercompress;
            BuildRun run;
            EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
            // White is one more colour, or takes another one's entry.
            const auto used = static_cast<int32_t>(colors < 254 ? colors + 1 : colors);
            EXPECT_EQ(run.task.bitsPerPixel, static_cast<uint32_t>(BitsForColors(used + supercompress)));
            EXPECT_EQ(run.frames[1].record.transparentIndex, supercompress ? used : -1) << colors;
            if (supercompress) {
                EXPECT_EQ(PixelOf(ImageOf(run.frames[1]).handle, 5, 5), static_cast<uint32_t>(used));
            }
        }
    }
}

TEST(Build, Match_original_takes_the_source_palette_and_its_bits) {
    for (const size_t colors : {1u, 2u, 3u, 16u, 17u, 200u, 256u}) {
        BlockOptions block;
        std::mt19937 random(1);
        for (size_t i = 0; i < 3 * colors; ++i) block.globalPalette.push_back(static_cast<uint8_t>(random()));
        BuildOptions options = BuiltInOptions();
        options.paletteChoice = kSourcePalette;
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(2), block), options), 1);
        EXPECT_FALSE(HasStatus(run, "Quantizing"));
        EXPECT_EQ(run.task.bitsPerPixel, static_cast<uint32_t>(BitsForColors(static_cast<int32_t>(colors))));
        block.globalPalette.resize(kPaletteBytes);
        EXPECT_EQ(std::memcmp(run.task.palette, block.globalPalette.data(), kPaletteBytes), 0) << colors;
    }
}

TEST(Build, A_source_palette_of_more_than_256_colours_is_cut) {
    BlockOptions block;
    for (size_t i = 0; i < 3 * 300; ++i) block.globalPalette.push_back(static_cast<uint8_t>(i * 7));
    BuildOptions options = BuiltInOptions();
    options.paletteChoice = kSourcePalette;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(2), block), options), 1);
    EXPECT_EQ(run.task.bitsPerPixel, 8u);
    EXPECT_EQ(std::memcmp(run.task.palette, block.globalPalette.data(), kPaletteBytes), 0);
}

TEST(Build, Match_original_without_a_source_palette_or_with_an_empty_one_quantizes) {
    BuildOptions options = BuiltInOptions();
    options.paletteChoice = kSourcePalette;
    std::vector<uint8_t> none = BlockOf(MovingBar(2));
    std::vector<uint8_t> empty = none;
    empty[12] = 4;  // a palette is announced, of 0 colours
    for (const std::vector<uint8_t>& block : {none, empty}) {
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, block, options), 1);
        EXPECT_TRUE(HasStatus(run, "Quantizing"));
    }
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

// An effect whose background colour is that of the moving bar's scene.
int32_t AnswerScene(void*, int32_t question) { return question == 0 ? int32_t{Rgb(10, 60, 90)} : -1; }

TEST(Build, With_a_local_background_pixels_of_its_colour_take_the_reserved_index) {
    const EffectDescriptor effect = EffectWith(Decode, AnswerScene);
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.localBackground = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(2)), options, &effect), 1);
    const uint32_t reserved = run.task.reservedIndex;
    EXPECT_EQ(reserved, 33u) << "32 bar colours and the background: no entry is appended, one is reserved";
    EXPECT_EQ(EntryOf(run.task.palette, reserved), Rgb(10, 60, 90));
    for (const HandedFrame& frame : run.frames) {
        EXPECT_EQ(frame.record.localBackground, 1u);
        EXPECT_EQ(frame.record.transparentIndex, static_cast<int32_t>(reserved));
        EXPECT_EQ(PixelOf(ImageOf(frame).handle, 40, 3), reserved);
        EXPECT_NE(PixelOf(ImageOf(frame).handle, 5, 3), reserved);
    }
}

TEST(Build, With_a_fixed_palette_a_local_background_marks_nothing) {
    const EffectDescriptor effect = EffectWith(Decode, AnswerScene);
    BuildOptions options = BuiltInOptions();
    BuildRun plain, local;
    BuildWith(&plain, BlockOf(MovingBar(2)), options, &effect);
    options.localBackground = true;
    EXPECT_EQ(BuildWith(&local, BlockOf(MovingBar(2)), options, &effect), 1);
    EXPECT_EQ(local.frames[1].bitmap, plain.frames[1].bitmap);
    EXPECT_EQ(local.frames[1].record.localBackground, 1u);
    EXPECT_EQ(local.frames[1].record.transparentIndex, -1);
    EXPECT_EQ(local.task.reservedIndex, UINT32_MAX);
}

TEST(Build, A_local_background_gives_way_to_supercompression_and_to_an_effect_without_a_colour) {
    const EffectDescriptor effect = EffectWith(Decode, AnswerScene);
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.localBackground = options.supercompress = true;
    BuildRun super, colorless, single;
    EXPECT_EQ(BuildWith(&super, BlockOf(MovingBar(2)), options, &effect), 1);
    EXPECT_EQ(super.frames[0].record.localBackground, 0u);
    EXPECT_EQ(super.task.reservedIndex, 0u);
    // Even where one frame alone then switches supercompression off.
    EXPECT_EQ(BuildWith(&single, BlockOf(MovingBar(1)), options, &effect), 1);
    EXPECT_EQ(single.frames[0].record.localBackground, 0u);
    options.supercompress = false;
    EXPECT_EQ(BuildWith(&colorless, BlockOf(MovingBar(2)), options), 1);
    EXPECT_EQ(colorless.frames[0].record.localBackground, 0u);
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
