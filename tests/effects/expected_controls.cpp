// SPDX-License-Identifier: MIT
#include "tests/effects/expected_controls.h"

#include <gtest/gtest.h>

#include "framework/settings.h"
#include "window/configuration_text.h"

namespace kfx::test {
void* VariableOfKey(const std::string& key) {
    for (size_t i = 0; i < ConfigKeyCount(); ++i)
        if (key == ConfigKeyAt(i).name) return ConfigKeyAt(i).variable;
    return nullptr;
}

void ExpectControls(const Effect& effect, const char* name, int panel,
                    const std::vector<ExpectedControl>& controls) {
    settings = Settings();
    EXPECT_STREQ(effect.name, name);
    EXPECT_EQ(effect.panel, panel);
    ASSERT_EQ(effect.controls.count, controls.size());
    for (size_t i = 0; i < controls.size(); ++i) {
        const ExpectedControl& expected = controls[i];
        const EffectControl& control = effect.controls.rows[i];
        SCOPED_TRACE(expected.key);
        EXPECT_EQ(control.kind, expected.kind);
        EXPECT_EQ(control.id, expected.id);
        EXPECT_EQ(control.variable, VariableOfKey(expected.key));
        EXPECT_EQ(*control.variable, expected.builtIn);
        EXPECT_STREQ(control.text, expected.text);
        EXPECT_STREQ(control.caption, expected.caption);
    }
}

}  // namespace kfx::test
