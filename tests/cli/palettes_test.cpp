// SPDX-License-Identifier: MIT
// Every palette with and without dithering and supercompression, judged by what the file shows.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <set>

#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using Palette = std::vector<RgbColor>;

constexpr int kFour[] = {0, 85, 170, 255};
constexpr int kSix[] = {0, 51, 102, 153, 204, 255};
constexpr int kEight[] = {0, 36, 72, 108, 144, 180, 216, 255};

RgbColor Color(int red, int green, int blue) {
    return {static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue)};
}

template <size_t Reds, size_t Greens, size_t Blues>
Palette Cube(const int (&reds)[Reds], const int (&greens)[Greens], const int (&blues)[Blues]) {
    Palette cube;
    for (const int red : reds) {
        for (const int green : greens) {
            for (const int blue : blues) cube.push_back(Color(red, green, blue));
        }
    }
    return cube;
}

Palette SixteenColors() {
    return {Color(0, 0, 0),       Color(128, 0, 0),   Color(0, 128, 0),   Color(128, 128, 0),
            Color(0, 0, 128),     Color(128, 0, 128), Color(0, 128, 128), Color(128, 128, 128),
            Color(192, 192, 192), Color(255, 0, 0),   Color(0, 255, 0),   Color(255, 255, 0),
            Color(0, 0, 255),     Color(255, 0, 255), Color(0, 255, 255), Color(255, 255, 255)};
}

Palette CubeWithGrays() {
    constexpr int kSeven[] = {0, 43, 85, 128, 170, 213, 255};
    constexpr int kEvenEight[] = {0, 36, 73, 109, 146, 182, 219, 255};
    const Palette cube = Cube(kSeven, kEvenEight, kFour);
    Palette palette(cube.begin(), cube.begin() + 112);
    for (int j = 0; j < 32; ++j) {
        const int gray = j == 0 ? 1 : j == 31 ? 254 : 255 * j / 31;
        palette.push_back(Color(gray, gray, gray));
    }
    palette.insert(palette.end(), cube.begin() + 112, cube.end());
    return palette;
}

Palette Grays() {
    Palette grays;
    for (int i = 0; i < 256; ++i) grays.push_back(Color(i, i, i));
    return grays;
}

Palette SafeColors() {
    Palette safe;
    for (const int green : kSix) {
        for (const int red : kSix) {
            for (const int blue : kSix) safe.push_back(Color(red, green, blue));
        }
    }
    return safe;
}

struct FixedPalette {
    const char* name;
    Palette colors;
};

std::vector<FixedPalette> FixedPalettes() {
    constexpr int kBoth[] = {0, 255};
    return {{"Black and white", {Color(0, 0, 0), Color(255, 255, 255)}},
            {"Sixteen-color Windows", SixteenColors()},
            {"32-color orthogonal", Cube(kFour, kFour, kBoth)},
            {"64-color orthogonal", Cube(kFour, kFour, kFour)},
            {"128-color orthogonal", Cube(kFour, kEight, kFour)},
            {"216-color safe", SafeColors()},
            {"256-color orthogonal", Cube(kEight, kEight, kFour)},
            {"256-color with gray", CubeWithGrays()},
            {"256 gray levels", Grays()}};
}

// The first of the nearest colours, green weighing most. Black and white go by luminance instead.
RgbColor Nearest(const Palette& palette, const uint8_t* pixel) {
    if (palette.size() == 2) {
        const int luminance = 150 * pixel[1] / 255 + 77 * pixel[0] / 255 + 28 * pixel[2] / 255;
        return palette[luminance < 129 ? 0 : 1];
    }
    int best = 1000000;
    RgbColor nearest = palette[0];
    for (const RgbColor color : palette) {
        const int red = pixel[0] - color.red, green = pixel[1] - color.green, blue = pixel[2] - color.blue;
        const int distance = 3 * red * red + 4 * green * green + 2 * blue * blue;
        if (distance < best) {
            best = distance;
            nearest = color;
        }
    }
    return nearest;
}

