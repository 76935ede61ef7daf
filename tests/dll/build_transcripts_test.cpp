// SPDX-License-Identifier: MIT
// Builds through the real window against independently computed transcripts: each option set by its control
// or key, an effect that leaves the frames as they are, every request, record, picture and message in order.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/golden_builds.h"

namespace kfx::test {
namespace {

constexpr int kCustomPalette = 14;
constexpr int kTestButton = 24;
constexpr int kEffectList = 50;
constexpr int kSelectButton = 51;
constexpr int kPlainBuild = 40;

struct Variant {
    std::string name;
    std::string configuration;
    bool customPalette = false;
    int command = kTestButton;
    int refusedRequest = 0;
    int refusedOccurrence = 0;
};

// A line is a name, a tab, and pairs of "--key value".
Variant ParseVariant(const std::string& line) {
    // HSB and Channels with everything off leaves the frames as they are.
    Variant variant;
    variant.configuration =
        "Truecolour = 0\nMainPalette = 6\nStyle010HSBEnable = 0\nStyle010ChannelsEnable = "
        "0\nStyle010InvertColors = 0\n";
    std::istringstream words(line);
    words >> variant.name;
    for (std::string key, value; words >> key && key != "-";) {
        words >> value;
        const int number = std::atoi(value.c_str());
        if (key == "--CustomPalette") {
            variant.customPalette = number == 1;
        } else if (key == "--mode") {
            variant.command = kPlainBuild;
        } else if (key == "--fail") {
            variant.refusedRequest = number;
            variant.refusedOccurrence = std::atoi(value.c_str() + value.find(':') + 1);
        } else {
            variant.configuration += key.substr(2) + " = " + value + "\n";
        }
    }
    return variant;
}

// The transcripts leave out the effect's own progress, which stands between the second "Building" and the
// next stage.
std::vector<std::string> WithoutEffectProgress(const std::vector<std::string>& lines) {
    std::vector<std::string> kept;
    int buildings = 0;
    for (const std::string& line : lines) {
        buildings += line.find("text=\"Building\"") != std::string::npos;
        const bool progress = line.find("REQ code=13 ") == 0;
        const bool clears = line.find("value=0 pointer=0 ") != std::string::npos;
        if (buildings == 2 && progress && clears) buildings = 3;
        if (buildings != 2 || !progress) kept.push_back(line);
    }
    return kept;
}

std::vector<std::string> ExpectedLines(const std::string& input, const Variant& variant) {
    std::vector<std::string> lines = ReadGoldenBuild(input, variant.name);
    EXPECT_FALSE(lines.empty()) << input << ", " << variant.name;
    if (!lines.empty()) lines.pop_back();  // what the driver returned: the window keeps that to itself
    if (variant.command == kTestButton)
        for (std::string& line : lines)
            if (line.find("REQ code=1 ") == 0) line.replace(0, 10, "REQ code=5");
    return lines;
}

std::vector<std::string> Build(FakeHost& host, PluginSession& session, const std::string& input,
                               const Variant& variant) {
    host.Serve(ReadTestFile(GoldenPath("inputs/" + input + ".source.bin").c_str()));
    session.Click(kSelectButton);
    host.ClearTranscript();
    if (variant.refusedRequest) {
        const int request = variant.refusedRequest == 1 ? 5 : variant.refusedRequest;
        host.Refuse(static_cast<HostRequest>(request), variant.refusedOccurrence);
    }
    session.Command(variant.command);
    return WithoutEffectProgress(host.Transcript());
}

class BuildTranscripts : public testing::TestWithParam<std::string> {};

TEST_P(BuildTranscripts, Requests_records_pictures_and_messages_come_as_computed) {
    const Variant variant = ParseVariant(GetParam());
    FakeHost host;
    SessionOptions options;
    options.configuration = variant.configuration;
    PluginSession session(host, options);
    const std::vector<std::string> names = session.ItemsOf(kEffectList);
    const auto effect = std::find(names.begin(), names.end(), "HSB and Channels");
    ASSERT_NE(effect, names.end());
    session.Choose(kEffectList, static_cast<int>(effect - names.begin()));
    if (variant.customPalette) session.Click(kCustomPalette);
    for (const char* input : kGoldenInputs) {
        SCOPED_TRACE(input);
        const std::vector<std::string> expected = ExpectedLines(input, variant);
        const std::vector<std::string> actual = Build(host, session, input, variant);
        EXPECT_EQ(actual.size(), expected.size());
        for (size_t i = 0; i < std::min(actual.size(), expected.size()); ++i)
            ASSERT_EQ(actual[i], expected[i]) << "line " << i + 1;
        EXPECT_EQ(CountLedger().liveBlocks, 1u) << "the source and nothing else";
        EXPECT_EQ(CountLedger().lockedBlocks, 0u);
    }
    session.Close();
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
    EXPECT_EQ(CountLedger().strangeFrees, 0u);
}

INSTANTIATE_TEST_SUITE_P(Options, BuildTranscripts, testing::ValuesIn(ReadGoldenLines("options.tsv")),
                         [](const auto& parameter) {
                             std::string name = ParseVariant(parameter.param).name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace kfx::test
