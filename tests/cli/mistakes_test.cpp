// SPDX-License-Identifier: MIT
// Likely first mistakes are answered with what was probably meant.
#include <gtest/gtest.h>

#include <filesystem>

#include "media/utf8_path.h"
#include "tests/cli/failing_commands.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using Words = std::vector<std::string>;

struct Mistakes : FailingCommands {
    const std::string output = folder.path + "out.gif";

    // The sentence of `kestrel apply` with the input, the output and these words.
    std::string Sentence(const Words& more, int exitCode = 2) const {
        Words arguments = {"apply", input, "-o", output};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Failing(exitCode, arguments);
    }
};

TEST_F(Mistakes, A_name_without_quotes_is_no_second_input) {
    EXPECT_EQ(Sentence({"--effect", "Gaussian", "Blur"}),
              "kestrel: there is no file \"Blur\"; a name with spaces needs quotes, as --effect \"Gaussian "
              "Blur\".\n");
    EXPECT_EQ(Sentence({"--effect", "motion", "blur"}),
              "kestrel: there is no file \"blur\"; a name with spaces needs quotes, as --effect \"Motion "
              "Blur\".\n");
    EXPECT_EQ(Sentence({"--effect", "Bump", "--palette", "Black", "and", "white"}),
              "kestrel: there is no file \"and\"; a name with spaces needs quotes.\n");
}

TEST_F(Mistakes, An_effect_or_a_parameter_without_its_option_is_no_second_input) {
    EXPECT_EQ(Sentence({"Emboss"}),
              "kestrel: there is no file \"Emboss\"; to apply an effect, write --effect Emboss.\n");
    EXPECT_EQ(Sentence({"--effect", "Emboss", "Radius=9"}),
              "kestrel: there is no file \"Radius=9\"; to set a parameter of an effect, write --set "
              "\"Radius=9\".\n");
}

TEST_F(Mistakes, Files_with_such_names_are_inputs) {
    for (const std::string name : {"Blur", "Emboss", "Radius=9"}) {
        WriteTestGif(folder.path + name, 1);
        const Words words = {"apply",  input,     folder.path + name, "-o",  output,
                             "--join", "--force", "--effect",         "Neon"};
        EXPECT_EQ(RunKestrel(words).exitCode, 0) << name;
    }
}

TEST_F(Mistakes, A_folder_that_is_not_there_ends_in_a_slash) {
    const std::string inFolder = folder.path + "new";
    EXPECT_EQ(Failing(2, {"apply", input, input, "-o", inFolder, "--effect", "Neon"}),
              "kestrel: there are several inputs; to get a result for each in a folder, write -o \"" +
                  inFolder + "/\".\n");
    EXPECT_EQ(Failing(2, {"apply", input, "-o", inFolder, "--effect", "Neon"}),
              "kestrel: the output must end in .gif, .webp, .png, .apng or .y4m, not \"" + inFolder +
                  "\"; or add --format, or end a folder's name in \"/\".\n");
}

TEST_F(Mistakes, Options_stand_behind_the_command_and_before_the_double_dash) {
    EXPECT_EQ(Failing(2, {"--quiet", "apply", input, "-o", output}),
              "kestrel: --quiet stands before the command; put it behind: kestrel apply --quiet.\n");
    EXPECT_EQ(Failing(2, {"apply", "--", input, "-o", output, "--effect", "Neon"}),
              "kestrel: behind \"--\" stand files only; put the options before it.\n");
}

TEST_F(Mistakes, Videos_of_other_kinds_are_to_be_converted) {
    const std::string sentence =
        ": this kind of video is not read; make Y4M video of it, as with ffmpeg -i IN.mp4 OUT.y4m.\n";
    WriteText(folder.path + "a.mp4", std::string("\0\0\0\x20"
                                                 "ftypisom",
                                                 12));
    WriteText(folder.path + "a.mkv", "\x1A\x45\xDF\xA3 and more");
    for (const std::string name : {"a.mp4", "a.mkv"})
        EXPECT_EQ(Failing(3, {"info", folder.path + name}), "kestrel: " + folder.path + name + sentence);
}

TEST_F(Mistakes, Standard_input_is_read_once) {
    const std::string sentence = "kestrel: standard input is named twice, but can be read only once.\n";
    EXPECT_EQ(Failing(2, {"compare", "-", "-"}), sentence);
    EXPECT_EQ(Failing(2, {"apply", "-", "-", "--join", "-o", output, "--effect", "Neon"}), sentence);
}

}  // namespace
}  // namespace kfx::test
