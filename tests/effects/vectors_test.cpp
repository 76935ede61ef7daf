// SPDX-License-Identifier: MIT
// Every effect against results that were computed independently of this code: tests/data/effects/expected.tsv
// has a line for each frame of each input under each of the effect's settings.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "effects/effect_table.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/sha256.h"

namespace kfx::test {
namespace {

const std::string kFolder = "tests/data/effects/";

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
            void* variable = VariableOfKey(pair.substr(0, sign));
            const int32_t value = std::stoi(pair.substr(sign + 1));
            if (variable)
                std::memcpy(variable, &value, sizeof value);
            else
                ADD_FAILURE() << "unknown setting " << pair;
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

std::vector<size_t> EffectsWithVectors() {
    std::set<std::string> named;
    for (const Case& current : ReadCases()) named.insert(current.effect);
    std::vector<size_t> rows;
    for (size_t i = 0; i < EffectCount(); ++i)
        if (named.erase(EffectAt(i)->name)) rows.push_back(i);
    EXPECT_TRUE(named.empty()) << "no effect is called " << *named.begin();
    return rows;
}

class EffectVectors : public ::testing::TestWithParam<size_t> {};

TEST_P(EffectVectors, A_build_gives_the_independently_computed_frames) {
    const Effect& effect = *EffectAt(GetParam());
    for (const Case& current : ReadCases()) {
        if (current.effect != effect.name) continue;
        EXPECT_EQ(HashesOfBuild(effect, current), current.hashes) << current.Name();
    }
}

std::string TestName(const ::testing::TestParamInfo<size_t>& info) {
    std::string name = EffectAt(info.param)->name;
    for (size_t space; (space = name.find(' ')) != std::string::npos;) name.erase(space, 1);
    return name;
}

INSTANTIATE_TEST_SUITE_P(Effects, EffectVectors, ::testing::ValuesIn(EffectsWithVectors()), TestName);

// An effect that came later has its reference instead.
TEST(EffectVectorTable, The_first_twenty_effects_have_vectors_and_all_names_are_known) {
    EXPECT_EQ(EffectsWithVectors().size(), 20u);
}

}  // namespace
}  // namespace kfx::test
