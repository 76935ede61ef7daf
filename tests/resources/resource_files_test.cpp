// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "builder/fixed_palettes.h"
#include "effects/effect_table.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/palette_resource.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes ResourceOf(const PaletteTable& palette) {
    const auto resource = test::MakePaletteResource(palette);
    return Bytes(resource.begin(), resource.end());
}

TEST(ResourceFiles, The_palettes_hold_the_builders_tables) {
    EXPECT_EQ(test::ReadTestFile("resources/palette_216.bin"), ResourceOf(kSafePalette));
    EXPECT_EQ(test::ReadTestFile("resources/palette_256_gray.bin"), ResourceOf(kCubeAndGrays));
}

struct Logo {
    size_t width, height, frames, colors, frameBytes;
    Bytes pixels;  // all frames
};

Logo ReadLogo() {
    const Bytes file = test::ReadTestFile("resources/logo.bin");
    const auto word = [&](size_t offset) { return size_t{file[offset]} | size_t{file[offset + 1]} << 8; };
    Logo logo = {word(0), word(2), word(4), word(6), 0, {}};
    logo.frameBytes = (logo.width + 3) / 4 * 4 * logo.height;
    const auto head = static_cast<ptrdiff_t>(8 + 4 * logo.colors);
    logo.pixels.assign(file.begin() + head, file.end());
    return logo;
}

TEST(ResourceFiles, The_logo_is_a_sequence_of_equally_sized_frames_and_nothing_else) {
    const Logo logo = ReadLogo();
    EXPECT_GT(logo.frames, 1u);
    EXPECT_LE(logo.colors, 256u);
    EXPECT_EQ(logo.pixels.size(), logo.frames * logo.frameBytes);
}

TEST(ResourceFiles, The_logos_pixels_name_colors_that_exist) {
    const Logo logo = ReadLogo();
    for (const uint8_t pixel : logo.pixels) ASSERT_LT(pixel, logo.colors);
}

TEST(ResourceFiles, The_logo_moves_in_every_frame) {
    const Logo logo = ReadLogo();
    for (size_t frame = 0; frame < logo.frames; ++frame) {
        const uint8_t* next = logo.pixels.data() + (frame + 1) % logo.frames * logo.frameBytes;
        const uint8_t* current = logo.pixels.data() + frame * logo.frameBytes;
        EXPECT_NE(std::memcmp(current, next, logo.frameBytes), 0) << frame;
    }
}

// What the plug-in's Help buttons ask for, and every effect of the list.
TEST(ResourceFiles, The_help_document_has_every_topic) {
    const Bytes file = test::ReadTestFile("docs/help/KFXPLUG1.HTML");
    const std::string text(file.begin(), file.end());
    for (const char* topic : {"PREFACE", "OUTPUT", "ABOUT"}) {
        EXPECT_NE(text.find("id=\"" + std::string(topic) + "\""), std::string::npos) << topic;
    }
    for (size_t i = 0; i < EffectCount(); ++i) {
        const std::string name = EffectAt(i)->name;
        EXPECT_NE(text.find(">" + name + "</h3>"), std::string::npos) << name;
    }
    // Every picture lies beside it.
    for (size_t at = text.find("src=\""); at != std::string::npos; at = text.find("src=\"", at + 1)) {
        const std::string target = text.substr(at + 5, text.find('"', at + 5) - at - 5);
        EXPECT_FALSE(test::ReadTestFile(("docs/help/" + target).c_str()).empty()) << target;
    }
    // Every link leads somewhere.
    for (size_t at = text.find("href=\"#"); at != std::string::npos; at = text.find("href=\"#", at + 1)) {
        const std::string target = text.substr(at + 7, text.find('"', at + 7) - at - 7);
        EXPECT_NE(text.find("id=\"" + target + "\""), std::string::npos) << target;
    }
}

}  // namespace
}  // namespace kfx
