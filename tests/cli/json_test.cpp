// SPDX-License-Identifier: MIT
// What --json tells of a result.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "commands/fingerprint.h"
#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using Words = std::vector<std::string>;

struct JsonLine : ::testing::Test {
    TemporaryFolder folder;
    const std::string input = folder.path + "in.gif";

    nlohmann::json Apply(const std::string& output, const Words& more) const {
        Words words = {"apply", input, "-o", folder.path + output, "--force"};
        words.insert(words.end(), more.begin(), more.end());
        return RunKestrelForJson(words);
    }
};

TEST_F(JsonLine, Times_and_names_are_told) {
    WriteTestGif(input, 3);
    const auto line = Apply("out.webp", {"--effect", "Emboss"});
    EXPECT_EQ(line["input"], input);
    EXPECT_EQ(line["output"], folder.path + "out.webp");
    for (const char* stage : {"decode", "effect", "build", "encode"})
        EXPECT_GE(line["milliseconds"].value(stage, -1.0), 0.0) << stage;
    EXPECT_GT(line["milliseconds"]["effect"], 0.0);
    EXPECT_EQ(Apply("out.webp", {})["input"], nullptr) << "the options were refused";
    WriteText(folder.path + "bad.gif", "x");
    const auto failed = RunKestrelForJson(
        {"apply", folder.path + "bad.gif", "-o", folder.path + "no.gif", "--effect", "Bump"});
    EXPECT_EQ(failed["input"], folder.path + "bad.gif");
    EXPECT_EQ(failed["output"], folder.path + "no.gif");
}

TEST_F(JsonLine, Several_inputs_are_a_list) {
    WriteTestGif(input, 1);
    const auto line = RunKestrelForJson({"apply", input, input, "--join", "-o", folder.path + "out.gif"});
    EXPECT_EQ(line["inputs"], (Words{input, input}));
    EXPECT_FALSE(line.contains("input"));
}

TEST_F(JsonLine, Every_command_names_its_files_and_sizes_alike) {
    WriteTestGif(input, 2);
    const std::string other = folder.path + "other.webp";
    Apply("other.webp", {"--effect", "Neon"});
    const Words commands[] = {
        {"compare", input, other, "-o", folder.path + "differences.png"},
        {"effects"},
        {"gallery", input, "-o", folder.path + "gallery.png"},
        {"gallery", input, "-o", folder.path + "wall.webp"},
        {"info", other},
        {"palettes", input, "-o", folder.path + "palettes.png"},
        {"recipe", other},
        {"sample", "-o", folder.path + "sample.gif"},
        {"self-test"},
        {"sheet", input, other, "-o", folder.path + "sheet.png"},
        {"verify", other, "--source", input},
    };
    for (const Words& command : commands) {
        const auto line = RunKestrelForJson(command);
        const bool hasResult = command.size() > 2 && command[command.size() - 2] == "-o";
        for (const char* name : {"output", "width", "height", "bytes"})
            EXPECT_TRUE(!hasResult || line.contains(name)) << name << " of " << command[0] << ": " << line;
        EXPECT_TRUE(!hasResult || line["bytes"] == ReadText(command.back()).size()) << line;
        const auto count = std::count(command.begin(), command.end(), input) +
                           std::count(command.begin(), command.end(), other);
        if (command[0] == "verify") {
            EXPECT_EQ(line["input"], other);
        } else if (count == 1) {
            EXPECT_EQ(line["input"], command[1]) << line;
        } else if (count == 2) {
            EXPECT_EQ(line["inputs"], (Words{input, other})) << line;
        }
    }
}

struct FingerprintCase {
    const char* output;
    Words options;
};

TEST_F(JsonLine, The_fingerprint_is_that_of_the_file_read_back) {
    const FingerprintCase cases[] = {
        {"out.gif", {"--effect", "Emboss"}},
        {"out.gif", {"--effect", "Swirl", "--palette", "256 gray levels"}},
        {"out.gif", {"--effect", "Swirl", "--supercompress"}},
        {"out.gif", {"--reverse"}},
        {"out.gif", {"--effect", "Emboss", "--lossy", "80"}},
        {"out.webp", {"--effect", "Emboss", "--speed", "1.7"}},
        {"out.webp", {"--effect", "Emboss", "--quality", "50"}},
        {"out.apng", {"--effect", "Emboss", "--loop", "4"}},
        {"out.png", {"--effect", "Emboss", "--frames", "2"}},
        {"out.y4m", {"--effect", "Emboss"}},
    };
    for (const bool holes : {false, true}) {
        WriteTestGif(input, 4, holes);
        for (const FingerprintCase& one : cases) {
            const auto line = Apply(one.output, one.options);
            EXPECT_EQ(line["fingerprint"], commands::FingerprintOf(ReadBack(folder.path + one.output)))
                << one.output << (holes ? " with holes " : " ") << one.options.back();
        }
    }
}

TEST_F(JsonLine, Pictures_of_a_series_have_the_fingerprint_of_the_series) {
    WriteTestGif(input, 3);
    const auto series = Apply("s.png", {"--effect", "Emboss"});
    const auto read = RunKestrelForJson(
        {"apply", folder.path + "s-%03d.png", "-o", folder.path + "s.webp", "--format", "webp"});
    EXPECT_EQ(series["fingerprint"], read["fingerprint"]);
    EXPECT_EQ(read["input"], folder.path + "s-%03d.png");
}

TEST_F(JsonLine, Frames_without_headers_have_that_of_what_they_show) {
    WriteTestGif(input, 3);
    // Times of one length, which a stream keeps.
    const auto rgba = Apply("s.rgba", {"--format", "rgba", "--fps", "10", "--loop", "once"});
    EXPECT_EQ(rgba["exitCode"], 2) << "streams know no loop";
    const auto webp = Apply("s.webp", {"--fps", "10", "--loop", "once"});
    EXPECT_EQ(Apply("s.rgba", {"--format", "rgba", "--fps", "10"})["fingerprint"], webp["fingerprint"]);
    EXPECT_EQ(Apply("s.rgb", {"--format", "rgb", "--fps", "10"})["fingerprint"], webp["fingerprint"]);
}

}  // namespace
}  // namespace kfx::test
