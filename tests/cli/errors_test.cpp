// SPDX-License-Identifier: MIT
// What goes wrong is said in one sentence, answered with its exit code, and leaves nothing behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/failing_commands.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/cli/wrong_commands.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;

using Errors = FailingCommands;

// They load no plug-in; the others do only in the Windows program.
TEST_F(Errors, Commands_that_use_no_engine_know_no_option_of_the_plugin) {
    for (const std::string option : {"--through-plugin", "--plugin", "--show-window", "--timeout"}) {
        const std::string sentence = "kestrel: unknown option \"" + option + "\"; see --help.\n";
        EXPECT_EQ(Failing(2, {"sample", folder.path + "sample.gif", option}), sentence);
        EXPECT_EQ(Failing(2, {"sheet", input, input, "-o", folder.path + "sheet.png", option}), sentence);
    }
}

TEST_F(Errors, A_missing_input_is_named) {
    EXPECT_THAT(
        Failing(3, {"apply", folder.path + "no.gif", "-o", folder.path + "out.gif", "--effect", "Bump"}),
        HasSubstr("no.gif"));
}

TEST_F(Errors, A_file_that_is_no_animation_is_refused) {
    WriteText(folder.path + "text.gif", "GIF is what this is not");
    EXPECT_THAT(
        Failing(3, {"apply", folder.path + "text.gif", "-o", folder.path + "out.gif", "--effect", "Bump"}),
        HasSubstr("text.gif"));
}

TEST_F(Errors, Too_large_a_file_is_answered_with_the_limit_and_what_raises_it) {
    constexpr int kScale = 30;  // 1.08 million pixels
    const std::string large = folder.path + "large.gif", output = folder.path + "out.png";
    WriteTestGif(large, 1, false, kScale);
    const std::vector<std::string> words = {"sheet", large, input, "-o", output, "--max-pixels"};
    const auto withLimit = [&](const std::string& limit) {
        std::vector<std::string> arguments = words;
        arguments.push_back(limit);
        return arguments;
    };
    EXPECT_THAT(Failing(3, withLimit("1")),
                HasSubstr("large.gif: the picture of 1200 x 900 has 1080000 pixels; the "
                          "limit is 1000000 (--max-pixels 2 raises it)."));
    EXPECT_EQ(RunKestrel(withLimit("2")).exitCode, 0);
    // A screen of 30000 x 30000 pixels with an image of none.
    WriteText(large, std::string("GIF89a\x30\x75\x30\x75\0\0\0,\0\0\0\0\0\0\0\0\0\2\0;", 26));
    EXPECT_THAT(Failing(3, {"sheet", input, large, "-o", output}),
                HasSubstr("the limit is 536870912 (--max-pixels 900 raises it)."));
}

TEST_F(Errors, A_cut_file_is_built_from_its_complete_frames_with_a_note) {
    const std::string whole = ReadText(input);
    WriteText(folder.path + "cut.gif", whole.substr(0, whole.size() - 40));
    const auto report = RunKestrelForJson(
        {"apply", folder.path + "cut.gif", "-o", folder.path + "out.gif", "--effect", "Bump"});
    EXPECT_EQ(report["frames"], 1);
    EXPECT_EQ(report["notes"].size(), 1u);
}

TEST_F(Errors, An_unknown_effect_is_answered_with_the_nearest) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Embosss"})), HasSubstr("did you mean Emboss?"));
}

TEST_F(Errors, An_unknown_parameter_is_answered_with_the_nearest_or_all) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Dept=20", "--set", "Radios=9"})),
                HasSubstr("\"Radios\"; did you mean Radius?"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Wavelength=9"})),
                HasSubstr("Radius and Depth"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Neon", "--set", "Radius=9"})),
                HasSubstr("Neon has no parameters."));
}

TEST_F(Errors, A_value_out_of_range_is_answered_with_the_range) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Radius=46"})), HasSubstr("4 to 45"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Radius=3"})), HasSubstr("4 to 45"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Emboss", "--set", "Radius=9x"})), HasSubstr("4 to 45"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Swirl", "--set", "Angle=1441"})), HasSubstr("-1440 to 1440"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "Normalize", "--set", "Distributed=maybe"})),
                HasSubstr("on or off"));
    EXPECT_THAT(Failing(2, Apply({"--effect", "HSB and Channels", "--set", "Channels=Up"})),
                HasSubstr("Left 1"));
}

TEST_F(Errors, An_unknown_palette_is_answered_with_the_nearest) {
    EXPECT_THAT(Failing(2, Apply({"--effect", "Bump", "--palette", "215-color safe"})),
                HasSubstr("216-color safe"));
}

TEST_F(Errors, The_original_palette_needs_a_source_with_one) {
    // A WebP file has none.
    const std::string plain = folder.path + "plain.webp";
    ASSERT_EQ(RunKestrel({"apply", input, "-o", plain, "--effect", "Bump"}).exitCode, 0);
    EXPECT_THAT(Failing(2, {"apply", plain, "-o", folder.path + "out.gif", "--effect", "Bump", "--palette",
                            "original"}),
                HasSubstr("no palette of its own"));
}

TEST_F(Errors, An_output_that_cannot_be_written_is_found_before_the_work) {
    EXPECT_THAT(Failing(4, {"apply", input, "-o", folder.path + "none/out.gif", "--effect", "Bump"}),
                HasSubstr("cannot be written: the folder " + folder.path + "none/ does not exist."));
    EXPECT_THAT(Failing(4, {"gallery", input, "-o", folder.path + "none/out.png"}),
                HasSubstr("cannot be written"));
    EXPECT_THAT(Failing(4, {"sheet", input, input, "-o", folder.path + "none/out.png"}),
                HasSubstr("out.png"));
}

TEST_F(Errors, Each_names_its_cause_and_its_cure_in_plain_words) {
    ExpectSentences(WrongCommands(folder.path), folder.path, {});
}

TEST_F(Errors, An_error_is_a_json_object_for_scripts) {
    const auto report = RunKestrelForJson(Apply({"--effect", "Embosss"}));
    EXPECT_EQ(report["exitCode"], 2);
    EXPECT_THAT(report["error"].get<std::string>(), HasSubstr("Emboss"));
    EXPECT_EQ(RunKestrelForJson({"apply"})["exitCode"], 2);
}

}  // namespace
}  // namespace kfx::test
