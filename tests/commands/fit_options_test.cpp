// SPDX-License-Identifier: MIT
#include "commands/fit_options.h"

#include <gtest/gtest.h>

#include <utility>

#include "commands/command_line.h"
#include "commands/fit_settings.h"

namespace kfx::commands {
namespace {

TEST(FitOptions, Sizes_are_read) {
    const std::pair<const char*, uint64_t> sizes[] = {
        {"1", 1},           {"500000", 500000},    {"12B", 12},        {"500K", 500000},
        {"500k", 500000},   {"1.5M", 1500000},     {"2M", 2000000},    {"2MB", 2000000},
        {"2MiB", 2097152},  {"2mib", 2097152},     {"0.5KiB", 512},    {".5K", 500},
        {"1G", 1000000000}, {"1GiB", 1073741824u}, {"1.2345K", 1234u}, {"1000000G", 1000000000000000u},
    };
    for (const auto& [text, expected] : sizes) {
        uint64_t bytes = 0;
        EXPECT_TRUE(ParseBytes(text, &bytes)) << text;
        EXPECT_EQ(bytes, expected) << text;
    }
}

TEST(FitOptions, What_is_no_size_is_refused) {
    for (const char* text : {"",
                             "0",
                             "-1",
                             "+1",
                             " 1",
                             "1 ",
                             "1 M",
                             "M",
                             "K1",
                             "1e6",
                             "0x10",
                             "inf",
                             "nan",
                             "1T",
                             "1Ki",
                             "1MM",
                             "1.5.2M",
                             ".",
                             "0.1",
                             "1,5M",
                             "0.0001K",
                             "2000000G",
                             "99999999999999999999999999",
                             "1M\n",
                             "\xC2\xB2M"}) {
        uint64_t bytes = 7;
        EXPECT_FALSE(ParseBytes(text, &bytes)) << text;
        EXPECT_EQ(bytes, 7u) << text;
    }
    EXPECT_FALSE(ParseBytes(std::string(100000, '9'), nullptr));
    EXPECT_FALSE(ParseBytes(std::string("1\0K", 3), nullptr));
}

struct FitLine : ::testing::Test {
    OwnOptions own;
    CommandLine line;