Animation Remapped(Animation source, const Palette& palette) {
    for (Frame& frame : source.frames) {
        for (size_t i = 0; i < frame.pixels.size(); i += 4) {
            const RgbColor color = Nearest(palette, frame.pixels.data() + i);
            frame.pixels[i] = color.red;
            frame.pixels[i + 1] = color.green;
            frame.pixels[i + 2] = color.blue;
        }
    }
    return source;
}

void ExpectOnlyColorsOf(const Palette& palette, const Animation& animation) {
    std::set<std::array<int, 3>> allowed;
    for (const RgbColor color : palette) allowed.insert({color.red, color.green, color.blue});
    for (const Frame& frame : animation.frames) {
        for (size_t i = 0; i < frame.pixels.size(); i += 4) {
            const std::array<int, 3> color = {frame.pixels[i], frame.pixels[i + 1], frame.pixels[i + 2]};
            ASSERT_TRUE(allowed.count(color)) << color[0] << " " << color[1] << " " << color[2];
        }
    }
}

struct Built {
    TemporaryFolder folder;
    Animation source;

    Built() {
        WriteTestGif(folder.path + "in.gif", 4);
        source = ReadBack(folder.path + "in.gif");
    }

    Animation Build(const std::string& palette, const std::vector<std::string>& options) const {
        std::vector<std::string> arguments = {
            "apply", folder.path + "in.gif", "-o", folder.path + "out.gif", "--palette", palette, "--force"};
        const auto unchanged = UnchangedPictures();
        arguments.insert(arguments.end(), unchanged.begin(), unchanged.end());
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        Animation animation = ReadBack(folder.path + "out.gif");
        EXPECT_EQ(animation.loopCount, 3);
        for (size_t i = 0; i < animation.frames.size(); ++i) {
            EXPECT_EQ(animation.frames[i].delay, source.frames[i].delay);
        }
        return animation;
    }
};

class EachFixedPalette : public ::testing::TestWithParam<FixedPalette> {};

TEST_P(EachFixedPalette, Gives_each_pixel_its_nearest_colour) {
    const Built built;
    const Animation plain = built.Build(GetParam().name, {});
    ExpectSamePictures(Remapped(built.source, GetParam().colors), plain);
    ExpectSamePictures(plain, built.Build(GetParam().name, {"--supercompress"}));
}

TEST_P(EachFixedPalette, Is_not_left_by_dithering) {
    const Built built;
    const Animation dithered = built.Build(GetParam().name, {"--dither"});
    ExpectOnlyColorsOf(GetParam().colors, dithered);
    ExpectSamePictures(dithered, built.Build(GetParam().name, {"--dither", "--supercompress"}));
}

INSTANTIATE_TEST_SUITE_P(Palettes, EachFixedPalette, ::testing::ValuesIn(FixedPalettes()),
                         [](const auto& instance) {
                             std::string name;
                             for (const char c : std::string(instance.param.name)) {
                                 if (std::isalnum(static_cast<unsigned char>(c))) name += c;
                             }
                             return name;
                         });

TEST(SourcePalettes, A_computed_palette_holds_few_colours_exactly) {
    const Built built;
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, {"--dither"}, {"--supercompress"}, {"--dither", "--supercompress"}}) {
        ExpectSamePictures(built.source, built.Build("custom", options));
    }
}

TEST(SourcePalettes, The_original_palette_holds_the_source_exactly) {
    const Built built;
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, {"--dither"}, {"--supercompress"}, {"--dither", "--supercompress"}}) {
        ExpectSamePictures(built.source, built.Build("original", options));
    }
}

// The sample has more colours than a palette holds. Dithering spreads the errors of what moves over what
// stands still, which then changes in each frame; supercompression keeps those pixels as they were. (Without
// dithering the GIF writer leaves out unchanged pixels in any case.)
TEST(SourcePalettes, Supercompression_makes_a_dithered_file_smaller) {
    const TemporaryFolder folder;
    const std::string input = folder.path + "in.gif", output = folder.path + "out.gif";
    ASSERT_EQ(RunKestrel({"sample", input}).exitCode, 0);
    const auto sizeWith = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"apply",     input,    "-o",      output,
                                              "--palette", "custom", "--dither"};
        const auto unchanged = UnchangedPictures();
        arguments.insert(arguments.end(), unchanged.begin(), unchanged.end());
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return ReadText(output).size();
    };
    const size_t plain = sizeWith({});
    EXPECT_LT(sizeWith({"--supercompress", "--force"}), plain);
}

