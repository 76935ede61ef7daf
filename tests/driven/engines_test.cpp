// SPDX-License-Identifier: MIT
// The two engines give the same files and say the same: every command here runs through both.
#include <gtest/gtest.h>

#include <ctime>
#include <map>

#include "commands/commands.h"
#include "commands/direct_engine.h"
#include "commands/report.h"
#include "driven/driven_engine.h"
#include "effects/effect_table.h"
#include "media/animation_writer.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/user_settings.h"
#include "tests/support/held_clock.h"

namespace kfx::test {
namespace {

using commands::kDirectEngine;
using Arguments = std::vector<std::string>;

// What a command says and makes.
struct Outcome {
    int exitCode = -1;
    std::string json;
    std::map<std::string, std::string> files;  // contents by name
};

struct Engines : ::testing::Test {
    UserSettings user;
    TemporaryFolder sources;
    TemporaryFolder results;
    driven::DrivenOptions options;
    commands::Engine driven = driven::MakeDrivenEngine(&options);

    void SetUp() override {
        WriteTestGif(sources.path + "plain.gif", 3);
        WriteTestGif(sources.path + "single.gif", 1);
        WriteTestGif(sources.path + "holes.gif", 3, true);
        WriteTwoColors(sources.path + "two.gif");
    }

    // Runs the command in this process, and takes its files away.
    Outcome Run(const Arguments& arguments, const commands::Engine& engine) const {
        commands::CommandLine line;
        std::string text;
        EXPECT_EQ(ParseCommandLine(arguments, {}, &line, &text), commands::ParseOutcome::Run) << text;
        commands::Report report = RunCommand(line, {engine});
        for (const char* time : {"seconds", "milliseconds"}) report.result.erase(time);
        Outcome outcome;
        outcome.exitCode = report.exitCode;
        outcome.json = FormatReport(report, true, false).output;
        for (const std::string& name : FilesIn(results.path)) {
            outcome.files[name] = ReadText(results.path + name);
            DeleteFileAt(results.path + name);
        }
        return outcome;
    }

    static void ExpectSame(const Outcome& direct, const Outcome& through, const Arguments& arguments) {
        EXPECT_EQ(direct.json, through.json) << ::testing::PrintToString(arguments);
        ASSERT_EQ(direct.files.size(), through.files.size()) << ::testing::PrintToString(arguments);
        for (const auto& [name, content] : direct.files) {
            ASSERT_TRUE(through.files.count(name)) << name;
            // Whole files in a message would bury it.
            EXPECT_TRUE(content == through.files.at(name))
                << name << " differs: " << ::testing::PrintToString(arguments);
        }
    }

    void ExpectSameFrom(const Arguments& arguments, int exitCode = commands::kExitDone) const {
        const Outcome direct = Run(arguments, kDirectEngine);
        EXPECT_EQ(direct.exitCode, exitCode) << direct.json;
        EXPECT_EQ(direct.files.empty(), exitCode != commands::kExitDone || arguments[0] == "effects");
        ExpectSame(direct, Run(arguments, driven), arguments);
    }

    // For commands that depend on the clock's second, once: which one the plug-in has taken is one of those
    // that passed meanwhile, and in that one the direct engine gives the same. `takesSeed`: the command has a
    // seed of its own otherwise.
    void ExpectSameInSomeSecond(const Arguments& arguments, bool takesSeed = false) const {
        const std::time_t before = std::time(nullptr);
        const Outcome through = Run(arguments, driven);
        const std::time_t after = std::time(nullptr);
        Outcome direct;
        for (std::time_t second = before; second <= after && direct.files != through.files; ++second) {
            const HeldClock clock(static_cast<uint32_t>(second));
            Arguments own = arguments;
            if (takesSeed) own.insert(own.end(), {"--seed", std::to_string(second)});
            direct = Run(own, kDirectEngine);
        }
        EXPECT_EQ(direct.exitCode, commands::kExitDone) << direct.json;
        ExpectSame(direct, through, arguments);
    }

