// SPDX-License-Identifier: MIT
// Every effect against results that were computed independently of this code: tests/data/effects/expected.tsv
// has a line for each frame of each input under each of the effect's settings.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "effects/effect_table.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/sha256.h"

namespace kfx::test {
namespace {

const std::string kFolder = "tests/data/effects/";

const std::map<std::string, int32_t*> kVariables = {
    {"Style000Depth", &settings.style000Depth},
    {"Style000Radius", &settings.style000Radius},
    {"Style001CenterX", &settings.style001CenterX},
    {"Style001CenterY", &settings.style001CenterY},
    {"Style001Intensity", &settings.style001Intensity},
    {"Style002Size", &settings.style002Size},
    {"Style003Angle", &settings.style003Angle},
    {"Style004Depth", &settings.style004Depth},
    {"Style004Radius", &settings.style004Radius},
    {"Style005Level", &settings.style005Level},
    {"Style006Radius", &settings.style006Radius},
    {"Style007Cycles", &settings.style007Cycles},
    {"Style007Displacement", &settings.style007Displacement},
    {"Style008Aperture", &settings.style008Aperture},
    {"Style009Amplitude", &settings.style009Amplitude},
    {"Style009CenterX", &settings.style009CenterX},
    {"Style009CenterY", &settings.style009CenterY},
    {"Style009Dissipate", &settings.style009Dissipate},
    {"Style009Energy", &settings.style009Energy},
    {"Style009Phase", &settings.style009Phase},
    {"Style009Wavelength", &settings.style009Wavelength},
    {"Style010Bri", &settings.style010Bri},
    {"Style010ChannelsEnable", &settings.style010ChannelsEnable},
    {"Style010ChannelsOption", &settings.style010ChannelsOption},
    {"Style010HSBEnable", &settings.style010HSBEnable},
    {"Style010Hue", &settings.style010Hue},
    {"Style010InvertColors", &settings.style010InvertColors},
    {"Style010Sat", &settings.style010Sat},
    {"Style011Density", &settings.style011Density},
    {"Style011Size", &settings.style011Size},
    {"Style012Threshold", &settings.style012Threshold},
    {"Style014Angle", &settings.style014Angle},
    {"Style014Depth", &settings.style014Depth},
    {"Style014Radius", &settings.style014Radius},
    {"Style015Angle", &settings.style015Angle},
    {"Style017Radius", &settings.style017Radius},
    {"Style017CenterX", &settings.style017CenterX},
    {"Style017CenterY", &settings.style017CenterY},
    {"Style018Radius", &settings.style018Radius},
    {"Style018CenterX", &settings.style018CenterX},
    {"Style018CenterY", &settings.style018CenterY},
    {"Style019Distributed", &settings.style019Distributed},
};

// One build: the lines of the table that share everything but the frame number.
struct Case {
    std::string effect;
    std::string settings;
    std::string background;
    std::string seed;
    std::string input;
    std::vector<std::string> hashes;

    std::string Name() const {
        return effect + " [" + settings + "] on " + input + ", background " + background;
    }
};

std::vector<Case> ReadCases() {
    std::vector<Case> cases;
    std::ifstream file(kFolder + "expected.tsv");
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::string frame, hash;
        Case next;
        for (std::string* field :
             {&next.effect, &next.settings, &next.background, &next.seed, &next.input, &frame})
            std::getline(fields, *field, '\t');
        std::getline(fields, hash);
        while (!hash.empty() && hash.back() == '\r') hash.pop_back();
        if (cases.empty() || frame == "0") cases.push_back(next);
        cases.back().hashes.push_back(hash);
    }
    return cases;
}

// The named values in place of the built-in ones, until the end of the scope.
struct SettingsScope {
    explicit SettingsScope(const Case& current) {
        settings = Settings();
        settings.localBackgroundUse = 1;
        settings.localBackgroundColor = static_cast<uint32_t>(std::stoul(current.background, nullptr, 16));
        std::istringstream pairs(current.settings);
        std::string pair;
        while (current.settings != "-" && pairs >> pair) {
            const size_t sign = pair.find('=');
            const auto variable = kVariables.find(pair.substr(0, sign));
            if (variable == kVariables.end())
                ADD_FAILURE() << "unknown setting " << pair;
            else
                *variable->second = std::stoi(pair.substr(sign + 1));
        }
    }
    ~SettingsScope() { settings = Settings(); }
};

std::vector<std::string> HashesOfBuild(const Effect& effect, const Case& current) {
    const SettingsScope scope(current);
    // Water Drops takes its seed from the clock.
    if (current.seed != "-") HoldClock(static_cast<uint32_t>(std::stoul(current.seed)));
    const MemoryOwner source(
        MakeMemory(ReadTestFile((kFolder + "inputs/" + current.input + ".bin").c_str())));
    FrameList frames = {};
    EffectBuildContext context = {nullptr, &frames, source.memory, nullptr};
    EXPECT_EQ(BuildEffect(effect, &context), 1);
    std::vector<std::string> hashes;
    for (int32_t i = 0; i < frames.count; ++i) {
        FrameEntry entry;
        EXPECT_TRUE(GetFrame(frames, i, &entry));
        const std::vector<uint8_t> bytes = BytesOf(entry.image);
        hashes.push_back(Sha256(bytes.data(), bytes.size()));
    }
    FreeFrames(&frames);
    ReleaseClock();
    return hashes;
}

class EffectVectors : public ::testing::TestWithParam<size_t> {};

TEST_P(EffectVectors, BuildGivesTheIndependentlyComputedFrames) {
    const Effect& effect = *EffectAt(GetParam());
    size_t builds = 0;
    for (const Case& current : ReadCases()) {
        if (current.effect != effect.name) continue;
        ++builds;
        EXPECT_EQ(HashesOfBuild(effect, current), current.hashes) << current.Name();
    }
    EXPECT_GT(builds, 0u);
}

std::string TestName(const ::testing::TestParamInfo<size_t>& info) {
    std::string name = EffectAt(info.param)->name;
    for (size_t space; (space = name.find(' ')) != std::string::npos;) name.erase(space, 1);
    return name;
}

INSTANTIATE_TEST_SUITE_P(Effects, EffectVectors, ::testing::Range(size_t{0}, EffectCount()), TestName);

TEST(EffectVectorTable, NamesEveryEffectOfTheTableAndNoOther) {
    std::set<std::string> named, inTable;
    for (const Case& current : ReadCases()) named.insert(current.effect);
    for (size_t i = 0; i < EffectCount(); ++i) inTable.insert(EffectAt(i)->name);
    EXPECT_EQ(named, inTable);
    EXPECT_EQ(inTable.size(), 20u);
}

}  // namespace
}  // namespace kfx::test
