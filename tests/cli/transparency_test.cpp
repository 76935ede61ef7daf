// SPDX-License-Identifier: MIT
// Transparent files through kestrel.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

#include "commands/commands.h"
#include "commands/direct_engine.h"
#include "commands/parameter_help.h"
#include "commands/report.h"
#include "effects/effect_table.h"
#include "media/animation_writer.h"
#include "media/contact_sheet.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/support/held_clock.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using Arguments = std::vector<std::string>;

constexpr int kSize = 48;

struct Transparency : ::testing::Test {
    TemporaryFolder folder;
    std::string input = folder.path + "in.webp";

    void SetUp() override { WriteBar(2); }

    // A bar with soft edges, in two colours, on nothing.
    void WriteBar(int frames) const {
        Animation animation;
        animation.width = animation.height = kSize;
        for (int f = 0; f < frames; ++f) {
            Frame frame;
            frame.delay = 10;
            frame.transparent = true;
            for (int i = 0; i < kSize * kSize; ++i) {
                const int x = i % kSize, y = i / kSize;
                const int alpha = std::clamp((8 - std::abs(y - 20 - f)) * 100 - 150, 0, 255);
                const uint8_t red = x < 24 ? 250 : 20;
                for (const int value : {int{red}, 90, 30, alpha})
                    frame.pixels.push_back(static_cast<uint8_t>(value));
            }
            animation.frames.push_back(frame);
        }
        std::string error;
        ASSERT_TRUE(WriteWebp(input, animation, &error)) << error;
    }