// Colours of the file's global palette: a GIF says how many bits there are in its eleventh byte.
int PaletteEntriesOf(const std::string& path) { return 2 << (ReadText(path)[10] & 7); }

TEST(SourcePalettes, The_number_of_colours_can_be_limited) {
    const TemporaryFolder folder;
    const std::string input = folder.path + "in.gif", output = folder.path + "out.gif";
    ASSERT_EQ(RunKestrel({"sample", input}).exitCode, 0);
    for (const int colors : {2, 3, 8, 64, 255, 256}) {
        const nlohmann::json result =
            RunKestrelForJson({"apply", input, "-o", output, "--force", "--frames", "1-2", "--effect",
                               "Emboss", "--dither", "--colors", std::to_string(colors)});
        EXPECT_LE(result["colors"].get<int>(), colors);
        EXPECT_GT(result["colors"].get<int>(), colors / 2);
        // The writer may add an entry for pixels that do not change.
        EXPECT_LE(PaletteEntriesOf(output), 2 * colors);
    }
}

TEST(SourcePalettes, A_limit_leaves_room_for_transparent_pixels) {
    const TemporaryFolder folder;
    const std::string input = folder.path + "in.gif", output = folder.path + "out.gif";
    WriteTestGif(input, 2, true);
    for (const int colors : {3, 4, 8, 16}) {
        const ProgramResult result = RunKestrel({"apply", input, "-o", output, "--force", "--effect", "Neon",
                                                 "--colors", std::to_string(colors)});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_LT(PaletteEntriesOf(output), 2 * colors);
    }
    const ProgramResult refused =
        RunKestrel({"apply", input, "-o", output, "--force", "--effect", "Neon", "--colors", "2"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_NE(refused.err.find("--colors 3"), std::string::npos) << refused.err;
}

TEST(SourcePalettes, A_limit_is_for_computed_palettes) {
    const TemporaryFolder folder;
    WriteTestGif(folder.path + "in.gif", 2);
    const auto errorWith = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {
            "apply", folder.path + "in.gif", "-o", folder.path + "out.gif", "--effect", "Neon"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProgramResult result = RunKestrel(arguments);
        EXPECT_EQ(result.exitCode, 2);
        return result.err;
    };
    EXPECT_NE(errorWith({"--colors", "9", "--palette", "216-color safe"}).find("computed"),
              std::string::npos);
    EXPECT_NE(errorWith({"--colors", "9", "--palette", "original"}).find("computed"), std::string::npos);
    EXPECT_NE(errorWith({"--colors", "2", "--supercompress"}).find("--colors 3"), std::string::npos);
    EXPECT_NE(errorWith({"--colors", "1"}).find("2 to 256"), std::string::npos);
    EXPECT_NE(errorWith({"--colors", "257"}).find("2 to 256"), std::string::npos);
}

TEST(SourcePalettes, Fast_remapping_still_shows_exact_colours) {
    const Built built;
    ExpectSamePictures(built.source, built.Build("original", {"--fast-remap"}));
}

TEST(SourcePalettes, Brightness_and_contrast_steer_black_and_white) {
    const Built built;
    const auto whitePixels = [](const Animation& animation) {
        size_t count = 0;
        for (const Frame& frame : animation.frames) {
            for (size_t i = 0; i < frame.pixels.size(); i += 4) count += frame.pixels[i] == 255;
        }
        return count;
    };
    const Animation dark = built.Build("Black and white", {"--dither", "--dither-brightness", "0"});
    const Animation bright = built.Build("Black and white", {"--dither", "--dither-brightness", "120"});
    EXPECT_LT(whitePixels(dark), whitePixels(bright));
}

}  // namespace
}  // namespace kfx::test