    // The same for a journey, whose frames are built one by one and each in a second of its own; the result
    // is a single file without loss.
    void ExpectEachFrameInSomeSecond(const Arguments& arguments) const {
        const std::time_t before = std::time(nullptr);
        const Outcome through = Run(arguments, driven);
        const std::time_t after = std::time(nullptr);
        EXPECT_EQ(through.exitCode, commands::kExitDone) << through.json;
        const Animation wanted = FramesOf(through);
        std::vector<bool> found(wanted.frames.size());
        for (std::time_t second = before; second <= after; ++second) {
            const HeldClock clock(static_cast<uint32_t>(second));
            const Animation direct = FramesOf(Run(arguments, kDirectEngine));
            ASSERT_EQ(direct.frames.size(), wanted.frames.size());
            for (size_t i = 0; i < found.size(); ++i)
                if (direct.frames[i].pixels == wanted.frames[i].pixels) found[i] = true;
        }
        for (size_t i = 0; i < found.size(); ++i) EXPECT_TRUE(found[i]) << "frame " << i;
    }

    Animation FramesOf(const Outcome& outcome) const {
        if (outcome.files.size() != 1) {
            ADD_FAILURE() << outcome.files.size() << " files";
            return {};
        }
        const auto& [name, content] = *outcome.files.begin();
        WriteText(sources.path + name, content);
        return ReadBack(sources.path + name);
    }

