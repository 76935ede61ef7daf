// SPDX-License-Identifier: MIT
// Every effect through the real DLL: chosen in its window, built as a test in true colour, and each frame
// compared with an independently computed digest.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <tuple>

#include "tests/support/animation_blocks.h"
#include "tests/support/sha256.h"
#include "tests/windows/support/memory_ledger.h"
#include "tests/windows/support/plugin_session.h"

namespace kfx::test {
namespace {

constexpr int kTestButton = 24;
constexpr int kEffectList = 50;
constexpr int kSelectButton = 51;
const std::string kFolder = "tests/data/effects/";

// What one window is opened with; its inputs are built one after another.
struct Setting {
    std::string keys;        // "Key=value Key=value", or "-"
    std::string background;  // 0xBBGGRR
    std::string seed;        // of the clock, or "-"
    bool operator<(const Setting& other) const {
        return std::tie(keys, background, seed) < std::tie(other.keys, other.background, other.seed);
    }
};

using Digests = std::map<std::string, std::vector<std::string>>;  // input: a digest for each frame
using Effects = std::map<std::string, std::map<Setting, Digests>>;

const Effects& ExpectedDigests() {
    static const Effects effects = [] {
        Effects read;
        const std::vector<uint8_t> bytes = ReadTestFile((kFolder + "expected.tsv").c_str());
        std::istringstream text(std::string(bytes.begin(), bytes.end()));
        std::string line;
        std::getline(text, line);  // the column names
        while (std::getline(text, line)) {
            std::vector<std::string> columns;
            std::istringstream cells(line);
            for (std::string cell; std::getline(cells, cell, '\t');) columns.push_back(cell);
            if (columns.size() == 7)
                read[columns[0]][{columns[1], columns[2], columns[3]}][columns[4]].push_back(columns[6]);
        }
        return read;
    }();
    return effects;
}

SessionOptions OptionsFor(const Setting& setting) {
    SessionOptions options;
    options.configuration = "Truecolour = 1\nLocalBackgroundUse = 1\nLocalBackgroundColor = " +
                            std::to_string(std::stoul(setting.background, nullptr, 16)) + "\n";
    std::istringstream keys(setting.keys == "-" ? "" : setting.keys);
    for (std::string key; keys >> key;) options.configuration += key + "\n";
    if (setting.seed != "-") options.clock = std::stoll(setting.seed);
    return options;
}

void BuildInput(FakeHost& host, PluginSession& session, const std::string& input,
                const std::vector<std::string>& digests) {
    host.Serve(ReadTestFile((kFolder + "inputs/" + input + ".bin").c_str()));
    host.ClearTranscript();
    session.Click(kSelectButton);
    session.Click(kTestButton);
    const std::vector<std::vector<uint8_t>> frames = host.Frames();
    ASSERT_EQ(frames.size(), digests.size()) << input;
    for (size_t i = 0; i < frames.size(); ++i)
        EXPECT_EQ(Sha256(frames[i].data(), frames[i].size()), digests[i]) << input << ", frame " << i;
    // One progress report for each finished frame, however the effect goes over the frames, comes before the
    // rest.
    EXPECT_GE(host.Requests(HostRequest::Progress).size(), frames.size());
}

class EffectVectors : public testing::TestWithParam<std::string> {};

TEST_P(EffectVectors, every_frame_comes_back_as_computed) {
    for (const auto& [setting, inputs] : ExpectedDigests().at(GetParam())) {
        SCOPED_TRACE(setting.keys + " " + setting.background);
        FakeHost host;
        PluginSession session(host, OptionsFor(setting));
        const std::vector<std::string> names = session.ItemsOf(kEffectList);
        const auto name = std::find(names.begin(), names.end(), GetParam());
        ASSERT_NE(name, names.end()) << "the effect list has no such entry";
        session.Choose(kEffectList, static_cast<int>(name - names.begin()));
        for (const auto& [input, digests] : inputs) BuildInput(host, session, input, digests);
        EXPECT_TRUE(session.Messages().empty());
        session.Close();
        EXPECT_EQ(CountLedger().liveBlocks, 0u);
        EXPECT_EQ(CountLedger().strangeFrees, 0u);
    }
}

std::vector<std::string> EffectNames() {
    std::vector<std::string> names;
    for (const auto& effect : ExpectedDigests()) names.push_back(effect.first);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Effects, EffectVectors, testing::ValuesIn(EffectNames()), [](const auto& parameter) {
    std::string name = parameter.param;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

TEST(EffectVectors, there_are_some_for_every_effect_of_the_list) {
    FakeHost host;
    PluginSession session(host);
    EXPECT_EQ(session.ItemsOf(kEffectList), EffectNames());
}

}  // namespace
}  // namespace kfx::test
