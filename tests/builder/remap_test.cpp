// SPDX-License-Identifier: MIT
#include "builder/remap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "builder/fixed_palettes.h"
#include "builder/palette_order.h"
#include "framework/cpu.h"
#include "tests/builder/random_palette.h"
#include "tests/reference/remap_reference.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

struct Case {
    int32_t bitsPerPixel;
    int32_t colorCount;
    bool fast;
};

// Both the product's target and the reference's for the same case.
struct Targets {
    Targets(const uint8_t palette[kPaletteBytes], const Case& given, int32_t brightness = 20,
            int32_t contrast = 20) {
        std::memcpy(product.palette, palette, kPaletteBytes);
        product.bitsPerPixel = given.bitsPerPixel;
        product.colorCount = given.colorCount;
        product.fastRemap = given.fast;
        product.ditherBrightness = brightness;
        product.ditherContrast = contrast;
        reference = {product.palette, given.bitsPerPixel, given.colorCount, given.fast, brightness, contrast};
    }

    RemapTarget product;
    ReferenceTarget reference;
};

std::string Describe(const WorkingImage* image, const Case& given) {
    return std::to_string(image->width) + "x" + std::to_string(image->height) + "x" +
           std::to_string(image->bitCount) + " to " + std::to_string(given.bitsPerPixel) + " bits, " +
           std::to_string(given.colorCount) + " colours" + (given.fast ? ", fast" : "");
}

void ExpectReference(ImageHandle source, Targets* targets, const Case& given) {
    const ImageLock lock(source);
    const std::string name = Describe(lock.image, given);
    const std::vector<uint8_t> before = BytesOf(source);
    const Picture expected(ReferencePlainRemap(source, targets->reference));
    const Picture actual(PlainRemap(source, &targets->product));
    ASSERT_TRUE(SamePicture(expected.handle, actual.handle)) << "plain, " << name;
    ASSERT_EQ(BytesOf(expected.handle), BytesOf(actual.handle)) << "the rows' padding, " << name;
    const Picture expectedDithered(ReferenceDitherRemap(source, targets->reference));
    const Picture dithered(DitherRemap(source, &targets->product));
    ASSERT_TRUE(SamePicture(expectedDithered.handle, dithered.handle)) << "dithered, " << name;
    ASSERT_EQ(BytesOf(source), before) << "the source stays as it was, " << name;
}

class RemapPaths : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override { AllowAvx2(GetParam()); }
    void TearDown() override { AllowAvx2(true); }
};