    Arguments Apply(const std::string& source, const std::string& output, const std::string& effect,
                    const Arguments& more = {}) const {
        Arguments arguments = {"apply", sources.path + source, "-o", results.path + output, "--effect",
                               effect};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
};

// Every parameter at one of its ends.
Arguments Extremes(int effect, bool most) {
    std::vector<commands::Parameter> parameters;
    commands::Failure failure;
    EXPECT_TRUE(kDirectEngine.listParameters(nullptr, effect, &parameters, &failure));
    Arguments arguments;
    for (const commands::Parameter& parameter : parameters) {
        const int value = most ? parameter.maximum : parameter.minimum;
        arguments.insert(arguments.end(), {"--set", parameter.name + "=" + ValueText(parameter, value)});
    }
    return arguments;
}

class EachEffect : public Engines, public ::testing::WithParamInterface<int> {};

TEST_P(EachEffect, Gives_the_same_files) {
    const std::string name = EffectAt(static_cast<size_t>(GetParam()))->name;
    const char* const output = GetParam() % 2 ? "out.webp" : "out.png";
    if (name == "Water Drops") {
        // Only the direct engine knows the seed, and keeps it.
        Arguments most = Extremes(GetParam(), true);
        most.emplace_back("--no-recipe");
        ExpectSameInSomeSecond(Apply("single.gif", "out.gif", name, {"--no-recipe"}));
        ExpectSameInSomeSecond(Apply("single.gif", output, name, most));
    } else {
        ExpectSameFrom(Apply("plain.gif", "out.gif", name, Extremes(GetParam(), false)));
        ExpectSameFrom(Apply("plain.gif", output, name, Extremes(GetParam(), true)));
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, EachEffect, ::testing::Range(0, static_cast<int>(EffectCount())));

class EachPalette : public Engines, public ::testing::WithParamInterface<const char*> {};

TEST_P(EachPalette, Gives_the_same_file) {
    ExpectSameFrom(
        Apply("plain.gif", "out.gif", "Swirl", {"--palette", GetParam(), "--dither", "--supercompress"}));
}

INSTANTIATE_TEST_SUITE_P(Engines, EachPalette,
                         ::testing::Values("Black and white", "Sixteen-color Windows", "32-color orthogonal",
                                           "64-color orthogonal", "128-color orthogonal", "216-color safe",
                                           "256-color orthogonal", "256-color with gray", "256 gray levels",
                                           "custom", "original", "Match original"));

TEST_F(Engines, Every_option_means_the_same) {
    for (const Arguments& more : {Arguments{"--local-background", "12FE34"},
                                  {"--local-background", "none"},
                                  {"--no-comment"},
                                  {"--lossy", "40"},
                                  {"--comment", "--supercompress"},
                                  {"--dither"},
                                  {"--palette", "216-color safe"},
                                  {"--palette", "original"},
                                  {"--fast-remap", "--palette", "original"},
                                  {"--palette", "black", "--dither", "--dither-brightness", "90"},
                                  {"--palette", "black", "--dither", "--dither-contrast", "3"}}) {
        ExpectSameFrom(Apply("plain.gif", "out.gif", "Swirl", more));
    }
    ExpectSameFrom(Apply("plain.gif", "out.webp", "Oil Painting", {"--local-background", "12FE34"}));
    ExpectSameFrom(Apply("plain.gif", "out.webp", "Emboss", {"--palette", "216-color safe", "--dither"}));
}

TEST_F(Engines, Transparent_and_single_sources_give_the_same_files) {
    ExpectSameFrom(Apply("holes.gif", "out.gif", "Emboss", {"--supercompress"}));
    ExpectSameFrom(Apply("holes.gif", "out.webp", "Emboss"));
    ExpectSameFrom(Apply("two.gif", "out.gif", "Bump", {"--palette", "original", "--comment"}));
    ExpectSameFrom(Apply("plain.gif", "out.webp", "Bump", {"--quality", "60", "--effort", "2"}));
    ExpectSameFrom(Apply("single.gif", "out.png", "Emboss", {"--supercompress", "--palette", "custom"}));
}

TEST_F(Engines, Transparency_follows_the_effects_in_the_same_way) {
    // One effect for each way, and backgrounds that are set for one effect only.
    ExpectSameFrom(Apply("holes.gif", "out.webp", "Swirl", {"--set", "Angle=90"}));
    ExpectSameFrom(Apply("holes.gif", "out.gif", "Motion Blur", {"--matte", "102030", "--dither"}));
    ExpectSameFrom(Apply("holes.gif", "out.gif", "Glass Block", {"--palette", "original", "--comment"}));
    ExpectSameFrom(Apply("holes.gif", "out.gif", "HSB", {"--set", "Invert=on", "--palette", "216-color"}));
    ExpectSameFrom(Apply("holes.gif", "out.png", "Neon", {"--effect", "Implode", "--effect", "Raster"}));
    ExpectSameFrom(Apply("holes.gif", "out.gif", "Motion Blur",
                         {"--local-background", "12FE34", "--effect", "Raster", "--supercompress"}));
    ExpectSameFrom(Apply("holes.gif", "out.webp", "Radial Blur", {"--local-background", "none"}));
    ExpectSameInSomeSecond(Apply("holes.gif", "out.webp", "Water Drops", {"--no-recipe"}));
}

TEST_F(Engines, Extended_edges_are_the_same) {
    ExpectSameFrom(Apply("plain.gif", "out.gif", "Oil Painting", {"--edges", "extend"}));
    ExpectSameFrom(Apply("holes.gif", "out.webp", "Motion Blur", {"--edges", "extend", "--effect", "Bump"}));
}

TEST_F(Engines, A_chain_of_effects_gives_the_same_files) {
    ExpectSameFrom(Apply("plain.gif", "out.gif", "Swirl",
                         {"--set", "Angle=90", "--effect", "Emboss", "--effect", "Swirl", "--dither",
                          "--supercompress", "--palette", "216-color safe"}));
    ExpectSameFrom(Apply("plain.gif", "out.gif", "HSB",
                         {"--set", "Hue=90", "--effect", "Explode", "--local-background", "12FE34",
                          "--comment", "--palette", "original"}));
    ExpectSameFrom(Apply("plain.gif", "out.webp", "Raster", {"--effect", "Motion Blur", "--effect", "Neon"}));
}

TEST_F(Engines, Journeys_give_the_same_files) {
    ExpectSameFrom(
        Apply("plain.gif", "out.gif", "Swirl",
              {"--set", "Angle=-90..360:ease", "--dither", "--supercompress", "--palette", "custom"}));
    ExpectSameFrom(Apply("plain.gif", "out.webp", "HSB",
                         {"--set", "Hue=0..360:loop", "--set", "Invert=off,on", "--seamless"}));
    ExpectSameFrom(Apply("holes.gif", "out.gif", "Motion Blur",
                         {"--set", "Radius=5..50", "--edges", "extend", "--effect", "Emboss", "--set",
                          "Depth=15,50,20", "--comment"}));
    ExpectSameFrom(
        Apply("single.gif", "out.gif", "Ripple",
              {"--frames", "4", "--delay", "40", "--set", "Phase=0..360:loop", "--palette", "216"}));
    ExpectEachFrameInSomeSecond(Apply("single.gif", "out.webp", "Water Drops",
                                      {"--no-recipe", "--frames", "3", "--set", "Radius=3..12"}));
    ExpectSameFrom(Apply("single.gif", "out.gif", "Swirl", {"--set", "Angle=0..90"}),
                   commands::kExitBadCommand);
    ExpectSameFrom(Apply("plain.gif", "out.gif", "Swirl", {"--set", "Angle=0..1441"}),
                   commands::kExitBadCommand);
}

TEST_F(Engines, Edits_give_the_same_files_with_and_without_an_effect) {
    ExpectSameFrom(
        Apply("plain.gif", "out.gif", "Swirl", {"--frames", "1-", "--resize", "50%", "--reverse"}));
    for (const Arguments& palette : {Arguments{}, {"--palette", "216-color safe", "--dither"}}) {
        Arguments arguments = {
            "apply", sources.path + "holes.gif", "-o", results.path + "out.gif", "--resize", "30x", "--crop",
            "20x20"};
        arguments.insert(arguments.end(), palette.begin(), palette.end());
        ExpectSameFrom(arguments);
    }
}

TEST_F(Engines, They_list_the_same_effects_parameters_and_palettes) { ExpectSameFrom({"effects"}); }

TEST_F(Engines, They_draw_the_same_gallery) {
    ExpectSameInSomeSecond({"gallery", sources.path + "single.gif", "-o", results.path + "out.png"}, true);
    ExpectSameInSomeSecond({"gallery", sources.path + "holes.gif", "-o", results.path + "out.png"}, true);
}

TEST_F(Engines, They_refuse_the_same_commands_with_the_same_words) {
    // A true colour source, which has no palette of its own.
    ASSERT_EQ(Run({"apply", sources.path + "plain.gif", "-o", sources.path + "true.webp", "--effect", "Bump"},
                  kDirectEngine)
                  .exitCode,
              commands::kExitDone);
    for (const Arguments& arguments :
         {Apply("plain.gif", "out.gif", "Embosss"),
          Apply("plain.gif", "out.gif", "Swirl", {"--set", "Depth=3"}),
          Apply("plain.gif", "out.gif", "Swirl", {"--effect", "Emboss", "--set", "Angle=3"}),
          Apply("plain.gif", "out.gif", "Swirl", {"--effect", "Embosss"}),
          Apply("plain.gif", "out.gif", "Neon", {"--set", "Depth=3"}),
          Apply("plain.gif", "out.gif", "Swirl", {"--set", "Angle=1441"}),
          Apply("plain.gif", "out.gif", "HSB", {"--set", "Channels=Up"}),
          Apply("plain.gif", "out.gif", "Normalize", {"--set", "Distributed=maybe"}),
          Apply("plain.gif", "out.gif", "Swirl", {"--palette", "215-color safe"}),
          Apply("true.webp", "out.gif", "Swirl", {"--palette", "match original"}),
          Apply("true.webp", "out.gif", "Swirl", {"--palette", "original"})}) {
        ExpectSameFrom(arguments, commands::kExitBadCommand);
    }
}

}  // namespace
}  // namespace kfx::test
