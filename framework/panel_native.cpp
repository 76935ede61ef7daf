// SPDX-License-Identifier: MIT
// The controls of a program without a window: each variable is its own control.
#include "framework/number_text.h"
#include "framework/panel.h"
#include "framework/settings.h"

namespace kfx {

bool InitializePanel(const Effect&, void*) { return true; }

int32_t ReadControl(const EffectControl& control, void*) {
    const int32_t value = *control.variable;
    if (control.kind == ControlKind::List) return value;
    if (control.kind != ControlKind::Slider) return value != 0;
    ControlRange range;
    ParseControlRange(control.text, &range);
    return ClampToRange(range, value);
}

bool IsPanelOpen(const void*) { return true; }

bool LocalBackgroundChosen(uint32_t* color) {
    if (!settings.localBackgroundUse) return false;
    *color = settings.localBackgroundColor;
    return true;
}

}  // namespace kfx
