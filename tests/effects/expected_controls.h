// SPDX-License-Identifier: MIT
// An effect's controls as panels, configuration file and settings documents know them, written out a second
// time by the effect's test: so that a slip in the header that resources and effects share does not pass as
// its own proof.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/effect.h"

namespace kfx::test {

// The variable of a key of the configuration file; null for an unknown key.
void* VariableOfKey(const std::string& key);

struct ExpectedControl {
    ControlKind kind = ControlKind::Slider;
    uint32_t id = 0;
    const char* key = "";  // in the configuration file
    int32_t builtIn = 0;   // the value without a configuration file
    const char* text = "";
    const char* caption = nullptr;
};

// The record has this name, this panel template and these controls, in the order in which they are read; each
// one's variable is that of its key and has the built-in value.
void ExpectControls(const Effect& effect, const char* name, int panel,
                    const std::vector<ExpectedControl>& controls);

}  // namespace kfx::test
