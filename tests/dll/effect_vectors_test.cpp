// SPDX-License-Identifier: MIT
// Every effect through the real DLL: chosen in its window, built as a test in true colour, and each frame
// compared with an independently computed digest.
#include <gtest/gtest.h>

#include <algorithm>

#include "resources/resource_ids.h"
#include "tests/dll/support/effect_vectors.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/plugin_session.h"

namespace kfx::test {
namespace {

class EffectVectors : public testing::TestWithParam<std::string> {};

TEST_P(EffectVectors, Every_frame_comes_back_as_computed) {
    for (const auto& [setting, inputs] : ExpectedDigests().at(GetParam())) {
        SCOPED_TRACE(setting.keys + " " + setting.background);
        FakeHost host;
        PluginSession session(host, OptionsFor(setting));
        ASSERT_NO_FATAL_FAILURE(ChooseEffect(session, GetParam()));
        for (const auto& [input, digests] : inputs) {
            SCOPED_TRACE(input);
            host.Serve(EffectInput(input));
            session.Click(IDC_SELECT);
            BuildAndCompare(host, session, digests);
        }
        EXPECT_TRUE(session.Messages().empty());
        session.Close();
        EXPECT_EQ(CountLedger().liveBlocks, 0u);
        EXPECT_EQ(CountLedger().strangeFrees, 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, EffectVectors, testing::ValuesIn(EffectNames()), [](const auto& parameter) {
    std::string name = parameter.param;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

TEST(EffectVectors, There_are_some_for_every_effect_of_the_list) {
    FakeHost host;
    PluginSession session(host);
    EXPECT_EQ(session.ItemsOf(IDC_EFFECT), EffectNames());
}

}  // namespace
}  // namespace kfx::test
