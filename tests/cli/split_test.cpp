// SPDX-License-Identifier: MIT
// Survey, parts and join as programs, through pipes and with names that are not plain.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

struct SplitProgram : ::testing::Test {
    TemporaryFolder folder;

    void SetUp() override { WriteTestGif(Path("in put.gif"), 6); }

    std::string Path(const std::string& name) const { return folder.path + name; }

    std::string Written(const std::vector<std::string>& arguments, const std::string& input) const {
        const ProgramResult result = RunKestrel(arguments, input);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return result.out;
    }
};

TEST_F(SplitProgram, Everything_goes_through_pipes) {
    const std::string input = Path("in put.gif");
    WriteText(Path("whole.survey"), Written({"survey", "-", "-o", "-", "--format=gif", "--effect=Swirl",
                                             "--dither", "--supercompress"},
                                            input));
    WriteText(Path("late.kpart"),
              Written({"apply", "-", "-o", "-", "--survey", Path("whole.survey"), "--frames=2-"}, input));
    WriteText(Path("early.kpart"),
              Written({"apply", input, "-o", "-", "--survey", "-", "--frames=0-1"}, Path("whole.survey")));
    const std::string joined = Written({"join", Path("late.kpart"), Path("early.kpart"), "-o", "-"}, input);
    EXPECT_TRUE(joined == Written({"apply", input, "-o", "-", "--format=gif", "--effect=Swirl", "--dither",
                                   "--supercompress"},
                                  input));
}

TEST_F(SplitProgram, Objects_say_what_was_made) {
    const std::string survey = Path("Größe.survey");
    nlohmann::json object =
        RunKestrelForJson({"survey", Path("in put.gif"), "-o", survey, "--format=webp", "--effect=Bump"});
    EXPECT_EQ(object["frames"], 6);
    EXPECT_EQ(object["format"], "webp");
    EXPECT_EQ(object["output"], survey);
    for (const char* frames : {"0-3", "4-5"}) {
        object = RunKestrelForJson({"apply", Path("in put.gif"), "-o", Path(frames) + std::string(".KPART"),
                                    "--survey", survey, "--frames", frames});
        EXPECT_EQ(object["of"], 6);
        EXPECT_EQ(object["first"], frames[0] - '0');
        EXPECT_EQ(object["last"], frames[2] - '0');
    }
    object = RunKestrelForJson({"join", Path("*.KPART"), "-o", Path("out.webp")});
    EXPECT_EQ(object["frames"], 6);
    EXPECT_EQ(object["inputs"].size(), 2u);
    EXPECT_EQ(ReadBack(Path("out.webp")).frames.size(), 6u);
}

TEST_F(SplitProgram, A_part_is_no_picture_and_its_way_is_said) {
    WriteText(Path("a.kpart"), "KFXPART1");
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"info", Path("a.kpart")},
          {"apply", Path("a.kpart"), "-o", Path("a.gif"), "--effect=Bump"}}) {
        const ProgramResult result = RunKestrel(command);
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.err, "kestrel: " + Path("a.kpart") +
                                  ": this is a part of an animation; kestrel join puts parts together.\n");
    }
}

}  // namespace
}  // namespace kfx::test