TEST_P(RemapPaths, Every_source_depth_and_output_depth_gives_the_reference) {
    const Case cases[] = {{1, 2, false},  {1, 256, true}, {2, 3, false},  {3, 8, true},   {4, 11, false},
                          {4, 256, true}, {5, 20, false}, {8, 200, true}, {8, 256, false}};
    uint32_t seed = 1;
    for (const Case& given : cases) {
        for (const int32_t depth : {1, 4, 8, 24, 32}) {
            for (const Size size : {Size{1, 1}, Size{2, 3}, Size{5, 4}, Size{17, 6}, Size{8, 5}}) {
                uint8_t palette[kPaletteBytes];
                FillRandomPalette(palette, std::min(given.colorCount, 1 << given.bitsPerPixel), ++seed);
                Targets targets(palette, given);
                const Picture source = RandomPicture(size.width, size.height, ++seed, depth);
                ExpectReference(source.handle, &targets, given);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_P(RemapPaths, Full_colour_pictures_of_tricky_sizes_give_the_reference) {
    uint32_t seed = 1000;
    for (const Size size : TrickySizes()) {
        for (const Case& given :
             {Case{8, 256, false}, Case{8, 77, true}, Case{4, 16, false}, Case{1, 2, false}}) {
            uint8_t palette[kPaletteBytes];
            FillRandomPalette(palette, given.colorCount, ++seed);
            Targets targets(palette, given);
            const Picture noise = RandomPicture(size.width, size.height, ++seed);
            const Picture shades = ShadedPicture(size.width, size.height, ++seed);
            ExpectReference(noise.handle, &targets, given);
            ExpectReference(shades.handle, &targets, given);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(RemapPaths, Every_fixed_palette_gives_the_reference) {
    for (int32_t choice = 0; choice <= 9; ++choice) {
        for (const bool fast : {false, true}) {
            Case given = {0, 256, fast};
            uint8_t palette[kPaletteBytes];
            BuildFixedPalette(palette, choice, &given.bitsPerPixel);
            Targets targets(palette, given);
            const Picture shades = ShadedPicture(61, 40, static_cast<uint32_t>(choice));
            ExpectReference(shades.handle, &targets, given);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(RemapPaths, Every_colour_count_from_none_to_256_gives_the_reference) {
    const Picture shades = ShadedPicture(40, 12, 5);
    for (int32_t colors = 0; colors <= 256; colors += colors < 20 ? 1 : 17) {
        const Case given = {8, colors, false};
        uint8_t palette[kPaletteBytes];
        FillRandomPalette(palette, colors, static_cast<uint32_t>(colors));
        Targets targets(palette, given);
        ExpectReference(shades.handle, &targets, given);
        if (HasFatalFailure()) return;
    }
}

TEST_P(RemapPaths, Colours_all_over_the_space_get_the_reference_s_answers) {
    for (const int32_t colors : {1, 24, 256}) {
        for (const bool fast : {false, true}) {
            uint8_t palette[kPaletteBytes];
            FillRandomPalette(palette, colors, static_cast<uint32_t>(colors));
            Targets targets(palette, {8, colors, fast});
            // Every palette colour and its neighbours, then colours from everywhere.
            const int32_t width = 3 * colors + 6000;
            const Picture picture = RandomPicture(width, 1, static_cast<uint32_t>(colors));
            const ImageLock lock(picture.handle);
            for (int32_t i = 0; i < 3 * colors; ++i) {
                const uint8_t* entry = palette + i / 3 * 3;
                SetDibPixel(lock.image, i, 0,
                            (Rgb(entry[0], entry[1], entry[2]) ^ static_cast<uint32_t>(i % 3)));
            }
            const Picture expected(ReferencePlainRemap(picture.handle, targets.reference));
            const Picture actual(PlainRemap(picture.handle, &targets.product));
            ASSERT_TRUE(SamePicture(expected.handle, actual.handle)) << colors << " colours, fast " << fast;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Processors, RemapPaths, ::testing::Bool(),
                         [](const auto& parameter) { return parameter.param ? "Avx2" : "Plain"; });

TEST(Remap, One_target_serves_frames_of_different_sizes) {
    uint8_t palette[kPaletteBytes];
    FillRandomPalette(palette, 256, 3);
    const Case given = {8, 256, false};
    Targets targets(palette, given);
    for (uint32_t seed = 0; seed < 6; ++seed) {
        const auto side = static_cast<int32_t>(seed);
        const Picture frame = ShadedPicture(10 + 7 * side, 40 - 5 * side, seed);
        ExpectReference(frame.handle, &targets, given);
        if (HasFatalFailure()) return;
    }
}

TEST(Remap, A_changed_palette_is_noticed) {
    uint8_t palette[kPaletteBytes];
    const Picture shades = ShadedPicture(30, 20, 1);
    FillRandomPalette(palette, 256, 1);
    Targets targets(palette, {8, 256, false});
    for (uint32_t seed = 2; seed < 5; ++seed) {
        FillRandomPalette(targets.product.palette, 256, seed);
        ExpectReference(shades.handle, &targets, {8, 256, false});
        if (HasFatalFailure()) return;
    }
}

TEST(Remap, With_fast_remap_a_palette_colour_maps_to_its_first_exact_entry) {
    // 15-bit rounding alone would send (255, 255, 255) to the gray entry.
    uint8_t palette[kPaletteBytes] = {248, 248, 248, 255, 255, 255, 255, 255, 255};
    Targets targets(palette, {8, 3, true});
    const Picture white = FlatPicture(3, 1, 0xFFFFFF);
    const Picture nearly = FlatPicture(3, 1, 0xFEFEFE);
    const Picture exact(PlainRemap(white.handle, &targets.product));
    const Picture rounded(PlainRemap(nearly.handle, &targets.product));
    EXPECT_EQ(PixelOf(exact.handle, 0, 0), 1u);
    EXPECT_EQ(PixelOf(rounded.handle, 0, 0), 0u);
}

// Black and white, the colours of a two-colour picture.
TEST(Remap, A_two_colour_picture_maps_to_what_the_colour_index_answers) {
    const Picture source(CreateDib(2, 1, nullptr, 1));
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 1, 0, 1);
    }
    std::mt19937 random(1);
    ColorIndex index;
    for (int i = 0; i < 300; ++i) {
        const auto colors = static_cast<int32_t>(random() % 256 + 1);
        uint8_t palette[kPaletteBytes];
        FillRandomPalette(palette, colors, static_cast<uint32_t>(i));
        // Grays about white and its 15-bit rounding, which neither is always the nearest to.
        for (int k = 0; k < 3; ++k)
            std::memset(palette + 3 * (static_cast<int32_t>(random()) & (colors - 1)),
                        static_cast<int>(256 - random() % 16) & 255, 3);
        for (const bool fast : {false, true}) {
            Targets targets(palette, {8, colors, fast});
            const Picture mapped(PlainRemap(source.handle, &targets.product));
            ASSERT_TRUE(PrepareColorIndex(&index, palette, colors, fast));
            ASSERT_EQ(PixelOf(mapped.handle, 0, 0), LookUpColor(&index, 0, 0, 0)) << i << ", fast " << fast;
            ASSERT_EQ(PixelOf(mapped.handle, 1, 0), LookUpColor(&index, 255, 255, 255))
                << i << ", fast " << fast;
        }
    }
}

TEST(Remap, A_four_bit_picture_is_searched_among_sixteen_entries_so_that_indices_fit) {
    uint8_t palette[kPaletteBytes];
    BuildFixedPalette(palette, 6, nullptr);  // white stands far behind entry 15
    Targets targets(palette, {4, 256, false});
    const Picture white = FlatPicture(5, 1, 0xFFFFFF);
    const Picture mapped(PlainRemap(white.handle, &targets.product));
    EXPECT_EQ(PixelOf(mapped.handle, 4, 0),
              static_cast<uint32_t>(ReferenceNearest(palette, 16, 255, 255, 255)));
}

TEST(Remap, Two_colour_output_turns_white_from_luminance_129_on) {
    uint8_t palette[kPaletteBytes];
    BuildFixedPalette(palette, 0, nullptr);
    Targets targets(palette, {1, 256, false});
    for (uint32_t gray = 0; gray < 256; ++gray) {
        const auto level = static_cast<int32_t>(gray);
        const Picture flat = FlatPicture(2, 1, Rgb(gray, gray, gray));
        const Picture mapped(PlainRemap(flat.handle, &targets.product));
        EXPECT_EQ(PixelOf(mapped.handle, 1, 0), LuminanceOf(level, level, level) < 129 ? 0u : 1u) << gray;
    }
}

}  // namespace
}  // namespace kfx::test
