// SPDX-License-Identifier: MIT
#include "tests/dll/support/effect_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "resources/resource_ids.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/sha256.h"

namespace kfx::test {
namespace {

const std::string kFolder = "tests/data/effects/";

}  // namespace

const EffectVectorTable& ExpectedDigests() {
    static const EffectVectorTable effects = [] {
        EffectVectorTable read;
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

std::vector<std::string> EffectNames() {
    std::vector<std::string> names;
    for (const auto& effect : ExpectedDigests()) names.push_back(effect.first);
    return names;
}

SessionOptions OptionsFor(const EffectSetting& setting) {
    SessionOptions options;
    options.configuration = "Truecolour = 1\nLocalBackgroundUse = 1\nLocalBackgroundColor = " +
                            std::to_string(std::stoul(setting.background, nullptr, 16)) + "\n";
    std::istringstream keys(setting.keys == "-" ? "" : setting.keys);
    for (std::string key; keys >> key;) options.configuration += key + "\n";
    if (setting.seed != "-") options.clock = std::stoll(setting.seed);
    return options;
}

std::vector<uint8_t> EffectInput(const std::string& input) {
    return ReadTestFile((kFolder + "inputs/" + input + ".bin").c_str());
}

void ChooseEffect(PluginSession& session, const std::string& name) {
    const std::vector<std::string> names = session.ItemsOf(IDC_EFFECT);
    const auto found = std::find(names.begin(), names.end(), name);
    ASSERT_NE(found, names.end()) << "the effect list has no " << name;
    session.Choose(IDC_EFFECT, static_cast<int>(found - names.begin()));
}

void BuildAndCompare(FakeHost& host, PluginSession& session, const std::vector<std::string>& digests) {
    host.ClearTranscript();
    session.Click(IDC_TEST);
    const std::vector<std::vector<uint8_t>> frames = host.Frames();
    ASSERT_EQ(frames.size(), digests.size());
    for (size_t i = 0; i < frames.size(); ++i)
        EXPECT_EQ(Sha256(frames[i].data(), frames[i].size()), digests[i]) << "frame " << i;
    // One progress report for each finished frame, however the effect goes over the frames, comes before the
    // rest.
    EXPECT_GE(host.Requests(HostRequest::Progress).size(), frames.size());
}

}  // namespace kfx::test
