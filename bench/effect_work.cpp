// SPDX-License-Identifier: MIT
#include "bench/effect_work.h"

#include <algorithm>

#include "bench/bench_picture.h"
#include "effects/effect_table.h"
#include "framework/number_text.h"
#include "framework/panel.h"
#include "framework/source_animation.h"

namespace kfx::bench {
namespace {

// Where a control stands in the row with the greatest settings: a slider at its end, a box ticked, a list on
// its last row. A centre stays where it is: away from the middle most effects have less to do.
int32_t GreatestValue(const EffectControl& control) {
    const std::string caption = control.caption ? control.caption : "";
    if (caption.find("Center") == 0) return ReadControl(control, nullptr);
    if (control.kind == ControlKind::List) {
        const std::string items = control.text;
        return static_cast<int32_t>(std::count(items.begin(), items.end(), ';'));
    }
    if (control.kind != ControlKind::Slider) return 1;
    ControlRange range;
    ParseControlRange(control.text, &range);
    return ClampToRange(range, INT32_MAX);
}

}  // namespace

std::vector<Work> ListWork() {
    std::vector<Work> list;
    for (size_t i = 0; i < EffectCount(); ++i) {
        const Effect* effect = EffectAt(i);
        for (const bool greatest : {false, true}) {
            Work work = {.effect = effect, .greatest = greatest, .input = {}, .text = ""};
            for (size_t c = 0; c < effect->controls.count; ++c) {
                const EffectControl& control = effect->controls.rows[c];
                work.input.values[c] = greatest ? GreatestValue(control) : ReadControl(control, nullptr);
                work.text += (c ? ", " : "") + std::to_string(work.input.values[c]);
            }
            if (greatest && work.text == list.back().text) continue;
            ReadBackgroundColor(nullptr, &work.input.background);
            list.push_back(work);
        }
    }
    return list;
}

bool KeepsTables(const Work& work) {
    const ImageHandle picture = MakeBenchPicture(64, 48);
    KernelCache cache;
    KernelInput input = work.input;
    input.cache = &cache;
    FreeMemory(work.effect->apply(picture, input));
    FreeMemory(picture);
    return KeepsTables(cache);
}

}  // namespace kfx::bench
