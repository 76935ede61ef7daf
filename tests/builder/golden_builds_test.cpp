// SPDX-License-Identifier: MIT
// Builds against independently computed transcripts: every request, record and image byte.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "framework/memory_guards.h"
#include "framework/source_animation.h"
#include "tests/builder/build_run.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/golden_builds.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

struct NamedOptions {
    std::string name;
    BuildOptions options;
    uint32_t refusedRequest = 0;
    int refusedOccurrence = 0;
};

// A line is a name, a tab, and pairs of "--key value".
NamedOptions ParseOptions(const std::string& line) {
    NamedOptions parsed;
    parsed.options = BuiltInOptions();
    std::istringstream words(line);
    words >> parsed.name;
    BuildMode mode = BuildMode::Build;
    std::string key;
    while (words >> key && key != "-") {
        std::string value;
        words >> value;
        const int number = std::atoi(value.c_str());
        if (key == "--MainPalette")
            parsed.options.paletteChoice = number;
        else if (key == "--MainDither")
            parsed.options.dither = number == 1;
        else if (key == "--FastRemap")
            parsed.options.fastRemap = number == 1;
        else if (key == "--CustomPalette")
            parsed.options.customPalette = number == 1;
        else if (key == "--MainSupercompress")
            parsed.options.supercompress = number == 1;
        else if (key == "--Truecolour")
            parsed.options.trueColor = number == 1;
        else if (key == "--mode")
            mode = number == 2 ? BuildMode::Plain : BuildMode::Test;
        else if (key == "--fail") {
            parsed.refusedRequest = static_cast<uint32_t>(number);
            parsed.refusedOccurrence = std::atoi(value.c_str() + value.find(':') + 1);
        } else
            ADD_FAILURE() << "unknown option " << key;
    }
    parsed.options = OptionsForMode(parsed.options, mode);
    return parsed;
}

std::vector<NamedOptions> AllOptions() {
    std::vector<NamedOptions> all;
    for (const std::string& line : ReadGoldenLines("options.tsv")) all.push_back(ParseOptions(line));
    return all;
}

class GoldenBuilds : public ::testing::TestWithParam<const char*> {};

TEST_P(GoldenBuilds, Requests_records_and_images_are_those_of_the_transcript) {
    const std::string input = GetParam();
    const std::vector<uint8_t> block = ReadTestFile(GoldenPath("inputs/" + input + ".source.bin").c_str());
    const std::vector<NamedOptions> all = AllOptions();
    ASSERT_EQ(all.size(), 20u);
    for (const NamedOptions& named : all) {
        const std::vector<std::string> expected = ReadGoldenBuild(input, named.name);
        ASSERT_FALSE(expected.empty()) << input << ", " << named.name;
        BuildRun run;
        run.refusedRequest = named.refusedRequest;
        run.refusedOccurrence = named.refusedOccurrence;
        BuildWith(&run, block, named.options);
        ASSERT_EQ(run.lines.size(), expected.size()) << input << "." << named.name;
        for (size_t i = 0; i < expected.size(); ++i)
            ASSERT_EQ(run.lines[i], expected[i]) << input << ", " << named.name << ", line " << i + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(Inputs, GoldenBuilds, ::testing::ValuesIn(kGoldenInputs), [](const auto& parameter) {
    std::string name = parameter.param;
    for (char& letter : name)
        if (letter == '-') letter = '_';
    return name;
});

TEST(GoldenBuilds, Decoded_frames_are_those_that_the_transcripts_were_computed_from) {
    for (const char* input : kGoldenInputs) {
        const std::vector<uint8_t> expected =
            ReadTestFile(GoldenPath("inputs/" + std::string(input) + ".frames.bin").c_str());
        const MemoryOwner source(
            MakeMemory(ReadTestFile(GoldenPath("inputs/" + std::string(input) + ".source.bin").c_str())));
        FrameList frames = {};
        EXPECT_EQ(DecodeAllFrames(source.memory, &frames), DecodeResult::Whole);
        std::vector<uint8_t> decoded(4);
        decoded[0] = static_cast<uint8_t>(frames.count);
        for (int32_t i = 0; i < frames.count; ++i) {
            FrameEntry entry;
            ASSERT_TRUE(GetFrame(frames, i, &entry));
            const std::vector<uint8_t> bitmap = BytesOf(entry.image);
            for (int shift = 0; shift < 32; shift += 8)
                decoded.push_back(static_cast<uint8_t>(bitmap.size() >> shift));
            decoded.insert(decoded.end(), bitmap.begin(), bitmap.end());
        }
        EXPECT_EQ(decoded, expected) << input;
        FreeFrames(&frames);
    }
}

}  // namespace
}  // namespace kfx::test