    std::string Parse(std::vector<std::string> options) {
        std::vector<std::string> words = {"apply", "in.gif", "--effect", "Neon", "--max-size", "1M"};
        words.insert(words.end(), options.begin(), options.end());
        std::string text;
        line = {};
        ParseCommandLine(words, own, &line, &text);
        return text;
    }
};

TEST_F(FitLine, What_is_allowed_is_read) {
    EXPECT_EQ(Parse({"-o", "out.gif", "--allow", "scale,Frames"}), "");
    EXPECT_EQ(line.fit.mostBytes, 1000000u);
    EXPECT_TRUE(line.fit.scale && line.fit.frames);
    EXPECT_FALSE(line.fit.lossy);
}

TEST_F(FitLine, Contradictions_are_refused) {
    EXPECT_NE(Parse({"-o", "out.gif", "--allow", "scale,"}).find("--allow takes"), std::string::npos);
    EXPECT_NE(Parse({"-o", "out.gif", "--allow", "size"}).find("--allow takes"), std::string::npos);
    EXPECT_NE(Parse({"-o", "out.gif", "--allow", "scale", "--shrink", "50%"}).find("--shrink"),
              std::string::npos);
    EXPECT_NE(Parse({"-o", "out.gif", "--allow", "frames", "--every", "2"}).find("--every"),
              std::string::npos);
    EXPECT_NE(Parse({"-o", "out.gif", "--allow", "lossy", "--lossy", "2"}).find("--lossy"),
              std::string::npos);
    EXPECT_NE(Parse({"-o", "out.webp", "--allow", "lossy", "--quality", "2"}).find("--quality"),
              std::string::npos);
    EXPECT_NE(Parse({"-o", "out.apng", "--allow", "lossy"}).find("PNG"), std::string::npos);
    EXPECT_NE(Parse({"-o", "out.y4m"}).find("video"), std::string::npos);
    std::string text;
    CommandLine alone;
    ParseCommandLine({"apply", "in.gif", "-o", "out.gif", "--effect", "Neon", "--allow", "scale"}, own,
                     &alone, &text);
    EXPECT_NE(text.find("--max-size"), std::string::npos);
}

TEST_F(FitLine, What_is_given_beside_it_is_not_searched) {
    FitSubject subject;
    subject.isAnimated = subject.hasOwnPalette = true;
    subject.palettes = {"216-color safe"};
    Parse({"-o", "out.gif", "--dither", "--colors", "40", "--allow", "scale"});
    for (const FitGroup& group : MainGroups(line, subject, {.shrink = 80, .every = 1})) {
        for (const FitSettings& settings : group.steps) {
            EXPECT_TRUE(settings.dither);
            EXPECT_EQ(settings.colors, 40);
            EXPECT_EQ(settings.edits.shrink, 80);
        }
    }
    EXPECT_TRUE(PaletteGroups(line, subject).empty());
    EXPECT_EQ(RatesOf(line, subject), std::vector<int>{1});
    Parse({"-o", "out.gif"});
    EXPECT_EQ(PaletteGroups(line, subject).size(), 2u);
    EXPECT_EQ(ScalesOf(line), std::vector<int>{100});
    EXPECT_EQ(MainGroups(line, subject, {}).size(), 3u) << "plain, dithered, and supercompressed as well";
    subject.isTransparent = true;
    EXPECT_EQ(MainGroups(line, subject, {}).size(), 2u);
}

TEST_F(FitLine, Options_are_those_of_a_plain_command_with_the_same_settings) {
    FitSubject subject;
    subject.isAnimated = subject.hasOwnPalette = true;
    subject.palettes = {"216-color safe"};
    for (const std::string output : {"out.gif", "out.webp", "out.apng"}) {
        ASSERT_EQ(Parse({"-o", output, "--allow", "scale,frames"}), "");
        const CommandLine fitting = line;
        std::vector<FitGroup> groups = MainGroups(fitting, subject, {.shrink = 70, .every = 2});
        for (const FitGroup& group : PaletteGroups(fitting, subject)) groups.push_back(group);
        for (const FitGroup& group : groups) {
            for (const FitSettings& settings : group.steps) {
                std::vector<std::string> words = {"apply", "in.gif", "--effect", "Neon", "-o", output};
                std::string word;
                bool quoted = false;
                for (const char c : OptionsText(fitting, settings) + " ") {
                    if (c == '"') quoted = !quoted;
                    if (c != '"' && (c != ' ' || quoted)) word += c;
                    if (c == ' ' && !quoted && !word.empty()) words.push_back(std::exchange(word, ""));
                }
                std::string text;
                CommandLine plain;
                ASSERT_EQ(ParseCommandLine(words, own, &plain, &text), ParseOutcome::Run) << text;
                const CommandLine expected = LineWith(fitting, settings);
                EXPECT_EQ(plain.palette, expected.palette);
                EXPECT_EQ(plain.colors, expected.colors);
                EXPECT_EQ(plain.dither, expected.dither);
                EXPECT_EQ(plain.supercompress, expected.supercompress);
                EXPECT_EQ(plain.quality, expected.quality);
                EXPECT_EQ(plain.trueColor, expected.trueColor) << OptionsText(fitting, settings);
                EXPECT_EQ(plain.keepsColors, expected.keepsColors);
                EXPECT_EQ(plain.resultEdits.shrink, expected.resultEdits.shrink);
                EXPECT_EQ(plain.resultEdits.every, expected.resultEdits.every);
            }
        }
    }
}

}  // namespace
}  // namespace kfx::commands
