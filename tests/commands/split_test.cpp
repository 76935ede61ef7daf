// SPDX-License-Identifier: MIT
// Animations in parts: survey, parts and join give the bytes that apply gives in one piece.
#include "commands/report.h"
#include "effects/effect_table.h"
#include "media/animation_writer.h"
#include "tests/cli/test_animations.h"
#include "tests/commands/split_runs.h"

namespace kfx::commands {
namespace {

// How the frames are cut: the first frame of each part.
const std::vector<int> kInTwo = {0, 5};
const std::vector<int> kInSeven = {0, 1, 2, 4, 5, 7, 8};
const std::vector<int> kSingly = {0, 1, 2, 3, 4, 5, 6, 7, 8};

struct SplitBytes : Split {
    // The files of an output, which for PNG are several.
    std::vector<std::string> FilesOf(const std::string& start) const {
        std::vector<std::string> files;
        for (const std::string& name : test::FilesIn(folder.path)) {
            if (name.rfind(start, 0) == 0) files.push_back(name.substr(start.size()));
        }
        return files;
    }

    void ExpectSameBytes(const std::string& source, const std::string& format, const Arguments& options,
                         const std::vector<std::vector<int>>& cuts, int frames = kFrames) const {
        const std::string shown = source + " " + format + " " + ::testing::PrintToString(options);
        Arguments apply = {"apply", Path(source), "-o", Path("whole." + format), "--force"};
        apply.insert(apply.end(), options.begin(), options.end());
        Succeed(apply);
        Survey(source, format, options);
        const std::vector<std::string> files = FilesOf("whole");
        for (const std::vector<int>& starts : cuts) {
            MakeAndJoin(source, starts, frames, Path("joined." + format));
            for (const std::string& file : files) {
                if (file == ".survey") continue;
                EXPECT_TRUE(test::ReadText(Path("whole" + file)) == test::ReadText(Path("joined" + file)))
                    << shown << ": other bytes in joined" << file << " of " << starts.size() << " parts";
            }
        }
        for (const std::string& name : test::FilesIn(folder.path)) {
            if (name.rfind("whole", 0) == 0 || name.rfind("joined", 0) == 0) test::DeleteFileAt(Path(name));
        }
    }
};

// Effects with settings whose results depend on other frames, on chance or on a colour beyond the edges.
struct EffectRow {
    const char* effect;
    Arguments settings;
};

Arguments OptionsOf(size_t effect) {
    static const EffectRow kRows[] = {
        {.effect = "Normalize", .settings = {"--set=Distributed=on"}},
        {.effect = "Water Drops", .settings = {"--seed=5"}},
        {.effect = "Motion Blur", .settings = {"--set=Angle=0..359:loop"}},
        {.effect = "Swirl", .settings = {"--set=Angle=0..720:ease"}},
    };
    const std::string name = EffectAt(effect)->name;
    Arguments options = {"--effect=" + name};
    for (const EffectRow& row : kRows) {
        if (name == row.effect) options.insert(options.end(), row.settings.begin(), row.settings.end());
    }
    return options;
}

TEST_F(SplitBytes, Every_effect_gives_the_same_gif_of_a_computed_palette) {
    for (size_t effect = 0; effect < EffectCount(); ++effect) {
        Arguments options = OptionsOf(effect);
        options.insert(options.end(), {"--colors=24", "--dither", "--supercompress"});
        ExpectSameBytes("plain.gif", "gif", options, {kInSeven});
    }
}

TEST_F(SplitBytes, Every_effect_gives_the_same_file_of_transparent_frames) {
    for (size_t effect = 0; effect < EffectCount(); ++effect) {
        ExpectSameBytes("late.apng", effect % 2 == 0 ? "gif" : "apng", OptionsOf(effect), {kInTwo});
    }
}

struct OutputRow {
    const char* source;
    const char* format;
    Arguments options;
    int frames = kFrames;
};

TEST_F(SplitBytes, Every_kind_of_output_is_the_same_however_it_is_cut) {
    const OutputRow kRows[] = {
        {"plain.gif", "gif", {"--effect=Emboss"}},
        {"plain.gif", "gif", {"--effect=Bump", "--palette=216-color safe", "--dither", "--supercompress"}},
        {"plain.gif", "gif", {"--effect=Bump", "--palette=original", "--comment"}},
        {"plain.gif", "gif", {"--effect=Bump", "--palette=black and white", "--dither"}},
        {"plain.gif", "gif", {"--effect=Neon", "--lossy=60", "--colors=16", "--supercompress"}},
        {"plain.gif", "gif", {"--effect=Motion Blur", "--edges=extend", "--local-background=102030"}},
        {"plain.gif", "gif", {"--effect=Swirl", "--every=2", "--shrink=60%", "--supercompress"}, 5},
        {"plain.gif", "gif", {"--reverse", "--speed=1.7", "--frames=1-7"}, 7},
        {"plain.gif", "gif", {"--crop=20x20", "--resize=70%", "--dither", "--supercompress"}},
        {"plain.gif", "gif", {"--delay=70", "--no-recipe"}},
        {"plain.gif", "apng", {"--effect=Ripple", "--colors=9", "--supercompress"}},
        {"plain.gif", "png", {"--effect=Ripple"}},
        {"plain.gif", "y4m", {"--effect=Ripple"}},
        {"holes.gif", "gif", {"--effect=Gaussian Blur", "--dither"}},
        {"holes.gif", "gif", {"--loop=once"}},
        {"holes.gif", "webp", {"--effect=Neon", "--palette=64-color", "--dither"}},
        {"soft.apng", "gif", {"--effect=Water Drops", "--seed=9", "--colors=12", "--matte=FF8000"}},
        {"soft.apng", "gif", {"--speed=1.1"}},
        {"soft.apng", "webp", {"--effect=Zoom Blur", "--quality=70"}},
        {"late.apng", "gif", {"--effect=Explode", "--effect=Solarize", "--effect=Oil Painting"}},
        {"late.apng",
         "apng",
         {"--effect=Swirl", "--set=Angle=0..90", "--effect=Normalize", "--set=Distributed=on",
          "--effect=Emboss", "--set=Radius=4..20"}},
        {"late.apng", "png", {"--effect=Swirl", "--every=3", "--palette=custom"}, 3},
    };
    for (const OutputRow& row : kRows)
        ExpectSameBytes(row.source, row.format, row.options, {kInTwo, kInSeven, kSingly}, row.frames);
}

TEST_F(SplitBytes, A_still_becomes_an_animation_in_parts) {
    std::string error;
    Animation still = test::ReadBack(Path("soft.apng"));
    still.frames.resize(1);
    ASSERT_TRUE(WriteApng(Path("still.apng"), still, &error)) << error;
    ExpectSameBytes("still.apng", "gif",
                    {"--frames=9", "--delay=30", "--effect=Swirl", "--set=Angle=0..720:ease"},
                    {kInTwo, kSingly});
    ExpectSameBytes("still.apng", "gif", {"--effect=Swirl", "--dither", "--supercompress"}, {{0}}, 1);
}

TEST_F(SplitBytes, What_is_joined_is_verified) {
    Survey("plain.gif", "gif", {"--effect=Emboss", "--dither"});
    MakeAndJoin("plain.gif", kInTwo, kFrames, Path("joined.gif"));
    const Report report = Run({"verify", Path("joined.gif"), "--source", Path("plain.gif")});
    EXPECT_EQ(report.exitCode, kExitDone) << report.error;
}

}  // namespace
}  // namespace kfx::commands