    nlohmann::json Apply(const std::string& output, const Arguments& more) const {
        Arguments arguments = {"apply", input, "-o", folder.path + output, "--force"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        nlohmann::json result = RunKestrelForJson(arguments);
        EXPECT_EQ(result["exitCode"], 0) << result;
        return result;
    }

    Animation Result(const std::string& output, const Arguments& more) const {
        Apply(output, more);
        return ReadBack(folder.path + output);
    }
};

const uint8_t* At(const Animation& animation, int x, int y) {
    return &animation.frames[0].pixels[4 * (static_cast<size_t>(y) * static_cast<size_t>(animation.width) +
                                            static_cast<size_t>(x))];
}

TEST_F(Transparency, The_outline_moves_with_the_pixels) {
    const Animation turned =
        Result("out.webp", {"--effect", "Swirl", "--set", "Angle=720", "--effect", "HSB"});
    EXPECT_EQ(At(turned, 2, 20)[3], 255) << "outside the circle nothing turns";
    size_t changed = 0;
    const Animation source = ReadBack(input);
    for (size_t i = 3; i < source.frames[0].pixels.size(); i += 4)
        changed += source.frames[0].pixels[i] != turned.frames[0].pixels[i];
    EXPECT_GT(changed, 200u);
    for (int i = 0; i < kSize * kSize; ++i) {
        const uint8_t* pixel = At(turned, i % kSize, i / kSize);
        ASSERT_TRUE(pixel[3] < 255 || pixel[2] < 40) << "no ground shines through: " << i;
    }
}

TEST_F(Transparency, A_blur_softens_the_outline_and_keeps_the_colour) {
    const Animation blurred = Result("out.webp", {"--effect", "Gaussian Blur", "--set", "Radius=45"});
    EXPECT_EQ(At(blurred, 5, 20)[3], 255);
    size_t soft = 0;
    for (int y = 0; y < kSize; ++y) {
        const uint8_t* pixel = At(blurred, 5, y);
        soft += pixel[3] != 0 && pixel[3] != 255;
        if (pixel[3] < 20) continue;
        EXPECT_NEAR(pixel[0], 250, 10) << y;
        EXPECT_NEAR(pixel[1], 90, 10) << y;
    }
    EXPECT_GT(soft, 8u);
    EXPECT_EQ(At(blurred, 5, 45)[3], 0);
}

TEST_F(Transparency, A_gif_decides_at_half_and_says_so) {
    const nlohmann::json plain = Apply("out.gif", {"--effect", "Solarize"});
    ASSERT_EQ(plain["notes"].size(), 1u) << plain;
    EXPECT_THAT(plain["notes"][0].get<std::string>(), HasSubstr("a GIF holds no half-transparent pixels"));
    EXPECT_EQ(plain["colors"], 2);
    const Animation gif = ReadBack(folder.path + "out.gif");
    EXPECT_EQ(At(gif, 5, 20)[3], 255);
    EXPECT_EQ(At(gif, 5, 14)[3], 0);
    EXPECT_TRUE(Apply("out.webp", {"--effect", "Solarize"})["notes"].empty());
}

TEST_F(Transparency, A_matte_is_mixed_with_half_transparent_pixels) {
    const nlohmann::json mixed = Apply("out.gif", {"--effect", "Solarize", "--matte", "00FF00"});
    EXPECT_TRUE(mixed["notes"].empty()) << mixed;
    EXPECT_GT(mixed["colors"], 2);
    const Animation gif = ReadBack(folder.path + "out.gif");
    EXPECT_EQ(At(gif, 5, 14)[3], 255);
    EXPECT_GT(At(gif, 5, 14)[1], At(gif, 5, 20)[1]) << "greener";
    EXPECT_EQ(At(gif, 5, 40)[3], 0);
}

// Runs the command in this process.
void RunHere(const Arguments& arguments) {
    commands::CommandLine line;
    std::string text;
    ASSERT_EQ(ParseCommandLine(arguments, {}, &line, &text), commands::ParseOutcome::Run) << text;
    const commands::Report report = RunCommand(line, {commands::kDirectEngine});
    ASSERT_EQ(report.exitCode, commands::kExitDone) << report.error;
}

TEST_F(Transparency, A_gallery_shows_what_each_effect_makes_of_the_outline) {
    const HeldClock clock(1234);  // Water Drops
    WriteBar(1);
    std::vector<Animation> results = {ReadBack(input)};
    std::vector<std::string> names = {"Source"};
    for (size_t i = 0; i < EffectCount(); ++i) {
        names.emplace_back(EffectAt(i)->name);
        const std::string output = folder.path + "effect.webp";
        Arguments arguments = {"apply", input, "-o", output, "--force", "--effect", names.back()};
        for (const auto& [name, value] : commands::FindPictureSettings(commands::kHelpDocument, names.back()))
            arguments.insert(arguments.end(), {"--set", std::string(name).append("=").append(value)});
        RunHere(arguments);
        results.push_back(ReadBack(output));
    }
    std::vector<SheetPicture> pictures;
    for (size_t i = 0; i < results.size(); ++i)
        pictures.push_back({kSize, kSize, results[i].frames[0].pixels.data(), names[i],
                            TimesAsLarge(kSize, kSize, 200, 150)});
    const Picture expected = DrawGallery("Kestrel FX #1: its effects", pictures, 7, 200, 150);
    RunHere({"gallery", input, "-o", folder.path + "sheet.png", "--seed", "1234"});
    EXPECT_TRUE(ReadBack(folder.path + "sheet.png").frames[0].pixels == expected.pixels);
}

TEST_F(Transparency, A_palette_keeps_full_alpha_where_the_format_has_it) {
    const Animation source = ReadBack(input);
    const Animation result =
        Result("out.webp", {"--effect", "Neon", "--effect", "Solarize", "--palette", "216-color safe"});
    bool soft = false;
    for (int y = 0; y < kSize; ++y) soft = soft || (At(result, 5, y)[3] > 0 && At(result, 5, y)[3] < 255);
    EXPECT_TRUE(soft);
    for (int c = 0; c < 3; ++c) EXPECT_EQ(At(result, 5, 20)[c] % 51, 0);
}

}  // namespace
}  // namespace kfx::test
