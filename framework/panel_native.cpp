// SPDX-License-Identifier: MIT
// The controls of a program without a window: each variable is its own control.
#include <cstdio>

#include "framework/panel.h"
#include "framework/settings.h"

namespace kfx {

bool InitializePanel(const EffectRecord&, void*) { return true; }

int32_t ReadControl(const EffectControl& control, void*) {
    const int32_t value = *control.variable;
    if (control.kind != ControlKind::Slider) return control.kind == ControlKind::List ? value : value != 0;
    int least, most, standard;
    if (std::sscanf(control.text, "%d,%d,%d", &least, &most, &standard) != 3) {
        least = 0;
        most = 100;
    }
    return value < least ? least : value > most ? most : value;
}

bool LocalBackgroundChosen(uint32_t* color) {
    if (!settings.localBackgroundUse) return false;
    *color = settings.localBackgroundColor;
    return true;
}

}  // namespace kfx
